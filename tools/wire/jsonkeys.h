#pragma once

#include "tools/wire/record.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace wire {

/// What of the object of a frame of that kind would go unread: the first key that such a frame
/// hasn't, or whose value is of another type or none of its words, and what is needed; empty for
/// nothing. Numbers may stand as texts, as on the command line.
QString mistakeIn(const QJsonObject &frame, FrameKind kind);

/// What is wrong with the keys of a JSON text before it is parsed: one that its object has twice,
/// of which the toolkit would take the last without a word and never free the others, or an escape,
/// which would hide that; empty for nothing.
QString mistakeInKeys(const QByteArray &json);

} // namespace wire
