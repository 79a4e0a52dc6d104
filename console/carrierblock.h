#pragma once

#include "protocol/hostframe.h"

#include <QByteArray>
#include <QString>

#include <array>

// The carrier block: offsets 12 to 68 of a host frame, as the console's form makes them.

constexpr int kCarrierOffset = 12;

/// One field of the carrier form. Kind, scale and name are those of the host frame's row at the
/// same offset; what the console lets the operator type is its own.
struct CarrierField
{
    int offset = 0;
    const char *edit = "";
    const char *label = "";
    protocol::Limit limit = {};
};

constexpr const char *kSevenDecimals =
    "^[-+]?((180(\\.\\d{1,7})?)|((1[0-7]\\d)|([1-9]\\d?))(\\.\\d{1,7})?)$";
/// The rule that would fit a latitude. The page builds it and installs it nowhere: with it,
/// latitudes that operators enter today would be refused.
constexpr const char *kLatitudePattern = "^[-+]?((90(\\.\\d{1,7})?)|([1-8]?\\d(\\.\\d{1,7})?))$";

/// Accelerations and velocities can't be typed negative although they are signed on the wire. The
/// top of the range is soft: a larger number is only intermediate and goes out as it stands.
constexpr protocol::Limit kMotionLimit{protocol::Limit::Real, 0, 100, 2};
constexpr protocol::Limit kAltitudeLimit{protocol::Limit::Real, 0, 100, 3};

constexpr int kCarrierFieldCount = 15;

/// The carrier form in the order of the frame. The latitude takes the longitude's rule and so
/// accepts up to 180 degrees, which lets a bench send a place that can't be.
inline constexpr std::array<CarrierField, kCarrierFieldCount> kCarrierFields = {{
    {12, "lineEdit_s_1", "label_123",
     matching("^[-+]?((180(\\.\\d{1,2})?)|((1[0-7]\\d)|([1-9]\\d?))(\\.\\d{1,2})?)$")},
    {14, "lineEdit_s_2", "label_129",
     matching("^[-+]?((90(\\.\\d{1,2})?)|([1-8]?\\d(\\.\\d{1,2})?))$")},
    {16, "lineEdit_s_3", "label_135",
     matching("^(([1-2][0-9]{2}|3[0-5][0-9]|[1-9][0-9]?|0)(\\.\\d{1,2})?|360)$")},
    {18, "lineEdit_s_4", "label_124", kMotionLimit},
    {20, "lineEdit_s_5", "label_130", kMotionLimit},
    {22, "lineEdit_s_6", "label_136", kMotionLimit},
    {24, "lineEdit_s_7", "label_125", kMotionLimit},
    {26, "lineEdit_s_8", "label_131", kMotionLimit},
    {28, "lineEdit_s_9", "label_137", kMotionLimit},
    {38, "lineEdit_s_10", "label_132", matching(kSevenDecimals)},
    {42, "lineEdit_s_11", "label_126", matching(kSevenDecimals)},
    {46, "lineEdit_s_12", "label_133", kAltitudeLimit},
    {50, "lineEdit_s_13", "label_127", {protocol::Limit::Integer, 0, 255}},
    {51, "lineEdit_s_14", "label_134", matching("^[0-9]*$")},
    {55, "lineEdit_s_15", "label_128", {protocol::Limit::Integer, -32767, 32767}},
}};

/// Texts of the carrier form, by row of `kCarrierFields`.
using CarrierTexts = std::array<QString, kCarrierFieldCount>;

/// Name of a carrier field before the language lookup.
const char *carrierKey(const CarrierField &field);

/// The 57 bytes of the block. The sub-frame request is 1; what the form doesn't hold is zero, the
/// relative height too.
QByteArray carrierBlock(const CarrierTexts &texts);
