#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <cstring>

namespace wire {

/// Text that is appended to piece by piece, without an allocation a piece. Frames are written into
/// it and it is emptied into the output; its memory stays.
class TextBuffer
{
public:
    const char *data() const { return m_bytes.constData(); }
    int size() const { return m_size; }
    QByteArray bytes() const { return m_bytes.left(m_size); }
    void clear() { m_size = 0; }
    /// Takes back the last `count` characters.
    void chop(int count) { m_size -= count; }

    void put(char c) { *room(1) = c; }
    void put(const char *text, int size) { std::memcpy(room(size), text, std::size_t(size)); }
    void put(const char *text) { put(text, int(std::strlen(text))); }
    void put(const QByteArray &text) { put(text.constData(), text.size()); }
    void put(const QString &text) { put(text.toUtf8()); }

    /// Upper-case digits, two a byte.
    void putHex(const char *bytes, int size);
    void putNumber(qint64 value);
    /// The exact value of `raw` with so many decimals, trailing zeros left out: 150 with 2 is 1.5.
    void putDecimal(qint64 raw, int decimals);
    /// Seconds with six decimals.
    void putTime(qint64 microseconds);
    /// A JSON string, quotes included.
    void putQuoted(const QByteArray &utf8);

private:
    /// `size` characters to be filled by the caller.
    char *room(int size)
    {
        if (m_bytes.size() - m_size < size)
            m_bytes.resize(qMax(m_size + size, 2 * m_bytes.size()));
        m_size += size;
        return m_bytes.data() + m_size - size;
    }

    QByteArray m_bytes = QByteArray(4096, '\0');
    int m_size = 0;
};

} // namespace wire
