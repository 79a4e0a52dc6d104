#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <array>
#include <bitset>
#include <functional>

// The frames of the flow console: one host frame at a time, composed as hexadecimal text from what
// the form says.

/// How a piece of a command's text is made from the form.
enum class PieceKind : quint8 {
    None,
    Literal, ///< the piece's own text
    Raw,     ///< the object's text as it stands, and a blank
    I16,     ///< `toShort`, two bytes
    LowByte, ///< `toShort`, the lower of its two bytes
    Limit,   ///< `toDouble`, truncated without a scale, low 16 bits
};

struct Piece
{
    PieceKind kind = PieceKind::None;
    const char *source = ""; ///< object of the form, or the text of a literal
};

/// Where the control inputs of a work mode come from.
enum class ControlPanel : quint8 { None, Angles, Rates };

constexpr qint8 kNoMode = 0;

/// How a run of the console takes the pod's answer, by the index of its selector: the default run
/// goes back to the empty command, a learning run ends.
enum RunMode { kDefaultRun = 0, kLearningRun = 1 };

/// One button of the console and the command that its frames carry.
struct ConsoleCommand
{
    const char *button = "";
    const char *key = "";
    quint8 frameSize = 0;  ///< S of the frame, its third byte
    const char *code = ""; ///< command text in front of the pieces
    std::array<Piece, 4> pieces = {};
    qint8 mode = kNoMode; ///< work mode that the command enters: it isn't sent in that mode
    ControlPanel panel = ControlPanel::None; ///< control panel of that mode
};

constexpr Piece kCameraNumber{PieceKind::Raw, "lineEdit_315"};
constexpr const char *kVersionObject = "lineEdit";
/// Objects of the control inputs in wire order: roll, pitch, yaw. There is no roll rate.
inline constexpr std::array<const char *, 3> kAngleInputs = {"lineEdit_314", "lineEdit_313",
                                                             "lineEdit_312"};
inline constexpr std::array<const char *, 3> kRateInputs = {nullptr, "label_2", "label"};

constexpr int kConsoleCommandCount = 26;

/// The command buttons in the order of the walk: the last row that is selected wins, so that a
/// mode command overrides the command of the same frame. The two alarm buttons exclude each other.
inline constexpr std::array<ConsoleCommand, kConsoleCommandCount> kConsoleCommands = {{
    {"pushButton_calibrate", "吊舱校准", 0x48, " 01"},
    {"pushButton_photo", "拍照", 0x49, " 20 01"},
    {"pushButton_mid", "回中", 0x48, " 03"},
    {"pushButton_overlook", "俯拍", 0x48, " 13"},
    {"pushButton_record", "录像", 0x49, " 21 01"},
    {"pushButton_zoomin", "连续放大", 0x49, " 22 ", {kCameraNumber}},
    {"pushButton_zoomout", "连续缩小", 0x49, " 23 ", {kCameraNumber}},
    {"pushButton_end_zoom", "停止变倍", 0x49, " 24 ", {kCameraNumber}},
    {"pushButton_focus", "聚焦", 0x49, " 26 01"},
    {"pushButton_start_night", "开启夜视", 0x4A, " 2B 01 01"},
    {"pushButton_end_night", "关闭夜视", 0x4A, " 2B 01 00"},
    {"pushButton_start_ranging", "开启测距", 0x49, " 81 02"},
    {"pushButton_end_ranging", "关闭测距", 0x49, " 81 00"},
    {"pushButton_start_osd", "开启OSD", 0x49, " 73 01"},
    {"pushButton_end_osd", "关闭OSD", 0x49, " 73 00"},
    {"pushButton_ratio",
     "指定倍率",
     0x4B,
     " 25 ",
     {kCameraNumber, {PieceKind::I16, "lineEdit_ratio"}}},
    {"pushButton_color", "调色盘", 0x4A, " 2A 02 ", {{{PieceKind::LowByte, "lineEdit_color"}}}},
    {"pushButton_addlight", "补光", 0x49, " 80 ", {{{PieceKind::LowByte, "lineEdit_addlight"}}}},
    {"pushButton_alarmStart",
     "开启",
     0x4E,
     " 31 ",
     {kCameraNumber,
      {PieceKind::Literal, "01 "},
      {PieceKind::Limit, "lineEdit_alarm_1"},
      {PieceKind::Limit, "lineEdit_alarm_2"}}},
    {"pushButton_alarmEnd",
     "关闭",
     0x4E,
     " 31 ",
     {kCameraNumber,
      {PieceKind::Literal, "00 "},
      {PieceKind::Limit, "lineEdit_alarm_1"},
      {PieceKind::Limit, "lineEdit_alarm_2"}}},
    {"pushButton_Isothermy",
     "等温线",
     0x4E,
     " 32 ",
     {kCameraNumber,
      {PieceKind::Raw, "lineEdit_Isothermy_3"},
      {PieceKind::Limit, "lineEdit_Isothermy_1"},
      {PieceKind::Limit, "lineEdit_Isothermy_2"}}},
    {"pushButton_lock", "锁定", 0x48, " 11", {}, 0x11, ControlPanel::Rates},
    {"pushButton_follow", "跟随", 0x48, " 12", {}, 0x12, ControlPanel::Rates},
    {"pushButton_euler", "欧拉角控制", 0x48, " 14", {}, 0x14, ControlPanel::Angles},
    {"pushButton_fpv", "角度控制", 0x48, " 10", {}, 0x10, ControlPanel::Angles},
    {"pushButton_fpv2", "FPV", 0x48, " 1C", {}, 0x1C, ControlPanel::Angles},
}};

/// The row whose command enters work mode `mode`, or null for a mode without a button.
const ConsoleCommand *modeCommand(qint8 mode);

/// What the form says at the moment of composing.
struct ConsoleState
{
    qint8 podMode = kNoMode;                     ///< as the pod reported it last
    QString carrier;                             ///< offsets 12 to 68 as hexadecimal text
    std::bitset<kConsoleCommandCount> selected;  ///< by row of `kConsoleCommands`
    std::function<QString(const char *)> textOf; ///< text of an object of the form
};

/// A whole host frame, CRC included. An idle one ignores the selection; control inputs it carries.
QByteArray consoleFrame(const ConsoleState &state, bool idle);

/// True when a received frame shows the command of a sent one back: its feedback area holds that
/// code, not 0, and a result, whatever it says. Only a frame of 73 bytes holds just these two.
bool isAnswer(const QByteArray &sent, const QByteArray &received);
