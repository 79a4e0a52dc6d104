#pragma once

#include "tools/wire/decode.h"
#include "tools/wire/output.h"

#include <QElapsedTimer>
#include <QStringList>

namespace wire {

/// When a recorder begins another file, and how many it leaves; 0 for never and all.
struct Rotation
{
    qint64 bytes = 0;
    qint64 microseconds = 0;
    int keep = 0;

    bool isWanted() const { return bytes > 0 || microseconds > 0; }
};

/// Writes records into a file, or into one after another: night.pcapng, or night-00001.pcapng and
/// so on, from the highest number that is there already; `keep` counts those files too. What is
/// written reaches the disk when `flush` is called.
class Recorder
{
public:
    Recorder(const QString &path, const FrameFormat &format, const Rotation &rotation);

    bool hasFolder() { return m_output.hasFolder(m_path); }
    bool open();
    /// Whether there has been a first file.
    bool hasBegun() const { return m_since.isValid(); }
    /// False after a failure, of which `error` speaks.
    bool take(const Record &record);
    /// Also begins the next file when it is time.
    bool flush();
    bool close() { return m_output.close(); }
    const QString &error() const { return m_output.error(); }
    bool isUnread() const { return m_output.isUnread(); }
    qint64 count() const { return m_count; }

private:
    bool isDue() const;
    QString pathOf(qint64 number) const;
    void findFormer();
    QString nextPath();

    const QString m_path;
    const FrameFormat &m_format;
    const Rotation m_rotation;
    Output m_output;
    QElapsedTimer m_since;
    QString m_stem, m_end; ///< of a file's path, before its number and after it
    QStringList m_files;
    qint64 m_number = 0;
    qint64 m_count = 0;
};

} // namespace wire
