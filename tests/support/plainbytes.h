#pragma once

#include <QByteArray>
#include <QString>

#include <cstring>

/// Writes the saved file's types byte by byte, high byte first, without the code under test.
class PlainBytes
{
public:
    /// `size` bytes of a whole number.
    PlainBytes &number(quint64 value, int size)
    {
        for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
            bytes.append(char(value >> shift));
        return *this;
    }

    PlainBytes &u8(quint8 value) { return number(value, 1); }
    PlainBytes &u16(quint16 value) { return number(value, 2); }
    PlainBytes &i32(qint32 value) { return number(quint32(value), 4); }
    PlainBytes &u32(quint32 value) { return number(value, 4); }

    PlainBytes &real(double value)
    {
        quint64 bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        return number(bits, 8);
    }

    PlainBytes &text(const QString &value)
    {
        u32(quint32(2 * value.size()));
        for (const QChar c : value)
            u16(c.unicode());
        return *this;
    }

    QByteArray bytes;
};
