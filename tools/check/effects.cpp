#include "protocol/hostframe.h"
#include "tools/check/cases.h"
#include "tools/wire/framefields.h"

#include <algorithm>
#include <array>

namespace check {

namespace {

struct EffectRow
{
    quint8 code;
    quint8 effect;
    bool isByState; ///< only with a parameter other than 0
};

/// Commands that do something; those that aren't here change no more than the picture's settings.
constexpr std::array<EffectRow, 21> kEffectRows{{
    {0x01, kMoves, false}, {0x03, kMoves, false},   {0x10, kMoves, false},   {0x11, kMoves, false},
    {0x12, kMoves, false}, {0x13, kMoves, false},   {0x14, kMoves, false},   {0x15, kMoves, false},
    {0x16, kMoves, false}, {0x17, kMoves, false},   {0x1A, kMoves, false},   {0x1B, kMoves, false},
    {0x1C, kMoves, false}, {0x20, kRecords, false}, {0x21, kRecords, false}, {0x22, kZooms, false},
    {0x23, kZooms, false}, {0x25, kZooms, false},   {0x26, kZooms, false},   {0x80, kLights, true},
    {0x81, kLights, true},
}};

struct EffectName
{
    quint8 effect;
    const char *name;
};

constexpr std::array<EffectName, 4> kEffectNames{
    {{kMoves, "moves"}, {kZooms, "zooms"}, {kLights, "lights"}, {kRecords, "records"}}};

constexpr int kControlOffset = 5;
constexpr int kControlSize = 6;
constexpr int kFlagsOffset = 11;
constexpr char kControlValid = 0x04;

/// From the beginning of each of them to the end of the bytes.
QVector<QByteArray> hostFramesIn(const QByteArray &bytes)
{
    QVector<QByteArray> frames;
    for (int at = 0; at + kFrameOverhead <= bytes.size(); ++at)
        if (wire::kindOf(bytes.mid(at)) == wire::FrameKind::Host)
            frames.append(bytes.mid(at));
    return frames;
}

QByteArray areaIn(const QByteArray &frame)
{
    const wire::Span span = wire::areaOf(wire::FrameKind::Host, frame.constData(), frame.size());
    return frame.mid(span.offset, span.size);
}

/// Of the frame that the bytes begin with.
quint8 effectsOfFrame(const QByteArray &frame)
{
    quint8 effects = kStill;
    const bool isSteered = (frame[kFlagsOffset] & kControlValid) != 0 &&
                           frame.mid(kControlOffset, kControlSize).count('\0') < kControlSize;
    if (isSteered)
        effects |= kMoves;
    const QByteArray area = areaIn(frame);
    for (const EffectRow &row : kEffectRows) {
        const bool isOff =
            row.isByState && area.size() > 1 && area.mid(1).count('\0') == area.size() - 1;
        if (!area.isEmpty() && quint8(area[0]) == row.code && !isOff)
            effects |= row.effect;
    }
    return effects;
}

} // namespace

quint8 effectsOf(const QByteArray &bytes)
{
    quint8 effects = kStill;
    for (const QByteArray &rest : hostFramesIn(bytes))
        effects |= effectsOfFrame(rest);
    return effects;
}

bool hasCommand(const QByteArray &bytes)
{
    const QVector<QByteArray> frames = hostFramesIn(bytes);
    return std::any_of(frames.begin(), frames.end(), [](const QByteArray &frame) {
        const QByteArray area = areaIn(frame);
        return !area.isEmpty() && area[0] != '\0';
    });
}

quint8 effectsOf(const Step &step)
{
    QByteArray all; // pieces of a frame are a frame
    for (const QByteArray &bytes : step.writes)
        all += bytes;
    return effectsOf(all);
}

QString namesOf(quint8 effects)
{
    QStringList names;
    for (const EffectName &row : kEffectNames)
        if ((effects & row.effect) != 0)
            names.append(QLatin1String(row.name));
    return names.join(QStringLiteral(", "));
}

} // namespace check
