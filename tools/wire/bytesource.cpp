#include "tools/wire/bytesource.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#ifdef Q_OS_WIN
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

namespace wire {

namespace {

constexpr int kLongestLine = 1 << 20;

/// What is there now, without waiting for more: a device reads on until it has all that was asked.
qint64 readSome(QIODevice &device, char *data, qint64 size)
{
    auto *file = qobject_cast<QFile *>(&device);
#ifdef Q_OS_WIN
    if (file && file->fileName().isEmpty())
        return _read(0, data, unsigned(size));
#else
    if (file)
        return ::read(file->handle(), data, std::size_t(size));
#endif
    return device.read(data, size);
}

} // namespace

std::unique_ptr<ByteSource> ByteSource::open(const QString &path, QString &error)
{
    const bool isStdin = path.isEmpty() || path == QLatin1String("-");
    auto file = isStdin ? std::make_unique<QFile>() : std::make_unique<QFile>(path);
    const auto mode = QIODevice::ReadOnly | QIODevice::Unbuffered;
#ifdef Q_OS_WIN
    if (isStdin)
        _setmode(0, _O_BINARY);
#endif
    if (isStdin ? file->open(0, mode) : file->open(mode))
        return std::make_unique<ByteSource>(std::move(file));
    error = path + QStringLiteral(": ") + file->errorString();
    return nullptr;
}

int ByteSource::fill(int count)
{
    while (size() < count && !m_isAtEnd)
        m_isAtEnd = !readMore();
    return size();
}

void ByteSource::drop(int count)
{
    m_at += count;
    m_position += count;
}

bool ByteSource::readMore()
{
    if (beforeRead)
        beforeRead();
    std::memmove(m_bytes.data(), data(), std::size_t(size()));
    m_end -= m_at;
    m_at = 0;
    if (m_end == m_bytes.size())
        m_bytes.resize(2 * m_bytes.size());
    const qint64 count = readSome(*m_device, m_bytes.data() + m_end, m_bytes.size() - m_end);
    if (count < 0)
        m_error = qt_error_string();
    m_end += int(qMax<qint64>(0, count));
    if (m_decoder && count > 0)
        decodeFrom(m_end - int(count));
    return count > 0;
}

void ByteSource::decodeUtf16()
{
    m_decoder.reset(QTextCodec::codecForName("UTF-16")->makeDecoder());
    decodeFrom(m_at);
}

void ByteSource::decodeFrom(int from)
{
    const QByteArray text = m_decoder->toUnicode(m_bytes.constData() + from, m_end - from).toUtf8();
    m_end = from + text.size();
    m_bytes.resize(qMax(m_end, m_bytes.size()));
    std::copy(text.begin(), text.end(), m_bytes.begin() + from);
}

bool LineReader::next(QByteArray &line)
{
    int known = 0;
    for (;;) {
        const void *end =
            std::memchr(m_source.data() + known, '\n', std::size_t(m_source.size() - known));
        const int size =
            end ? int(static_cast<const char *>(end) - m_source.data()) : m_source.size();
        const bool isLong = size >= kLongestLine;
        known = m_source.size();
        if (!end && !isLong && m_source.fill(known + 1) > known)
            continue;
        if (!end && size == 0)
            return false;
        line = QByteArray(m_source.data(), qMin(size, kLongestLine));
        m_source.drop(line.size() + (end && !isLong ? 1 : 0));
        if (line.endsWith('\r'))
            line.chop(1);
        ++m_number;
        return true;
    }
}

} // namespace wire
