#pragma once

#include "foundation/QGlobal.h"

#include <tuple>

class QIODevice;

/// What the saved file holds, in its order. The values stand here only while a file is read: a
/// short file doesn't fall back on them.
struct SavedBlock
{
    bool optionFlag2 = false;
    bool optionFlag3 = false;
    bool optionFlag1 = false;
    bool optionFlag4 = false;
    bool optionFlag5 = false;
    bool optionFlag6 = false;
    qint32 optionValue1 = 50;
    qint32 optionValue2 = 50;
    qint32 optionValue3 = 50;
    bool optionFlag9 = false;
    bool languageChinese = true;
    bool ffmpegEngine = false;
    bool optionFlag7 = true;
    QString dataFolder = QLatin1String("");
    QList<ControlRow> controlRows;
    QList<KeyRow> keyRows;
};

/// A setting of the block and its place in `QGlobal`.
template <typename T>
struct SettingField
{
    const char *name;
    T SavedBlock::*member;
    T QGlobal::*global;
};

/// A field of one of the two kinds of rows. What isn't kept is read to stay in step, and dropped
/// when the program takes the row.
template <typename Row, typename T>
struct RowField
{
    const char *name;
    T Row::*member;
    bool isKept;
};

template <typename T>
constexpr SettingField<T> setting(const char *name, T SavedBlock::*member, T QGlobal::*global)
{
    return {name, member, global};
}

template <typename Row, typename T>
constexpr RowField<Row, T> kept(const char *name, T Row::*member)
{
    return {name, member, true};
}

template <typename Row, typename T>
constexpr RowField<Row, T> dropped(const char *name, T Row::*member)
{
    return {name, member, false};
}

/// The settings in the file's order, one byte for a bool, four for a number. The second and third
/// flag stand before the first: saved files in the field have them so, and would be read with their
/// flags exchanged otherwise. The two lists of rows follow them.
inline constexpr std::tuple kSettingFields{
    setting("optionFlag2", &SavedBlock::optionFlag2, &QGlobal::optionFlag2),
    setting("optionFlag3", &SavedBlock::optionFlag3, &QGlobal::optionFlag3),
    setting("optionFlag1", &SavedBlock::optionFlag1, &QGlobal::optionFlag1),
    setting("optionFlag4", &SavedBlock::optionFlag4, &QGlobal::optionFlag4),
    setting("optionFlag5", &SavedBlock::optionFlag5, &QGlobal::optionFlag5),
    setting("optionFlag6", &SavedBlock::optionFlag6, &QGlobal::optionFlag6),
    setting("optionValue1", &SavedBlock::optionValue1, &QGlobal::optionValue1),
    setting("optionValue2", &SavedBlock::optionValue2, &QGlobal::optionValue2),
    setting("optionValue3", &SavedBlock::optionValue3, &QGlobal::optionValue3),
    setting("optionFlag9", &SavedBlock::optionFlag9, &QGlobal::optionFlag9),
    setting("languageChinese", &SavedBlock::languageChinese, &QGlobal::languageChinese),
    setting("ffmpegEngine", &SavedBlock::ffmpegEngine, &QGlobal::ffmpegEngine),
    setting("optionFlag7", &SavedBlock::optionFlag7, &QGlobal::optionFlag7),
    setting("dataFolder", &SavedBlock::dataFolder, &QGlobal::dataFolder),
};

/// The fields of a control row. Three of them come back as 0: what they hold belongs to the run
/// that wrote them, and other readers of the file expect 0.
inline constexpr std::tuple kControlFields{
    kept("index", &ControlRow::index),         kept("name", &ControlRow::name),
    kept("text2", &ControlRow::text2),         kept("text3", &ControlRow::text3),
    kept("text4", &ControlRow::text4),         kept("text5", &ControlRow::text5),
    kept("text6", &ControlRow::text6),         kept("text7", &ControlRow::text7),
    kept("number1", &ControlRow::number1),     kept("text8", &ControlRow::text8),
    kept("items", &ControlRow::items),         kept("text9", &ControlRow::text9),
    kept("text10", &ControlRow::text10),       kept("number2", &ControlRow::number2),
    dropped("word", &ControlRow::word),        kept("value1", &ControlRow::value1),
    kept("value2", &ControlRow::value2),       kept("value3", &ControlRow::value3),
    kept("value4", &ControlRow::value4),       kept("ratio1", &ControlRow::ratio1),
    kept("ratio2", &ControlRow::ratio2),       kept("ratio3", &ControlRow::ratio3),
    kept("unsigned1", &ControlRow::unsigned1), kept("byte1", &ControlRow::byte1),
    kept("number3", &ControlRow::number3),     dropped("number4", &ControlRow::number4),
    dropped("stamp", &ControlRow::stamp),      kept("state", &ControlRow::state),
};

inline constexpr std::tuple kKeyFields{
    kept("index", &KeyRow::index),       kept("name", &KeyRow::name),
    kept("padKey", &KeyRow::padKey),     kept("keyboardKey", &KeyRow::keyboardKey),
    kept("reserved", &KeyRow::reserved), kept("keyCode", &KeyRow::keyCode),
};

/// Calls `visit` with each field of one of the tables above, in order.
template <typename Fields, typename Visit>
constexpr void forEachField(const Fields &fields, Visit &&visit)
{
    std::apply([&visit](const auto &...field) { (visit(field), ...); }, fields);
}

/// How far a saved file can be read.
enum class BlockState {
    Unusable, ///< fewer than 16 control rows: the program starts with its defaults
    Usable,   ///< the program takes it, but it ends early, is damaged or has bytes left over
    Whole     ///< read to its last byte
};

/// Reads a block as it stands in the file. A list that can't be read to its end is empty. Any bytes
/// may be read.
BlockState readBlock(QIODevice &device, SavedBlock &block);

/// Writes the block as it stands.
void writeBlock(QIODevice &device, const SavedBlock &block);

/// The block of the present settings, with the first 16 control rows, which must be there.
SavedBlock blockOf(const QGlobal &global);

/// Sets the settings from a block and adds new rows for those that the program keeps: all key rows,
/// and the first 16 control rows, which must be there, without what is dropped.
void takeBlock(const SavedBlock &block, QGlobal &global);

/// Where the program looks for its saved file: beside the executable.
QString savedFilePath();
