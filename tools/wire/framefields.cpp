#include "tools/wire/framefields.h"

#include "protocol/codec.h"

namespace wire {

namespace {

template <typename Rows>
QVector<protocol::Field> plain(const Rows &rows)
{
    QVector<protocol::Field> fields;
    for (const auto &row : rows)
        fields.append(row.field);
    return fields;
}

template <typename T>
constexpr Range rangeOfType()
{
    return {std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};
}

} // namespace

const QVector<protocol::Field> &fieldsOf(FrameKind kind)
{
    static const QVector<protocol::Field> host = plain(kHostRows);
    static const QVector<protocol::Field> gcu = plain(kGcuRows);
    static const QVector<protocol::Field> none;
    return kind == FrameKind::Host ? host : kind == FrameKind::Gcu ? gcu : none;
}

const protocol::Field *fieldNamed(FrameKind kind, const QString &id)
{
    for (const protocol::Field &field : fieldsOf(kind)) {
        if (id == QLatin1String(field.id))
            return &field;
    }
    return nullptr;
}

Range rangeOf(FieldKind kind)
{
    switch (kind) {
    case FieldKind::SignedByte:
        return rangeOfType<qint8>();
    case FieldKind::I16:
        return rangeOfType<qint16>();
    case FieldKind::U16:
    case FieldKind::Length:
        return rangeOfType<quint16>();
    case FieldKind::I32:
        return rangeOfType<qint32>();
    case FieldKind::U32:
        return rangeOfType<quint32>();
    default:
        return rangeOfType<quint8>();
    }
}

Range rangeOf(ParamKind kind)
{
    switch (kind) {
    case ParamKind::Byte:
        return rangeOfType<quint8>();
    case ParamKind::U16:
        return rangeOfType<quint16>();
    case ParamKind::I16:
    case ParamKind::Temperature:
        return rangeOfType<qint16>();
    default:
        return rangeOfType<qint32>();
    }
}

qint64 rawNumber(FieldKind kind, const char *at)
{
    switch (kind) {
    case FieldKind::SignedByte:
        return qint8(*at);
    case FieldKind::I16:
        return readI16(at);
    case FieldKind::U16:
    case FieldKind::Length:
        return readU16(at);
    case FieldKind::I32:
        return readI32(at);
    case FieldKind::U32:
        return readU32(at);
    default:
        return quint8(*at);
    }
}

void storeNumber(FieldKind kind, qint64 raw, char *at)
{
    switch (kind) {
    case FieldKind::I16:
    case FieldKind::U16:
    case FieldKind::Length:
        writeU16At(at, 0, quint16(raw));
        break;
    case FieldKind::I32:
    case FieldKind::U32:
        writeU32At(at, 0, quint32(raw));
        break;
    default:
        *at = char(raw);
    }
}

double scaleOf(ParamKind kind)
{
    return kind == ParamKind::GeoDegrees ? kGeoDegrees.k
           : kind == ParamKind::Metres   ? kThousandths.k
                                         : 1;
}

qint64 rawParam(ParamKind kind, const char *at)
{
    switch (kind) {
    case ParamKind::Byte:
        return quint8(*at);
    case ParamKind::U16:
        return readU16(at);
    case ParamKind::I16:
    case ParamKind::Temperature:
        return readI16(at);
    default:
        return readI32(at);
    }
}

Span areaOf(FrameKind kind, const char *bytes, int size)
{
    const int length = lengthOf(bytes, size);
    const int wanted = length - kFrameOverhead;
    const int there = qMax(0, size - kFixedSize);
    if (wanted < 0)
        return {kFixedSize, kind == FrameKind::Host ? there : 0};
    return {kFixedSize, qMin(wanted, there)};
}

Span crcOf(const char *bytes, int size)
{
    const int length = lengthOf(bytes, size);
    const bool isThere = length >= kCrcSize && length <= size;
    return isThere ? Span{length - kCrcSize, kCrcSize} : Span{};
}

Span spanOf(const protocol::Field &field, FrameKind kind, const char *bytes, int size)
{
    if (field.kind == FieldKind::Crc)
        return crcOf(bytes, size);
    if (isVariable(field.kind))
        return areaOf(kind, bytes, size);
    return field.offset + field.size <= size ? Span{field.offset, field.size} : Span{};
}

} // namespace wire
