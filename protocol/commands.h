#pragma once

#include "protocol/rowids.h"

#include <QByteArray>
#include <QString>

#include <array>

// The command set: what stands in the command area of a host frame, one row a command.

/// How one parameter of a payload is parsed and stored.
enum class ParamKind : quint8 {
    None,
    Byte,        ///< `toInt`, low 8 bits
    U16,         ///< `toUShort`
    I16,         ///< `toShort`
    Temperature, ///< i16: `toDouble`, truncated without a scale, low 16 bits
    GeoDegrees,  ///< i32: `toDouble` times 10000000, truncated
    Metres,      ///< i32: `toDouble` times 1000, truncated
};

/// A parameter of a payload: its name for other programs, and how the documents write it.
struct Param
{
    ParamKind kind = ParamKind::None;
    const char *id = "";
    const char *symbol = "";
};

constexpr int kMaxParams = 6;
constexpr int kNoFixedByte = -1;

/// A command: its code byte, then the fixed byte if there is one, then its parameters.
struct CommandRow
{
    quint8 code = 0;
    const char *id = "";
    const char *name = "";
    int fixedByte = kNoFixedByte;
    std::array<Param, kMaxParams> params = {};
};

namespace command_set {

constexpr Param kCamera{ParamKind::Byte, "camera", "KK"};
constexpr Param kState{ParamKind::Byte, "state", "TT"};
constexpr Param kZoom{ParamKind::I16, "zoom", "ZZ"};
constexpr Param kX0{ParamKind::U16, "x0", "X0"};
constexpr Param kY0{ParamKind::U16, "y0", "Y0"};
constexpr Param kX1{ParamKind::U16, "x1", "X1"};
constexpr Param kY1{ParamKind::U16, "y1", "Y1"};
constexpr Param kLongitude{ParamKind::GeoDegrees, "longitude", "LON"};
constexpr Param kLatitude{ParamKind::GeoDegrees, "latitude", "LAT"};
constexpr Param kHeight{ParamKind::Metres, "height", "ALT"};
constexpr Param kMissX{ParamKind::I16, "miss_horizontal", "MX"};
constexpr Param kMissY{ParamKind::I16, "miss_vertical", "MY"};
constexpr Param kUpper{ParamKind::Temperature, "upper_limit", "TU"};
constexpr Param kLower{ParamKind::Temperature, "lower_limit", "TL"};

// clang-format off
inline constexpr std::array<CommandRow, 36> kCommands = {{
    {0x00, "idle", "空命令"},
    {0x01, "calibrate", "吊舱校准"},
    {0x03, "recentre", "回中"},
    {0x06, "osd_coordinates", "OSD坐标", kNoFixedByte, {kState}},
    {0x07, "image_flip", "图像自动翻转", kNoFixedByte, {kState}},
    {0x08, "time_zone", "时区", kNoFixedByte, {kState}},
    {0x10, "angle_control", "角度控制"},
    {0x11, "lock", "锁定"},
    {0x12, "follow", "跟随"},
    {0x13, "look_down", "俯拍"},
    {0x14, "euler_control", "欧拉角控制"},
    {0x15, "stare_guide", "凝视(地理坐标引导)", kNoFixedByte, {kLongitude, kLatitude, kHeight}},
    {0x16, "stare_lock", "凝视(地理坐标锁定)"},
    {0x17, "track", "跟踪", 0x01, {kState, kX0, kY0, kX1, kY1}},
    {0x1A, "point_move", "指点平移", 0x01, {kX0, kY0}},
    {0x1B, "external_track", "外部图像跟踪", kNoFixedByte, {kCamera, kMissX, kMissY, kState}},
    {0x1C, "fpv", "FPV"},
    {0x20, "photo", "拍照", 0x01},
    {0x21, "record", "录像开始/停止", 0x01},
    {0x22, "zoom_in", "连续放大", kNoFixedByte, {kCamera}},
    {0x23, "zoom_out", "连续缩小", kNoFixedByte, {kCamera}},
    {0x24, "zoom_stop", "停止变倍", kNoFixedByte, {kCamera}},
    {0x25, "zoom_ratio", "指定倍率", kNoFixedByte, {kCamera, kZoom}},
    {0x26, "focus", "聚焦", 0x01},
    {0x2A, "palette", "调色盘", 0x02, {kState}},
    {0x2B, "night_vision", "夜视", 0x01, {kState}},
    {0x30, "area_temperature", "区域测温", kNoFixedByte, {kCamera, kState, kX0, kY0, kX1, kY1}},
    {0x31, "temperature_alarm", "温度报警", kNoFixedByte, {kCamera, kState, kUpper, kLower}},
    {0x32, "isotherm", "等温线", kNoFixedByte, {kCamera, kState, kUpper, kLower}},
    {0x33, "point_temperature", "指点测温", kNoFixedByte, {kCamera, kState, kX0, kY0}},
    {0x73, "osd", "OSD", kNoFixedByte, {kState}},
    {0x74, "picture_in_picture", "画中画", kNoFixedByte, {kState}},
    {0x75, "recognition", "目标识别", kNoFixedByte, {kState}},
    {0x76, "digital_zoom", "变焦相机数字变焦", kNoFixedByte, {kState}},
    {0x80, "light", "补光", kNoFixedByte, {kState}},
    {0x81, "ranging", "连续测距", kNoFixedByte, {kState}},
}};
// clang-format on

} // namespace command_set

