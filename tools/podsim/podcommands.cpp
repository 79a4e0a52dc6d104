#include "tools/podsim/podcommands.h"

#include "tools/podsim/podcodec.h"
#include "tools/podsim/podstate.h"

#include <array>
#include <cmath>
#include <utility>

namespace podsim {

namespace {

enum class ParamKind { None, Byte, SignedByte, U16, I16, I32 };

struct Param
{
    const char *name = "";
    ParamKind kind = ParamKind::None;
};

constexpr std::size_t kMaxParams = 6;
using Values = std::array<int, kMaxParams>;

/// A command: either a function that does it and returns whether it could, or a field of the state
/// that takes the value of parameter `source`.
struct CommandRow
{
    int code;
    const char *name;
    std::array<Param, kMaxParams> params;
    bool (*act)(PodState &, const Values &) = nullptr;
    int PodState::*field = nullptr;
    std::size_t source = 0;
};

template <PodMode Mode>
bool enterMode(PodState &state, const Values &)
{
    state.enter(Mode);
    return true;
}

/// Runs `action` on the cameras that a KK byte names: bit 0 camera 1, bit 1 camera 2.
template <typename Action>
bool forCameras(PodState &state, int kk, Action action)
{
    bool isKnown = false;
    for (std::size_t i = 0; i < state.cameras.size(); ++i) {
        if ((kk >> i & 1) == 0)
            continue;
        isKnown = true;
        state.events.append(
            QStringLiteral("camera %1 %2").arg(i + 1).arg(action(state.cameras[i])));
    }
    return isKnown;
}

QString zoomText(const PodCamera &camera)
{
    static const char *const kStates[] = {"zooming out from", "zoom", "zooming in from"};
    return QStringLiteral("%1 %2")
        .arg(QLatin1String(kStates[camera.zooming + 1]))
        .arg(camera.zoom, 0, 'f', 1);
}

template <int Direction>
bool zoom(PodState &state, const Values &values)
{
    return forCameras(state, values[0], [](PodCamera &camera) {
        camera.zooming = Direction;
        return zoomText(camera);
    });
}

bool zoomTo(PodState &state, const Values &values)
{
    const double ratio = std::abs(values[1]) / 10.0; // the sign carries nothing
    return forCameras(state, values[0], [ratio](PodCamera &camera) {
        camera.zoomTo(ratio);
        return zoomText(camera);
    });
}

template <int PodState::*Counter>
bool count(PodState &state, const Values &)
{
    ++(state.*Counter);
    return true;
}

bool takePhoto(PodState &state, const Values &)
{
    state.events.append(QStringLiteral("photo %1").arg(++state.photos));
    return true;
}

bool toggleRecording(PodState &state, const Values &)
{
    state.recording = state.recording != 0 ? 0 : 1;
    state.events.append(state.recording != 0 ? QStringLiteral("recording on")
                                             : QStringLiteral("recording off"));
    return true;
}

bool recentre(PodState &state, const Values &)
{
    state.motion.recentre();
    return true;
}

bool stareAtPlace(PodState &state, const Values &values)
{
    state.enter(PodMode::Stare, {values[0] / 1e7, values[1] / 1e7, values[2] / 1e3});
    return true;
}

bool stareAhead(PodState &state, const Values &)
{
    state.enter(PodMode::Stare, state.motion.placeAlong(state.lineOfSight()));
    return true;
}

bool track(PodState &state, const Values &values)
{
    if (values[1] != 0)
        state.track({values[2], values[3], values[4], values[5]});
    else
        state.enter(PodMode::Follow);
    return true;
}

bool point(PodState &state, const Values &values)
{
    state.motion.pointAt(state.lineOfSight(values[1], values[2]));
    return true;
}

bool trackFromOutside(PodState &state, const Values &values)
{
    if (values[3] == 0) {
        state.enter(PodMode::Follow);
        return true;
    }
    const Vector sight = state.lineOfSight(kPickCentre + values[1], kPickCentre + values[2]);
    state.enter(PodMode::Tracking, state.motion.placeAlong(sight));
    state.isTrackedFromOutside = true;
    state.externalRight = values[1];
    state.externalDown = values[2];
    return true;
}

bool setArea(PodState &state, const Values &v)
{
    state.temperatureArea = {v[1] != 0, v[0], {v[2], v[3], v[4], v[5]}};
    return true;
}

bool setSpot(PodState &state, const Values &v)
{
    state.temperatureSpot = {v[1] != 0, v[0], {v[2], v[3], v[2], v[3]}};
    return true;
}

template <TemperatureLimits PodState::*Field>
bool setLimits(PodState &state, const Values &v)
{
    state.*Field = {v[1], v[0], v[2], v[3]};
    return true;
}

constexpr Param kFixed{"fixed", ParamKind::Byte};
constexpr Param kValue{"value", ParamKind::Byte};
constexpr Param kOn{"on", ParamKind::Byte};
constexpr Param kType{"type", ParamKind::Byte};
constexpr Param kCamera{"camera", ParamKind::Byte};
constexpr Param kX0{"x0", ParamKind::U16};
constexpr Param kY0{"y0", ParamKind::U16};
constexpr Param kX1{"x1", ParamKind::U16};
constexpr Param kY1{"y1", ParamKind::U16};
constexpr Param kUpper{"upper", ParamKind::I16};
constexpr Param kLower{"lower", ParamKind::I16};
constexpr Param kRight{"right", ParamKind::I16};
constexpr Param kDown{"down", ParamKind::I16};
constexpr Param kRatio{"tenths", ParamKind::I16};
constexpr Param kHours{"hours", ParamKind::SignedByte};
constexpr Param kLongitude{"longitude", ParamKind::I32};
constexpr Param kLatitude{"latitude", ParamKind::I32};
constexpr Param kHeight{"height", ParamKind::I32};

// clang-format off
constexpr CommandRow kCommands[] = {
    {0x01, "calibrate", {}, count<&PodState::calibrations>},
    {0x03, "recentre", {}, recentre},
    {0x06, "OSD position", {kValue}, nullptr, &PodState::osdPosition, 0},
    {0x07, "image flip", {kOn}, nullptr, &PodState::autoFlip, 0},
    {0x08, "time zone", {kHours}, nullptr, &PodState::timeZone, 0},
    {0x10, "angle control", {}, enterMode<PodMode::AngleControl>},
    {0x11, "lock", {}, enterMode<PodMode::Lock>},
    {0x12, "follow", {}, enterMode<PodMode::Follow>},
    {0x13, "look down", {}, enterMode<PodMode::LookDown>},
    {0x14, "Euler angle control", {}, enterMode<PodMode::EulerControl>},
    {0x15, "stare at a place", {kLongitude, kLatitude, kHeight}, stareAtPlace},
    {0x16, "stare", {}, stareAhead},
    {0x17, "track", {kFixed, kOn, kX0, kY0, kX1, kY1}, track},
    {0x1A, "point", {kFixed, kX0, kY0}, point},
    {0x1B, "track from outside", {kCamera, kRight, kDown, kOn}, trackFromOutside},
    {0x1C, "FPV", {}, enterMode<PodMode::Fpv>},
    {0x20, "photo", {kFixed}, takePhoto},
    {0x21, "record", {kFixed}, toggleRecording},
    {0x22, "zoom in", {kCamera}, zoom<1>},
    {0x23, "zoom out", {kCamera}, zoom<-1>},
    {0x24, "stop zoom", {kCamera}, zoom<0>},
    {0x25, "zoom to", {kCamera, kRatio}, zoomTo},
    {0x26, "focus", {kFixed}, count<&PodState::focusings>},
    {0x2A, "palette", {kFixed, kValue}, nullptr, &PodState::palette, 1},
    {0x2B, "night view", {kFixed, kOn}, nullptr, &PodState::nightVision, 1},
    {0x30, "temperature area", {kCamera, kOn, kX0, kY0, kX1, kY1}, setArea},
    {0x31, "temperature alarm", {kCamera, kOn, kUpper, kLower},
     setLimits<&PodState::temperatureAlarm>},
    {0x32, "isotherm", {kCamera, kType, kUpper, kLower}, setLimits<&PodState::isotherm>},
    {0x33, "temperature point", {kCamera, kOn, kX0, kY0}, setSpot},
    {0x73, "OSD", {kOn}, nullptr, &PodState::osd, 0},
    {0x74, "picture in picture", {kValue}, nullptr, &PodState::pictureInPicture, 0},
    {0x75, "target recognition", {kOn}, nullptr, &PodState::recognition, 0},
    {0x76, "digital zoom", {kOn}, nullptr, &PodState::digitalZoom, 0},
    {0x80, "light", {kValue}, nullptr, &PodState::light, 0},
    {0x81, "ranging", {kType}, nullptr, &PodState::ranging, 0},
};
// clang-format on

int sizeOf(ParamKind kind)
{
    static constexpr int kSizes[] = {0, 1, 1, 2, 2, 4};
    return kSizes[int(kind)];
}

int valueAt(const QByteArray &area, int offset, ParamKind kind)
{
    switch (kind) {
    case ParamKind::None:
        break;
    case ParamKind::Byte:
        return quint8(area[offset]);
    case ParamKind::SignedByte:
        return qint8(area[offset]);
    case ParamKind::U16:
        return u16At(area, offset);
    case ParamKind::I16:
        return i16At(area, offset);
    case ParamKind::I32:
        return i32At(area, offset);
    }
    return 0;
}

int codeOf(const QByteArray &area)
{
    return quint8(area[0]);
}

const CommandRow *rowOf(int code)
{
    for (const CommandRow &row : kCommands)
        if (row.code == code)
            return &row;
    return nullptr;
}

int payloadSize(const CommandRow &row)
{
    int size = 0;
    for (const Param &param : row.params)
        size += sizeOf(param.kind);
    return size;
}

bool isComplete(const CommandRow &row, const QByteArray &area)
{
    return area.size() > payloadSize(row);
}

/// The row of a command that can be carried out, or null.
const CommandRow *completeRow(const QByteArray &area)
{
    const CommandRow *row = rowOf(codeOf(area));
    return row && isComplete(*row, area) ? row : nullptr;
}

Values valuesOf(const CommandRow &row, const QByteArray &area)
{
    Values values{};
    int offset = 1;
    for (std::size_t i = 0; i < kMaxParams; ++i) {
        values[i] = valueAt(area, offset, row.params[i].kind);
        offset += sizeOf(row.params[i].kind);
    }
    return values;
}

QString parameterText(const CommandRow &row, const Values &values)
{
    QString text;
    for (std::size_t i = 0; i < kMaxParams && row.params[i].kind != ParamKind::None; ++i)
        text += QStringLiteral(" %1=%2").arg(QLatin1String(row.params[i].name)).arg(values[i]);
    return text;
}

void setField(PodState &state, const CommandRow &row, int value)
{
    if (std::exchange(state.*row.field, value) != value)
        state.events.append(QStringLiteral("%1 set to %2").arg(QLatin1String(row.name)).arg(value));
}

} // namespace

QString describeCommand(const QByteArray &area)
{
    const QString code = QStringLiteral("0x%1 ").arg(
        QString::number(codeOf(area), 16).rightJustified(2, QLatin1Char('0')).toUpper());
    const CommandRow *row = rowOf(codeOf(area));
    if (!row)
        return code + QStringLiteral("unknown");
    const QString text = code + QLatin1String(row->name);
    if (!isComplete(*row, area))
        return text + QStringLiteral(", payload of %1 bytes where %2 are needed")
                          .arg(area.size() - 1)
                          .arg(payloadSize(*row));
    return text + parameterText(*row, valuesOf(*row, area));
}

bool isKnown(const QByteArray &area)
{
    return completeRow(area);
}

quint8 carryOut(PodState &state, const QByteArray &area)
{
    const CommandRow *row = completeRow(area);
    if (!row)
        return kFailure;
    const Values values = valuesOf(*row, area);
    if (row->act)
        return row->act(state, values) ? kSuccess : kFailure;
    setField(state, *row, values[row->source]);
    return kSuccess;
}

} // namespace podsim
