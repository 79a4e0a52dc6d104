#pragma once

#include "protocol/fields.h"
#include "protocol/frameproofs.h"

#include <QByteArray>
#include <QString>

// The GCU frame, the one message that the pod returns: 69 fixed bytes (mode, angles and rates,
// sub-frame), a feedback area of N bytes and a CRC, S = 71 + N bytes in all.

/// Value of `GcuFrame::feedbackResult` in a frame whose feedback area holds no result.
constexpr quint8 kNoResult = 0xFF;

/// Offsets of the two bytes that the receive path reads by itself.
constexpr int kModeOffset = 5;
constexpr int kFeedbackOffset = kFixedSize;

/// A GCU frame taken apart, its scaled fields raw as on the wire.
struct GcuFrame
{
    quint8 header0 = 0;
    quint8 header1 = 0;
    quint16 length = 0;
    quint8 version = 0;
    quint8 workMode = 0;
    quint8 statusFlags0 = 0;
    quint8 statusFlags1 = 0;
    qint16 missHorizontal = 0;
    qint16 missVertical = 0;
    qint16 relativeX = 0;
    qint16 relativeY = 0;
    qint16 relativeZ = 0;
    qint16 absoluteRoll = 0;
    qint16 absolutePitch = 0;
    quint16 absoluteYaw = 0;
    qint16 rateX = 0;
    qint16 rateY = 0;
    qint16 rateZ = 0;
    std::array<quint8, 7> reserved1 = {};
    quint8 subFrameHeader = 0;
    quint8 hardwareVersion = 0;
    quint8 firmwareVersion = 0;
    quint8 podCode = 0;
    quint8 faultCode0 = 0;
    quint8 faultCode1 = 0;
    qint32 targetDistance = 0;
    qint32 targetLongitude = 0;
    qint32 targetLatitude = 0;
    qint32 targetAltitude = 0;
    quint16 zoomCamera1 = 0;
    quint16 zoomCamera2 = 0;
    std::array<quint8, 6> reserved2 = {};
    quint8 feedbackCode = 0;           ///< byte 69, whatever stands there
    QByteArray feedbackName;           ///< GBK, null for an unknown code
    quint8 feedbackResult = kNoResult; ///< byte 70, or 0xFF when `length` is 72
    quint8 crcHigh = 0;                ///< computed by the parser
    quint8 crcLow = 0;                 ///< computed by the parser
    bool crcValid = false;             ///< computed by the parser
};

/// Fills `record` from a whole GCU frame. Header bytes aren't tested; missing bytes read as zero.
void parseGcuFrame(const QByteArray &bytes, GcuFrame &record);

