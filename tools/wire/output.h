#pragma once

#include "tools/wire/textbuffer.h"

#include <QFile>
#include <QString>

namespace wire {

/// The code where nobody reads the output any more, as a shell has it for SIGPIPE, by which the
/// verbs end that know no stop signal.
constexpr int kExitUnread = 141;

/// A file or standard output, written in large pieces. What went wrong is kept and said once; after
/// it nothing more is written.
class Output
{
public:
    /// Standard output for "-" and an empty path. False with `error` set where it can't be opened.
    bool open(const QString &path);

    /// Whether there is a folder for the file, which stays as it is; false with `error` set.
    bool hasFolder(const QString &path);

    /// What is put here goes out with the next `flush`, or when it has become much.
    TextBuffer &buffer() { return m_buffer; }
    /// Hands over what has become much; false after a failure.
    bool settle() { return m_buffer.size() < kMuch ? m_error.isEmpty() : flush(); }
    bool flush();
    /// The file is whole and closed, or not.
    bool close();

    /// After a failure: whether its reader has gone, as `head` does; that wants no word.
    bool isUnread() const { return m_isUnread; }

    qint64 written() const { return m_written; }
    const QString &error() const { return m_error; }

private:
    static constexpr int kMuch = 128 * 1024;

    bool fail();

    QFile m_file;
    QString m_name;
    TextBuffer m_buffer;
    qint64 m_written = 0;
    QString m_error;
    bool m_isUnread = false;
};

} // namespace wire
