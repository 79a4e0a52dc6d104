#pragma once

#include "protocol/fields.h"
#include "protocol/frameproofs.h"

#include <QByteArray>
#include <QString>

// The host frame, the one message that the program sends: 69 fixed bytes (control inputs, status
// flags, carrier state), a command area of N bytes and a CRC, S = 71 + N bytes in all.

/// Offset of the status flags, and the bits in use.
constexpr int kFlagsOffset = 11;
constexpr int kControlValidBit = 2;
constexpr int kInertialValidBit = 0;

/// A bit of the flags: its name's key, and its id in the tools.
struct FlagBit
{
    int bit;
    const char *id;
    const char *key;
};
constexpr std::array<FlagBit, 2> kFlagBits = {{
    {kInertialValidBit, "inertial_valid", "载机惯导数据有效"},
    {kControlValidBit, "control_valid", "控制量有效"},
}};

/// A host frame taken apart, its scaled fields raw as on the wire.
struct HostFrame
{
    quint8 header0 = 0;
    quint8 header1 = 0;
    quint16 length = 0;
    quint8 version = 0;
    qint16 rollControl = 0;
    qint16 pitchControl = 0;
    qint16 yawControl = 0;
    bool controlValid = false;
    bool inertialValid = false;
    qint16 carrierRoll = 0;
    qint16 carrierPitch = 0;
    quint16 carrierYaw = 0;
    qint16 accelNorth = 0;
    qint16 accelEast = 0;
    qint16 accelUp = 0;
    qint16 velocityNorth = 0;
    qint16 velocityEast = 0;
    qint16 velocityUp = 0;
    quint8 subFrameRequest = 0;
    std::array<quint8, 6> reserved1 = {};
    quint8 subFrameHeader = 0;
    qint32 longitude = 0;
    qint32 latitude = 0;
    qint32 altitude = 0;
    quint8 satellites = 0;
    quint32 gnssMilliseconds = 0;
    qint16 gnssWeek = 0;
    qint32 relativeHeight = 0;
    std::array<quint8, 8> reserved2 = {};
    quint32 commandCode = 0; ///< holds the byte at offset 69
    QByteArray commandName;  ///< GBK, null for an unknown code
    quint8 param0 = 0;
    quint8 param1 = 0;
    // Each long overlays the word of its number; code 0x15 alone uses the longs.
    union {
        qint32 long0 = 0;
        quint16 word0;
    };
    union {
        qint32 long1 = 0;
        quint16 word1;
    };
    union {
        qint32 long2 = 0;
        quint16 word2;
    };
    quint16 word3 = 0;
    quint8 crcHigh = 0;    ///< computed by the parser
    quint8 crcLow = 0;     ///< computed by the parser
    bool crcValid = false; ///< computed by the parser
};

/// Fills `record` from a whole host frame. Header bytes aren't tested; missing bytes read as zero.
void parseHostFrame(const QByteArray &bytes, HostFrame &record);

/// Writes `record` and its CRC into `bytes`, which the caller has sized to `record.length`.
/// Returns `record.length`; of a smaller buffer only what is there is written.
quint16 packHostFrame(const HostFrame &record, QByteArray &bytes);

constexpr protocol::Limit kByteLimit{protocol::Limit::Integer, 0, 255};
constexpr protocol::Limit kControlLimit{protocol::Limit::Integer, -18000, 18000};
constexpr protocol::Limit kCentiLimit{protocol::Limit::Real, -1000000, 1000000, 2};
constexpr protocol::Limit kMilliLimit{protocol::Limit::Real, -1000000, 1000000, 3};

/// Limit given by a pattern. The two with "\0" demand a decimal point: a plain "0" isn't acceptable
/// to them, the text that their fields start with. A pattern that took it would let operators type
/// what these fields have always refused.
constexpr protocol::Limit matching(const char *pattern)
{
    return {protocol::Limit::Pattern, 0, 0, 0, pattern};
}

