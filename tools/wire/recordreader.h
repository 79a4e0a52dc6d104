#pragma once

#include "tools/wire/bytesource.h"
#include "tools/wire/inputformat.h"
#include "tools/wire/record.h"
#include "tools/wire/streamcutter.h"

#include <QDate>

#include <memory>

namespace wire {

struct ReadOptions
{
    Cut cut = Cut::Searching;
    /// Day of the log text's times, which have none: that day in local time.
    QDate date = QDate(1970, 1, 1);
};

/// Reads the records of one input, one at a time and in its order. What is damaged is passed over,
/// and told of by `trouble`.
class RecordReader
{
public:
    virtual ~RecordReader() = default;
    virtual bool next(Record &record) = 0;

    /// Where the input says it comes from, as far as it is read; without the tool.
    virtual Origin origin() const { return {}; }

    /// What was wrong with the input so far: the first of it, and how often; empty for nothing.
    QString trouble() const;
    /// Bytes read, and bytes of the input or -1.
    qint64 position() const { return m_source->position(); }
    qint64 total() const { return m_source->total(); }

protected:
    explicit RecordReader(std::unique_ptr<ByteSource> source) : m_source(std::move(source)) {}
    ByteSource &source() { return *m_source; }
    void addTrouble(const QString &text);

private:
    std::unique_ptr<ByteSource> m_source;
    QString m_trouble;
    int m_troubles = 0;
};

/// The reader for what the source holds, found out by content. Null with `error` set where it is of
/// a kind that isn't read, or has no chunks to be cut as the bench does: only pcapng has them.
std::unique_ptr<RecordReader> makeReader(std::unique_ptr<ByteSource> source,
                                         const ReadOptions &options, QString &error);

/// A line `(1732190000.123456) tx A8E5…`; false where it isn't one.
bool readLineForm(const QByteArray &line, Record &record);

} // namespace wire