/// The rows of the GCU frame in wire order. Factors differ from field to field on purpose.
// clang-format off
inline constexpr std::array<protocol::FieldRow<GcuFrame>, 31> kGcuRows = {{
    {{0, 2, FieldKind::Constant, kPlain, "header", "", "协议头",
      "label22_2", "", "", {0x8A, 0x5E}},
     protocol::BytePair<GcuFrame>{&GcuFrame::header0, &GcuFrame::header1}},
    {{2, 2, FieldKind::Length, kPlain, "length", "B", "包长度",
      "label32_2", "label33_2", "label34_2"}, &GcuFrame::length},
    {{4, 1, FieldKind::Byte, kPlain, "version", "", "版本号",
      "label42_2", "label43_2", "label44_2"}, &GcuFrame::version},
    {{5, 1, FieldKind::Mode, kPlain, "mode", "", "吊舱工作模式",
      "label52_2", "lineEdit53_2", "label54_2"}, &GcuFrame::workMode},
    {{6, 2, FieldKind::Hex, kPlain, "camera_status", "", "吊舱状态标志",
      "label62_2", "lineEdit63_2", "label64_2"},
     protocol::BytePair<GcuFrame>{&GcuFrame::statusFlags0, &GcuFrame::statusFlags1}},
    {{8, 2, FieldKind::I16, kPlain, "miss_horizontal", "", "水平方向脱靶量",
      "label72_2", "lineEdit73_2", "label74_2"}, &GcuFrame::missHorizontal},
    {{10, 2, FieldKind::I16, kPlain, "miss_vertical", "", "垂直方向脱靶量",
      "label82_2", "lineEdit83_2", "label84_2"}, &GcuFrame::missVertical},
    {{12, 2, FieldKind::I16, kHundredths, "relative_x", "deg", "相机X轴相对角度",
      "label_82_2", "lineEdit_83_2", "label_84_2"}, &GcuFrame::relativeX},
    {{14, 2, FieldKind::I16, kHundredths, "relative_y", "deg", "相机Y轴相对角度",
      "label92_2", "lineEdit93_2", "label94_2"}, &GcuFrame::relativeY},
    {{16, 2, FieldKind::I16, kHundredths, "relative_z", "deg", "相机Z轴相对角度",
      "label102_2", "lineEdit103_2", "label104_2"}, &GcuFrame::relativeZ},
    {{18, 2, FieldKind::I16, kHundredths, "absolute_roll", "deg", "相机绝对滚转角",
      "label112_2", "lineEdit113_2", "label114_2"}, &GcuFrame::absoluteRoll},
    {{20, 2, FieldKind::I16, kHundredths, "absolute_pitch", "deg", "相机绝对俯仰角",
      "label122_2", "lineEdit123_2", "label124_2"}, &GcuFrame::absolutePitch},
    {{22, 2, FieldKind::U16, kHundredths, "absolute_yaw", "deg", "相机绝对偏航角",
      "label132_2", "lineEdit133_2", "label134_2"}, &GcuFrame::absoluteYaw},
    {{24, 2, FieldKind::I16, kTenths, "rate_x", "deg/s", "相机X轴绝对角速度",
      "label142_2", "lineEdit143_2", "label144_2"}, &GcuFrame::rateX},
    {{26, 2, FieldKind::I16, kTenths, "rate_y", "deg/s", "相机Y轴绝对角速度",
      "label152_2", "lineEdit153_2", "label154_2"}, &GcuFrame::rateY},
    {{28, 2, FieldKind::I16, kTenths, "rate_z", "deg/s", "相机Z轴绝对角速度",
      "label162_2", "lineEdit163_2", "label164_2"}, &GcuFrame::rateZ},
    {{30, 7, FieldKind::Reserved, kPlain, "reserved1", "", "预留",
      "label172_2", "", "label174_2"}, &GcuFrame::reserved1},
    {{37, 1, FieldKind::Byte, kPlain, "subframe_header", "", "副帧帧头",
      "label182_2", "label183_2", "label184_2"}, &GcuFrame::subFrameHeader},
    {{38, 1, FieldKind::Byte, kPlain, "hardware_version", "", "硬件版本",
      "label192_2", "lineEdit193_2", "label194_2"}, &GcuFrame::hardwareVersion},
    {{39, 1, FieldKind::Byte, kPlain, "firmware_version", "", "固件版本",
      "label202_2", "lineEdit203_2", "label204_2"}, &GcuFrame::firmwareVersion},
    {{40, 1, FieldKind::Byte, kPlain, "pod_code", "", "吊舱代码",
      "label212_2", "lineEdit213_2", "label214_2"}, &GcuFrame::podCode},
    {{41, 2, FieldKind::Hex, kPlain, "fault_code", "", "故障代码",
      "label222_2", "lineEdit223_2", "label224_2"},
     protocol::BytePair<GcuFrame>{&GcuFrame::faultCode0, &GcuFrame::faultCode1}},
    {{43, 4, FieldKind::I32, kTenths, "target_distance", "m", "目标距离",
      "label232_2", "lineEdit233_2", "label234_2"}, &GcuFrame::targetDistance},
    {{47, 4, FieldKind::I32, kGeoDegrees, "target_longitude", "deg", "目标经度",
      "label242_2", "lineEdit243_2", "label244_2"}, &GcuFrame::targetLongitude},
    {{51, 4, FieldKind::I32, kGeoDegrees, "target_latitude", "deg", "目标纬度",
      "label252_2", "lineEdit253_2", "label254_2"}, &GcuFrame::targetLatitude},
    {{55, 4, FieldKind::I32, kThousandths, "target_altitude", "m", "目标海拔高度",
      "label262_2", "lineEdit263_2", "label264_2"}, &GcuFrame::targetAltitude},
    {{59, 2, FieldKind::U16, kTenths, "zoom_camera1", "", "1号相机当前倍率",
      "label272_2", "lineEdit273_2", "label274_2"}, &GcuFrame::zoomCamera1},
    {{61, 2, FieldKind::U16, kTenths, "zoom_camera2", "", "2号相机当前倍率",
      "label282_2", "lineEdit283_2", "label284_2"}, &GcuFrame::zoomCamera2},
    {{63, 6, FieldKind::Reserved, kPlain, "reserved2", "", "预留",
      "label292_2", "", "label294_2"}, &GcuFrame::reserved2},
    {{69, 0, FieldKind::Feedback, kPlain, "feedback", "", "命令反馈",
      "label302_2", "label303_2", "label304_2"}, {}},
    {{0, 2, FieldKind::Crc, kPlain, "crc", "", "CRC校验",
      "label312_2", "label313_2", "label314_2"}, {}},
}};
// clang-format on
static_assert(tilesFrame(kGcuRows), "the rows of the GCU frame leave a gap or overlap");
static_assert(kindsFitSizes(kGcuRows), "a field's kind has another size");
static_assert(membersFit(kGcuRows), "a record's member isn't as wide as its field, or as signed");
static_assert(idsAreDistinct(kGcuRows), "a field lacks an id, or shares one");

/// Text of a frame's feedback area, whose size N the frame's own length field gives: "无命令"
/// without one, the command's name for one byte, name and result's word joined for more.
QString feedbackText(const QByteArray &frame);

/// The same from the bytes that a form shows, as a switch of language renews it. It knows no
/// "执行中": a result that was still executing reads as failed from then on, which is kept.
QString renewedFeedbackText(const QByteArray &feedback);
