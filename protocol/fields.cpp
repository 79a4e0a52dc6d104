#include "protocol/fields.h"

#include "protocol/codec.h"
#include "protocol/modes.h"

namespace {

/// The wire value of a number field, its missing bytes read as zero.
qint64 rawValue(const protocol::Field &field, const QByteArray &frame)
{
    const QByteArray slice = fieldSlice(field, frame);
    switch (field.kind) {
    case FieldKind::SignedByte:
        return qint8(byteAt(slice, 0));
    case FieldKind::I16:
    case FieldKind::Length:
        return decodeI16(slice);
    case FieldKind::U16:
        return decodeU16(slice);
    case FieldKind::I32:
        return decodeI32(slice);
    case FieldKind::U32:
        return decodeU32(slice);
    default:
        return byteAt(slice, 0);
    }
}

QString scaledText(const protocol::Scale &scale, qint64 raw)
{
    const double value = double(raw) * scale.factor;
    return scale.form == protocol::TextForm::Fixed7 ? QString::number(value, 'f', 7)
                                                    : QString::number(value, 'g', 6);
}

qint32 scaledValue(const protocol::Scale &scale, const QString &text)
{
    return scale.precision == protocol::Precision::Single ? scaledSingle(text, float(scale.k))
                                                          : scaledDouble(text, scale.k);
}

/// A plain text out of its type's range doesn't parse and counts as 0.
quint32 plainValue(FieldKind kind, const QString &text)
{
    switch (kind) {
    case FieldKind::I16:
        return quint32(text.toShort());
    case FieldKind::U16:
    case FieldKind::Length:
        return text.toUShort();
    case FieldKind::U32:
        return text.toUInt();
    default:
        return quint32(text.toInt());
    }
}

} // namespace

int saidLength(const QByteArray &frame)
{
    return decodeI16(frame.mid(2, 2));
}

QString byteLabel(const protocol::Field &field)
{
    if (field.kind == FieldKind::Crc)
        return QStringLiteral("S-2～S-1");
    const QString first = QString::number(field.offset);
    if (field.size == 0)
        return first + QStringLiteral("～S-3");
    if (field.size == 1)
        return first;
    return first + QStringLiteral("～") + QString::number(field.offset + field.size - 1);
}

QByteArray fieldSlice(const protocol::Field &field, const QByteArray &frame)
{
    const int areaSize = saidLength(frame) - kFrameOverhead;
    if (field.kind == FieldKind::Command)
        return frame.mid(kFixedSize, areaSize); // a negative size takes the rest
    if (field.kind == FieldKind::Feedback)
        return frame.mid(kFixedSize, qMax(0, areaSize));
    if (field.kind == FieldKind::Crc)
        return frame.mid(saidLength(frame) - kCrcSize, kCrcSize);
    return frame.mid(field.offset, field.size);
}

QString fieldText(const protocol::Field &field, const QByteArray &frame)
{
    switch (field.kind) {
    case FieldKind::Reserved:
    case FieldKind::Flags:
    case FieldKind::Hex:
    case FieldKind::Command:
    case FieldKind::Feedback:
    case FieldKind::Crc:
        return {};
    case FieldKind::Mode:
        return modeName(byteAt(frame, field.offset));
    default:
        break;
    }
    const qint64 raw = rawValue(field, frame);
    return field.scale.factor == 0 ? QString::number(raw) : scaledText(field.scale, raw);
}

QByteArray fieldBytes(const protocol::Field &field, const QString &text)
{
    if (field.kind == FieldKind::Constant)
        return QByteArray(reinterpret_cast<const char *>(field.constant.data()), field.size);
    if (field.kind == FieldKind::Reserved)
        return QByteArray(field.size, '\0');
    const quint32 value = field.scale.factor == 0 ? plainValue(field.kind, text)
                                                  : quint32(scaledValue(field.scale, text));
    return encodeU32(value).left(field.size);
}

bool crcMatches(const QByteArray &frame)
{
    return crcStandsAt(frame, saidLength(frame) - kCrcSize);
}
