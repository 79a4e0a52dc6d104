#include "tools/podsim/podlog.h"

#include <QTime>

#include <cstdio>

namespace podsim {

void PodLog::line(const QString &text) const
{
    const QString time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss:zzz"));
    const QByteArray bytes = QStringLiteral("[%1] %2\n").arg(time, text).toLocal8Bit();
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

void PodLog::detail(const QString &text) const
{
    if (m_isVerbose)
        line(text);
}

QString summary(const PodCounts &counts)
{
    return QStringLiteral("%1 frames: %2 idle, %3 commands, %4 repeats; %5 broken frames, "
                          "%6 bytes of noise; %7 answers")
        .arg(counts.idleFrames + counts.commandFrames + counts.repeatedFrames)
        .arg(counts.idleFrames)
        .arg(counts.commandFrames)
        .arg(counts.repeatedFrames)
        .arg(counts.brokenFrames)
        .arg(counts.noiseBytes)
        .arg(counts.answers);
}

} // namespace podsim
