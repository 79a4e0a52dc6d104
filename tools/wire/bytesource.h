#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTextCodec>

#include <functional>
#include <memory>

namespace wire {

/// The bytes of a file, of standard input or of any device, from the first to the last, with a look
/// ahead. Its memory doesn't grow with what is read; only with how far is looked ahead.
class ByteSource
{
public:
    explicit ByteSource(std::unique_ptr<QIODevice> device) : m_device(std::move(device)) {}

    /// A file, or standard input for "-" and an empty path; null with `error` set.
    static std::unique_ptr<ByteSource> open(const QString &path, QString &error);

    /// Reads until `count` bytes are ahead or there are no more: how many there are.
    int fill(int count);
    /// What is ahead, at least what `fill` gave back.
    const char *data() const { return m_bytes.constData() + m_at; }
    int size() const { return m_end - m_at; }
    void drop(int count);
    /// From here on the bytes are UTF-16, in the byte order of its mark, and come as UTF-8.
    void decodeUtf16();
    /// The position of `data` from the beginning.
    qint64 position() const { return m_position; }
    /// Bytes of the file, or -1 where that isn't known.
    qint64 total() const { return m_device->isSequential() ? -1 : m_device->size(); }
    /// What went wrong while reading, empty for nothing.
    const QString &error() const { return m_error; }

    /// Called before each read, which may take as long as the writer of a pipe does.
    std::function<void()> beforeRead;

private:
    bool readMore();
    void decodeFrom(int from);

    std::unique_ptr<QIODevice> m_device;
    QByteArray m_bytes = QByteArray(256 * 1024, Qt::Uninitialized);
    int m_at = 0;
    int m_end = 0;
    qint64 m_position = 0;
    bool m_isAtEnd = false;
    std::unique_ptr<QTextDecoder> m_decoder; ///< to UTF-8, or none
    QString m_error;
};

/// Lines of a source, their ends taken off; the longest is as long as a text of any frame.
class LineReader
{
public:
    explicit LineReader(ByteSource &source) : m_source(source) {}
    /// False at the end. What a line has beyond the limit is a line of its own.
    bool next(QByteArray &line);
    int number() const { return m_number; }

private:
    ByteSource &m_source;
    int m_number = 0;
};

} // namespace wire
