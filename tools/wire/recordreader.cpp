#include "tools/wire/recordreader.h"

#include "tools/wire/compose.h"
#include "tools/wire/names.h"
#include "tools/wire/pcapngreader.h"

#include <QDateTime>

#include <algorithm>

namespace wire {

namespace {

constexpr int kRawChunk = 64 * 1024;
constexpr int kMicrosecondDigits = 6;
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

/// Digits at `at`, which moves past them; -1 where there are none or too many.
qint64 takeDigits(const char *&at, const char *end, int most)
{
    qint64 number = 0;
    const char *const first = at;
    for (; at < end && *at >= '0' && *at <= '9'; ++at) {
        if (at - first == most)
            return -1;
        number = number * 10 + (*at - '0');
    }
    return at == first ? -1 : number;
}

/// Seconds with up to six decimals, as microseconds.
bool takeTime(const char *&at, const char *end, qint64 &time)
{
    const bool isBefore = at < end && *at == '-';
    at += isBefore;
    const qint64 seconds = takeDigits(at, end, 11);
    qint64 micros = 0;
    int digits = 0;
    if (seconds >= 0 && at < end && *at == '.') {
        const char *const first = ++at;
        micros = takeDigits(at, end, kMicrosecondDigits);
        digits = int(at - first);
    }
    for (; digits < kMicrosecondDigits; ++digits)
        micros *= 10;
    time = (seconds * 1000000 + micros) * (isBefore ? -1 : 1);
    return seconds >= 0 && micros >= 0;
}

bool skip(const char *&at, const char *end, char c)
{
    const bool isThere = at < end && *at == c;
    at += isThere;
    return isThere;
}

/// Text of which each line is a record by itself.
class LinesReader : public RecordReader
{
public:
    LinesReader(std::unique_ptr<ByteSource> source, Format format)
        : RecordReader(std::move(source)), m_lines(this->source()), m_format(format)
    {
    }

    bool next(Record &record) override
    {
        QByteArray line;
        while (m_lines.next(line)) {
            if (line.startsWith(kByteOrderMark))
                line.remove(0, 3);
            if (isRemark(line))
                continue;
            if (m_format == Format::Line ? readLineForm(line, record) : readHex(line, record))
                return true;
            addTrouble(QStringLiteral("line %1 isn't a frame").arg(m_lines.number()));
        }
        return false;
    }

private:
    static bool readHex(const QByteArray &line, Record &record)
    {
        record = Record();
        const bool isRead = readDigits(line, record.bytes) && !record.bytes.isEmpty();
        record.direction = usualDirection(kindOf(record.bytes));
        return isRead;
    }

    LineReader m_lines;
    Format m_format;
};

/// The bench's log: `[HH:mm:ss:zzz]` with the word of a direction and `->`, and a line of digits.
class LogReader : public RecordReader
{
public:
    LogReader(std::unique_ptr<ByteSource> source, const QDate &date)
        : RecordReader(std::move(source)), m_lines(this->source()), m_date(date)
    {
        for (const Language language : {Language::Chinese, Language::English}) {
            m_sent.append(nameOf("发", language).toUtf8());
            m_received.append(nameOf("收", language).toUtf8());
        }
    }

    bool next(Record &record) override
    {
        QByteArray line;
        while (m_lines.next(line)) {
            if (line.startsWith(kByteOrderMark))
                line.remove(0, 3);
            if (line.trimmed().isEmpty() || takeHead(line))
                continue;
            if (m_isOpen && readDigits(line, m_record.bytes)) {
                m_isOpen = false;
                record = m_record;
                return true;
            }
            addTrouble(QStringLiteral("line %1 is no part of a log").arg(m_lines.number()));
        }
        return false;
    }

private:
    /// The first line of an entry: it opens one.
    bool takeHead(const QByteArray &line)
    {
        if (!line.startsWith('[') || !line.endsWith("->"))
            return false;
        const int close = line.indexOf(']');
        const QTime time = QTime::fromString(QString::fromLatin1(line.mid(1, close - 1)),
                                             QStringLiteral("HH:mm:ss:zzz"));
        const QByteArray word = line.mid(close + 1, line.size() - close - 3);
        m_record.direction = m_sent.contains(word)       ? Direction::Tx
                             : m_received.contains(word) ? Direction::Rx
                                                         : Direction::Unknown;
        if (!time.isValid() || m_record.direction == Direction::Unknown)
            return false;
        // The log doesn't say the day: a time that goes back by hours is the next one's.
        if (m_last.isValid() && time.msecsTo(m_last) > 12 * 3600 * 1000)
            m_date = m_date.addDays(1);
        m_last = time;
        m_record.time = QDateTime(m_date, time).toMSecsSinceEpoch() * 1000;
        m_isOpen = true;
        return true;
    }

    LineReader m_lines;
    QDate m_date;
    QList<QByteArray> m_sent, m_received;
    QTime m_last;
    Record m_record;
    bool m_isOpen = false;
};

/// A stream of bytes without times.
class RawReader : public RecordReader
{
public:
    explicit RawReader(std::unique_ptr<ByteSource> source) : RecordReader(std::move(source)) {}

    bool next(Record &record) override
    {
        while (!m_cutter.take(record, false)) {
            if (m_isFinished)
                return false;
            const int size = qMin(source().fill(1), kRawChunk);
            m_isFinished = size == 0;
            if (m_isFinished) {
                m_cutter.finish();
                continue;
            }
            m_cutter.push(source().data(), size);
            source().drop(size);
        }
        return true;
    }

private:
    StreamCutter m_cutter{Cut::Searching};
    bool m_isFinished = false;
};

} // namespace

QString RecordReader::trouble() const
{
    const QString text = m_trouble.isEmpty() ? m_source->error() : m_trouble;
    return m_troubles > 1 ? text + QStringLiteral(" (and %1 more)").arg(m_troubles - 1) : text;
}

void RecordReader::addTrouble(const QString &text)
{
    if (++m_troubles == 1)
        m_trouble = text;
}

bool readLineForm(const QByteArray &line, Record &record)
{
    record = Record();
    const char *at = line.constData();
    const char *const end = at + line.size();
    if (!skip(at, end, '('))
        return false;
    if (end - at >= 2 && at[0] == '-' && at[1] == ')')
        ++at;
    else if (!takeTime(at, end, record.time))
        return false;
    if (!skip(at, end, ')') || !skip(at, end, ' '))
        return false;
    const char *const word = at;
    at = std::find(at, end, ' ');
    const QByteArray name(word, int(at - word));
    record.direction = directionOf(name);
    return (record.direction != Direction::Unknown || name == "-") &&
           readDigits(at, int(end - at), record.bytes);
}

std::unique_ptr<RecordReader> makeReader(std::unique_ptr<ByteSource> source,
                                         const ReadOptions &options, QString &error)
{
    Format format = formatOf(*source);
    if (format == Format::Utf16) {
        source->decodeUtf16();
        format = formatOf(*source);
    }
    error = refusalOf(format);
    if (error.isEmpty() && options.cut == Cut::AsBench && format != Format::Pcapng)
        error = QStringLiteral("--as-bench cuts chunks, which only a pcapng recording has");
    if (!error.isEmpty())
        return nullptr;
    switch (format) {
    case Format::Pcapng:
        return std::make_unique<PcapngReader>(std::move(source), options.cut);
    case Format::Line:
    case Format::Hex:
        return std::make_unique<LinesReader>(std::move(source), format);
    case Format::Log:
        return std::make_unique<LogReader>(std::move(source), options.date);
    default:
        return std::make_unique<RawReader>(std::move(source));
    }
}

} // namespace wire