using command_set::kCommands;

/// Number of a command's parameters.
constexpr int paramCount(const CommandRow &command)
{
    int count = 0;
    for (const Param &param : command.params)
        count += param.kind != ParamKind::None;
    return count;
}

/// Width of a parameter on the wire, in bytes.
constexpr int paramSize(ParamKind kind)
{
    switch (kind) {
    case ParamKind::None:
        return 0;
    case ParamKind::Byte:
        return 1;
    case ParamKind::GeoDegrees:
    case ParamKind::Metres:
        return 4;
    default:
        return 2;
    }
}

/// N of a command: its code, its fixed byte and its parameters.
constexpr int areaSize(const CommandRow &command)
{
    int size = command.fixedByte == kNoFixedByte ? 1 : 2;
    for (const Param &param : command.params)
        size += paramSize(param.kind);
    return size;
}

constexpr bool paramsAreNamed()
{
    for (const CommandRow &command : kCommands) {
        if (!idsAreDistinct(command.params, std::size_t(paramCount(command))))
            return false;
    }
    return true;
}
static_assert(codesAscend(kCommands), "the commands aren't in the order of their codes");
static_assert(idsAreDistinct(kCommands), "a command lacks an id, or shares one");
static_assert(paramsAreNamed(), "a command has a parameter without an id, or two of one id");

/// The row of a code, or of a name in the current language; null where there is none.
const CommandRow *findCommand(quint8 code);
const CommandRow *findCommand(const QString &name);

/// Name of a command code in the current language, empty for an unknown code. Code 0x16 has the
/// name of code 0x15, so that feedback for the geographic lock reads as guidance: operators know it
/// so, and the dialog that opens on 0x16 would otherwise look for an item that it doesn't offer.
QString commandName(quint8 code);

/// The same name as 8-bit text in GBK without language lookup, null for an unknown code.
QByteArray commandNameGbk(quint8 code);

/// The row whose name is shown for a code: that of code 0x15 for 0x16; null for an unknown code.
const CommandRow *shownCommand(quint8 code);

/// The command area (code byte and payload) of a command whose parameters are these texts, in
/// payload order without the fixed byte. A text that doesn't parse counts as 0.
QByteArray commandBytes(const CommandRow &command, const std::array<QString, kMaxParams> &texts);

/// The same of the command named `name` in the current language. Texts beyond the command's own are
/// ignored. An unknown name gives an empty array.
QByteArray commandBytes(const QString &name, const QString &p1 = {}, const QString &p2 = {},
                        const QString &p3 = {}, const QString &p4 = {}, const QString &p5 = {},
                        const QString &p6 = {});