/// The rows of the host frame in wire order, a row a field.
// clang-format off
inline constexpr std::array<protocol::FieldRow<HostFrame>, 29> kHostRows = {{
    {{0, 2, FieldKind::Constant, kPlain, "header", "", "协议头",
      "label22", "", "", {0xA8, 0xE5}},
     protocol::BytePair<HostFrame>{&HostFrame::header0, &HostFrame::header1}},
    {{2, 2, FieldKind::Length, kPlain, "length", "B", "包长度",
      "label32", "label33", "label34"}, &HostFrame::length},
    {{4, 1, FieldKind::SignedByte, kPlain, "version", "", "版本号",
      "label42", "lineEdit43", "label44", {}, kByteLimit}, &HostFrame::version},
    {{5, 2, FieldKind::I16, kPlain, "roll_control", "", "滚转控制量",
      "label52", "lineEdit53", "label54", {}, kControlLimit}, &HostFrame::rollControl},
    {{7, 2, FieldKind::I16, kPlain, "pitch_control", "", "俯仰控制量",
      "label62", "lineEdit63", "label64", {}, kControlLimit}, &HostFrame::pitchControl},
    {{9, 2, FieldKind::I16, kPlain, "yaw_control", "", "偏航控制量",
      "label72", "lineEdit73", "label74", {}, kControlLimit}, &HostFrame::yawControl},
    {{11, 1, FieldKind::Flags, kPlain, "flags", "", "状态标志",
      "label82", "", "label84"}, {}},
    {{12, 2, FieldKind::I16, kHundredths, "carrier_roll", "deg", "载机滚转角",
      "label92", "lineEdit93", "label94", {},
      matching("^[\\-\\+]?(0?\\d{1,2}\\.\\d{1,2}|1[0-7]?\\d{1}\\.\\d{1,2}|180\\0{1,2})$")},
     &HostFrame::carrierRoll},
    {{14, 2, FieldKind::I16, kHundredths, "carrier_pitch", "deg", "载机俯仰角",
      "label102", "lineEdit103", "label104", {},
      matching("^[-+]?((90(\\.\\d{1,2})?)|([1-8]?\\d(\\.\\d{1,2})?))$")}, &HostFrame::carrierPitch},
    {{16, 2, FieldKind::U16, kHundredths, "carrier_yaw", "deg", "载机偏航角",
      "label112", "lineEdit113", "label114", {},
      matching("^(([1-2][0-9]{2}|3[0-5][0-9]|[1-9][0-9]?|0)(\\.\\d{1,2})?|360)$")},
     &HostFrame::carrierYaw},
    {{18, 2, FieldKind::I16, kHundredths, "accel_north", "m/s2", "载机北向加速度",
      "label122", "lineEdit123", "label124", {}, kCentiLimit}, &HostFrame::accelNorth},
    {{20, 2, FieldKind::I16, kHundredths, "accel_east", "m/s2", "载机东向加速度",
      "label132", "lineEdit133", "label134", {}, kCentiLimit}, &HostFrame::accelEast},
    {{22, 2, FieldKind::I16, kHundredths, "accel_up", "m/s2", "载机天向加速度",
      "label142", "lineEdit143", "label144", {}, kCentiLimit}, &HostFrame::accelUp},
    {{24, 2, FieldKind::I16, kHundredths, "velocity_north", "m/s", "载机北向速度",
      "label152", "lineEdit153", "label154", {}, kCentiLimit}, &HostFrame::velocityNorth},
    {{26, 2, FieldKind::I16, kHundredths, "velocity_east", "m/s", "载机东向速度",
      "label162", "lineEdit163", "label164", {}, kCentiLimit}, &HostFrame::velocityEast},
    {{28, 2, FieldKind::I16, kHundredths, "velocity_up", "m/s", "载机天向速度",
      "label172", "lineEdit173", "label174", {}, kCentiLimit}, &HostFrame::velocityUp},
    {{30, 1, FieldKind::Byte, kPlain, "subframe_request", "", "返回数据副帧请求码",
      "label182", "lineEdit183", "label184", {}, {protocol::Limit::Integer, 0, 9}},
     &HostFrame::subFrameRequest},
    {{31, 6, FieldKind::Reserved, kPlain, "reserved1", "", "预留",
      "label192", "", ""}, &HostFrame::reserved1},
    {{37, 1, FieldKind::Constant, kPlain, "subframe_header", "", "副帧帧头",
      "label202", "label203", "label204", {0x01}}, &HostFrame::subFrameHeader},
    {{38, 4, FieldKind::I32, kGeoDegrees, "longitude", "deg", "载机经度",
      "label212", "lineEdit213", "label214", {},
      matching("^[\\-\\+]?(0?\\d{1,2}\\.\\d{1,7}|1[0-7]?\\d{1}\\.\\d{1,7}|180\\0{1,7})$")},
     &HostFrame::longitude},
    {{42, 4, FieldKind::I32, kGeoDegrees, "latitude", "deg", "载机纬度",
      "label222", "lineEdit223", "label224", {},
      matching("^[-+]?((90(\\.\\d{1,7})?)|([1-8]?\\d(\\.\\d{1,7})?))$")}, &HostFrame::latitude},
    {{46, 4, FieldKind::I32, kThousandths, "altitude", "m", "载机海拔",
      "label232", "lineEdit233", "label234", {}, kMilliLimit}, &HostFrame::altitude},
    {{50, 1, FieldKind::Byte, kPlain, "satellites", "", "载机卫星数",
      "label242", "lineEdit243", "label244", {}, kByteLimit}, &HostFrame::satellites},
    {{51, 4, FieldKind::U32, kPlain, "gnss_ms", "ms", "载机GNSS毫秒数",
      "label252", "lineEdit253", "label254", {},
      matching("^[0-9]*$")}, &HostFrame::gnssMilliseconds},
    {{55, 2, FieldKind::I16, kPlain, "gnss_week", "", "载机GNSS周数",
      "label262", "lineEdit263", "label264", {}, {protocol::Limit::Integer, -32767, 32767}},
     &HostFrame::gnssWeek},
    {{57, 4, FieldKind::I32, kThousandthsSingle, "relative_height", "m", "相对高度",
      "label272", "lineEdit273", "label274", {}, kMilliLimit}, &HostFrame::relativeHeight},
    {{61, 8, FieldKind::Reserved, kPlain, "reserved2", "", "预留",
      "label282", "", ""}, &HostFrame::reserved2},
    {{69, 0, FieldKind::Command, kPlain, "command", "", "控制命令",
      "pushButton_Cmd", "label293", "label294"}, {}},
    {{0, 2, FieldKind::Crc, kPlain, "crc", "", "CRC校验",
      "label302", "label303", "label304"}, {}},
}};
// clang-format on
static_assert(tilesFrame(kHostRows), "the rows of the host frame leave a gap or overlap");
static_assert(kindsFitSizes(kHostRows), "a field's kind has another size");
static_assert(membersFit(kHostRows), "a record's member isn't as wide as its field, or as signed");
static_assert(idsAreDistinct(kHostRows), "a field lacks an id, or shares one");

/// The texts of a form from which a host frame is built, by row of `kHostRows`.
struct HostTexts
{
    std::array<QString, kHostRows.size()> values; ///< texts of the value widgets
    bool controlValid = false;
    bool inertialValid = false;
    QString command; ///< command area as hexadecimal text
};

/// The whole frame, CRC included, that the texts make. Its length field is the text that the form
/// gives, not computed from what follows: a frame whose command area disagrees goes out so.
QByteArray buildHostFrame(const HostTexts &texts);
