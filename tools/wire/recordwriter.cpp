#include "tools/wire/recordwriter.h"

#include "tools/wire/pcapngreader.h"

#include <QDateTime>
#include <QtEndian>

namespace wire {

namespace {

constexpr quint16 kCommentOption = 1;
constexpr quint16 kNameOption = 2;
constexpr quint16 kDescriptionOption = 3;
constexpr quint16 kApplicationOption = 4;
constexpr quint16 kPacketFlagsOption = 2;
constexpr quint32 kSnapLength = 262144;

QByteArray u16(quint16 value)
{
    QByteArray bytes(2, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray u32(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray padded(QByteArray bytes)
{
    return bytes.append(QByteArray((4 - bytes.size() % 4) % 4, '\0'));
}

QByteArray option(quint16 code, const QString &text)
{
    const QByteArray value = text.toUtf8().left(1024);
    return value.isEmpty() ? QByteArray() : u16(code) + u16(quint16(value.size())) + padded(value);
}

QByteArray block(quint32 type, const QByteArray &body)
{
    const QByteArray length = u32(quint32(12 + body.size()));
    return u32(type) + length + body + length;
}

void putU32(quint32 value, TextBuffer &out)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    out.put(bytes, 4);
}

class PcapngFormat : public FrameFormat
{
public:
    explicit PcapngFormat(const Origin &origin)
        : m_head(block(kSectionBlock, u32(kByteOrderMagic) + u16(1) + u16(0) +
                                          QByteArray(8, '\xFF') +
                                          option(kCommentOption, origin.peer) +
                                          option(kApplicationOption, origin.tool) + u32(0)) +
                 block(kInterfaceBlock, u16(kUser0Link) + u16(0) + u32(kSnapLength) +
                                            option(kNameOption, origin.link) +
                                            option(kDescriptionOption, origin.peer) + u32(0)))
    {
    }

    void begin(TextBuffer &out) const override { out.put(m_head); }

    void add(const Record &record, TextBuffer &out) const override
    {
        const int size = record.bytes.size();
        const int padding = (4 - size % 4) % 4;
        const bool isKnown = record.direction != Direction::Unknown;
        const auto length = quint32(32 + size + padding + (isKnown ? 12 : 0));
        const quint64 time = record.time < 0 ? 0 : quint64(record.time);
        for (const quint32 word : {kEnhancedBlock, length, 0u, quint32(time >> 32), quint32(time),
                                   quint32(size), quint32(size)})
            putU32(word, out);
        out.put(record.bytes);
        out.put("\0\0\0", padding);
        if (isKnown) {
            putU32(kPacketFlagsOption | 4u << 16, out);
            putU32(record.direction == Direction::Rx ? 1 : 2, out);
            putU32(0, out);
        }
        putU32(length, out);
    }

private:
    QByteArray m_head;
};

class LogFormat : public FrameFormat
{
public:
    explicit LogFormat(Language language)
        : m_sent(nameOf("发", language)), m_received(nameOf("收", language))
    {
    }

    void add(const Record &record, TextBuffer &out) const override
    {
        const auto when = QDateTime::fromMSecsSinceEpoch(record.time / 1000);
        const Direction direction = record.direction == Direction::Unknown
                                        ? usualDirection(kindOf(record.bytes))
                                        : record.direction;
        out.put('[');
        out.put(record.time == kNoTime ? QStringLiteral("00:00:00:000")
                                       : when.toString(QStringLiteral("HH:mm:ss:zzz")));
        out.put(']');
        out.put(direction == Direction::Tx ? m_sent : m_received);
        out.put("->\n");
        out.putHex(record.bytes.constData(), record.bytes.size());
        out.put('\n');
    }

private:
    QString m_sent, m_received;
};

} // namespace

QString toolName()
{
    return QStringLiteral("nacelle-wire " NACELLE_VERSION);
}

std::unique_ptr<FrameFormat> pcapngFormat(const Origin &origin)
{
    return std::make_unique<PcapngFormat>(origin);
}

std::unique_ptr<FrameFormat> logFormat(Language language)
{
    return std::make_unique<LogFormat>(language);
}

} // namespace wire
