#include "foundation/savedblock.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QIODevice>

#include <type_traits>

// The streams keep their default settings: big-endian, floats written as doubles.

namespace {

/// The fewest bytes that a value of a field takes. A string or list is at least its length.
template <typename Row, typename T>
constexpr qint64 leastBytes(const RowField<Row, T> &)
{
    if (std::is_floating_point_v<T>)
        return sizeof(double);
    if (std::is_arithmetic_v<T>)
        return sizeof(T);
    return sizeof(quint32);
}

template <typename Fields>
constexpr qint64 leastRowBytes(const Fields &fields)
{
    return std::apply([](const auto &...field) { return (leastBytes(field) + ...); }, fields);
}

constexpr qint64 leastBytesOf(const ControlRow *)
{
    return leastRowBytes(kControlFields);
}

constexpr qint64 leastBytesOf(const KeyRow *)
{
    return leastRowBytes(kKeyFields);
}

constexpr qint64 leastBytesOf(const QString *)
{
    return sizeof(quint32);
}

template <typename T>
void readValue(QDataStream &in, T &value)
{
    in >> value;
}

template <typename T>
void readList(QDataStream &in, QList<T> &list);

void readValue(QDataStream &in, QStringList &list)
{
    readList(in, list);
}

template <typename Row, typename Fields>
void readFields(QDataStream &in, Row &row, const Fields &fields)
{
    forEachField(fields, [&](const auto &field) { readValue(in, row.*(field.member)); });
}

void readValue(QDataStream &in, ControlRow &row)
{
    readFields(in, row, kControlFields);
}

void readValue(QDataStream &in, KeyRow &row)
{
    readFields(in, row, kKeyFields);
}

/// Takes the elements up to the first that can't be read; then none of them counts.
template <typename T>
void readElements(QDataStream &in, quint32 count, QList<T> &list)
{
    for (quint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        T element;
        readValue(in, element);
        list.append(element);
    }
    if (in.status() != QDataStream::Ok)
        list.clear();
}

/// Reads as the toolkit's own operator does, which isn't used because it believes the count: it
/// reserves memory for whatever a damaged file says, and ends the process when there is none.
template <typename T>
void readList(QDataStream &in, QList<T> &list)
{
    const QDataStream::Status before = in.status();
    in.resetStatus();
    quint32 count = 0;
    in >> count;
    if (count > in.device()->bytesAvailable() / leastBytesOf(static_cast<T *>(nullptr)))
        in.setStatus(QDataStream::ReadCorruptData);
    else
        readElements(in, count, list);
    if (before == QDataStream::Ok)
        return;
    in.resetStatus(); // what failed earlier is not forgotten
    in.setStatus(before);
}

template <typename Row, typename Fields>
void writeFields(QDataStream &out, const Row &row, const Fields &fields)
{
    forEachField(fields, [&](const auto &field) { out << row.*(field.member); });
}

template <typename Row, typename Fields>
void writeRows(QDataStream &out, const QList<Row> &rows, const Fields &fields)
{
    out << quint32(rows.size());
    for (const Row &row : rows)
        writeFields(out, row, fields);
}

/// What the program keeps of a row of the file.
ControlRow keptRow(const ControlRow &read)
{
    ControlRow row;
    row.index = read.index;
    row.name = read.name;
    // A row in state 1 without its fourth text is cleared: saved files in the field mark a row so
    // that was never filled in, and its other texts are leftovers.
    if (read.text4.isEmpty() && read.state == 1)
        return row;
    forEachField(kControlFields, [&](const auto &field) {
        if (field.isKept)
            row.*(field.member) = read.*(field.member);
    });
    return row;
}

} // namespace

BlockState readBlock(QIODevice &device, SavedBlock &block)
{
    QDataStream in(&device);
    readFields(in, block, kSettingFields);
    readList(in, block.controlRows);
    readList(in, block.keyRows);
    if (block.controlRows.size() < kControlRowCount)
        return BlockState::Unusable;
    const bool isWhole = in.status() == QDataStream::Ok && device.atEnd();
    return isWhole ? BlockState::Whole : BlockState::Usable;
}

void writeBlock(QIODevice &device, const SavedBlock &block)
{
    QDataStream out(&device);
    writeFields(out, block, kSettingFields);
    writeRows(out, block.controlRows, kControlFields);
    writeRows(out, block.keyRows, kKeyFields);
}

SavedBlock blockOf(const QGlobal &global)
{
    SavedBlock block;
    forEachField(kSettingFields,
                 [&](const auto &field) { block.*(field.member) = global.*(field.global); });
    for (int i = 0; i < kControlRowCount; ++i)
        block.controlRows.append(*global.controlRows.at(i));
    for (const KeyRow *row : global.keyRows)
        block.keyRows.append(*row);
    return block;
}

void takeBlock(const SavedBlock &block, QGlobal &global)
{
    for (int i = 0; i < kControlRowCount; ++i)
        global.controlRows.append(new ControlRow(keptRow(block.controlRows.at(i))));
    for (const KeyRow &row : block.keyRows)
        global.keyRows.append(new KeyRow(row));
    forEachField(kSettingFields,
                 [&](const auto &field) { global.*(field.global) = block.*(field.member); });
}

QString savedFilePath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/controlConfig.ncl");
}
