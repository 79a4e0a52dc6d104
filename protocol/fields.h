#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <array>
#include <cstddef>
#include <variant>

// A field of a frame is a row. Building, parsing, showing, validating and relabelling walk the
// rows of `hostframe.h` and `gcuframe.h`; the functions here know how to treat one of them.

/// Bytes before the variable area of either frame, and of the smallest frame: fixed block and CRC.
constexpr int kFixedSize = 69;
constexpr int kFrameOverhead = kFixedSize + 2;

enum class FieldKind : quint8 {
    Constant, ///< written as the row's constant bytes, whatever a form shows
    Reserved, ///< written as zero
    Length,   ///< S: read as i16, written as the u16 text that the form gives
    Byte,     ///< unsigned byte
    SignedByte,
    I16,
    U16,
    I32,
    U32,
    Flags,    ///< status flags of the host frame
    Hex,      ///< shown as hexadecimal text alone
    Mode,     ///< work mode, shown by its name
    Command,  ///< command area, from offset 69 to S - 3
    Feedback, ///< feedback area, which stands in the same place
    Crc,      ///< the last two bytes, high byte first
};

/// What a row is made of. These are everyday words, which other headers may use as well.
namespace protocol {

enum class Precision : quint8 { Integer, Single, Double };
enum class TextForm : quint8 { General6, Fixed7 };

/// How an engineering value E and its wire integer W are tied: W = truncate(E * k) in `precision`,
/// E = W * factor in double precision, shown in `form`. A factor of 0 marks a plain integer.
struct Scale
{
    double k = 0;
    double factor = 0;
    Precision precision = Precision::Integer;
    TextForm form = TextForm::General6;
};

/// What an operator may type into a field.
struct Limit
{
    enum Kind : quint8 { None, Integer, Real, Pattern };
    Kind kind = None;
    int low = 0;
    int high = 0;
    int decimals = 0;
    const char *pattern = nullptr;
};

/// One field: its place in the frame, its kind, and the objects of a form that stand for it.
struct Field
{
    int offset = 0; ///< in bytes; a CRC stands at S - 2 instead
    int size = 0;   ///< in bytes; 0 for the variable area
    FieldKind kind = FieldKind::Byte;
    Scale scale = {};
    const char *id = "";          ///< name for other programs
    const char *unit = "";        ///< of the engineering value, in ASCII
    const char *key = "";         ///< name of the field, before the language lookup
    const char *nameObject = "";  ///< label or button that shows the name
    const char *valueObject = ""; ///< line edit or label that shows the value, "" for none
    const char *hexObject = "";   ///< label that shows the field's own bytes, "" for none
    std::array<quint8, 2> constant = {};
    Limit limit = {};
};

/// A pair of single bytes that a record keeps under two names.
template <typename Record>
struct BytePair
{
    quint8 Record::*first;
    quint8 Record::*second;
};

/// Where a typed record keeps a field; nothing where the record has another rule.
template <typename Record>
using Member = std::variant<std::monostate, BytePair<Record>, quint8 Record::*, qint16 Record::*,
                            quint16 Record::*, qint32 Record::*, quint32 Record::*,
                            std::array<quint8, 6> Record::*, std::array<quint8, 7> Record::*,
                            std::array<quint8, 8> Record::*>;

template <typename Record>
struct FieldRow
{
    Field field;
    Member<Record> member = {};
};

template <typename Record>
constexpr const char *idOf(const FieldRow<Record> &row)
{
    return row.field.id;
}

} // namespace protocol

constexpr protocol::Scale kPlain{};
constexpr protocol::Scale kTenths{10, 0.1, protocol::Precision::Double};
constexpr protocol::Scale kHundredths{100, 0.01, protocol::Precision::Single};
constexpr protocol::Scale kThousandthsSingle{1000, 0.001, protocol::Precision::Single};
constexpr protocol::Scale kThousandths{1000, 0.001, protocol::Precision::Double};
constexpr protocol::Scale kGeoDegrees{10000000, 1e-07, protocol::Precision::Double,
                                      protocol::TextForm::Fixed7};

/// S, the length that a frame says of itself: the signed bytes 2 and 3.
int saidLength(const QByteArray &frame);

/// Where the field stands, as a form's first column shows it before the language lookup: "4",
/// "12～13", for the variable area "69～S-3", for the CRC "S-2～S-1".
QString byteLabel(const protocol::Field &field);

/// The field's own bytes. The variable area and the CRC go by the frame's own length field, not
/// by the size of the array; of what isn't there nothing is taken. Where S is below 71 the command
/// area is all that follows offset 69, and the feedback area is empty.
QByteArray fieldSlice(const protocol::Field &field, const QByteArray &frame);

/// The field's value as a form shows it, empty for kinds without one.
QString fieldText(const protocol::Field &field, const QByteArray &frame);

/// The field's bytes as an operator's text makes them. Text that doesn't parse counts as 0.
QByteArray fieldBytes(const protocol::Field &field, const QString &text);

/// True when the two bytes at S - 2 are there and are the checksum of those before them, high byte
/// first.
bool crcMatches(const QByteArray &frame);

/// Computes the checksum over the first `record.length` - 2 bytes and compares it with the two
/// after them, which must be there: fills `crcHigh`, `crcLow` and `crcValid`.
template <typename Record>
void computeCrc(const QByteArray &frame, Record &record);

/// Fills every member of `record` that a row names from `frame`; missing bytes read as zero.
template <typename Record, std::size_t N>
void readMembers(const std::array<protocol::FieldRow<Record>, N> &rows, const QByteArray &frame,
                 Record &record);

/// Stores every member of `record` that a row names into `frame`, as far as it reaches.
template <typename Record, std::size_t N>
void writeMembers(const std::array<protocol::FieldRow<Record>, N> &rows, const Record &record,
                  QByteArray &frame);

#include "protocol/fields.inl"
