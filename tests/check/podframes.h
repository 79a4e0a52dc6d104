#pragma once

#include "protocol/codec.h"

#include <QByteArray>

/// A GCU frame with that feedback in digits.
inline QByteArray answerWith(const QByteArray &feedback)
{
    const QByteArray area = QByteArray::fromHex(feedback);
    QByteArray frame = QByteArray::fromHex("8A5E") + char(71 + area.size()) + '\0' + '\x01';
    frame += QByteArray(64, '\0') + area;
    appendCrc(frame);
    return frame;
}

inline QByteArray hostWith(const QByteArray &area)
{
    QByteArray frame = QByteArray::fromHex("A8E5") + char(71 + area.size() / 2) + '\0' + '\x01';
    frame += QByteArray(64, '\0') + QByteArray::fromHex(area);
    appendCrc(frame);
    return frame;
}

/// A file of cases with one case, whose steps are given.
inline QByteArray fileWith(const QByteArray &steps, const QByteArray &more = {})
{
    return R"({"group": "g", "title": {"zh": "组", "en": "group"}, )" + more +
           R"("reason": {"zh": "因", "en": "why"}, "cases": [{"id": "c",)"
           R"( "name": {"zh": "名", "en": "name"}, "steps": )" +
           steps + "}]}";
}
