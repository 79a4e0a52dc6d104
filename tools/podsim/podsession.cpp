#include "tools/podsim/podsession.h"

#include "tools/podsim/podchannel.h"
#include "tools/podsim/podcommands.h"

#include <utility>

namespace podsim {

namespace {

constexpr qint64 kMostUnsent = 1024 * 1024; // bytes
constexpr int kMostWaiting = 20000;         // pieces
constexpr int kQuietMs = 500; // after which half a frame and noise at the end are reported

QString hexadecimal(int value)
{
    return QStringLiteral("0x") +
           QString::number(value, 16).rightJustified(4, QLatin1Char('0')).toUpper();
}

QString resultText(const QByteArray &feedback)
{
    const quint8 result = quint8(feedback[1]);
    switch (result) {
    case kSuccess:
        return QStringLiteral("success");
    case kFailure:
        return QStringLiteral("failure");
    default:
        return QStringLiteral("executing (%1)").arg(result);
    }
}

} // namespace

PodSession::PodSession(PodChannel *channel, PodContext &context)
    : QObject(channel), m_channel(channel), m_context(context), m_feedback(context.options.faults),
      m_faults(context.options.faults), m_outbox(channel, context.options.faults.delay, this)
{
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(kQuietMs);
    connect(&m_quiet, &QTimer::timeout, this, &PodSession::noteQuiet);
    connect(channel, &PodChannel::received, this, &PodSession::take);
    connect(channel, &PodChannel::closed, this, &PodSession::close);
    say(QStringLiteral("up"));
}

void PodSession::take(const QByteArray &bytes)
{
    for (const ReaderEvent &event : m_reader.take(bytes))
        takeEvent(event);
    m_quiet.start();
}

void PodSession::takeEvent(const ReaderEvent &event)
{
    switch (event.kind) {
    case ReaderEvent::Frame:
        takeFrame(event.frame);
        return;
    case ReaderEvent::Noise:
        noteNoise(event.size);
        return;
    case ReaderEvent::BadChecksum:
        say(QStringLiteral("broken frame: bad checksum %1 instead of %2, %3 bytes")
                .arg(hexadecimal(event.found), hexadecimal(event.expected))
                .arg(event.size));
        break;
    case ReaderEvent::BadLength:
        say(QStringLiteral("broken frame: bad length %1").arg(event.size));
        break;
    }
    ++m_context.counts.brokenFrames;
}

void PodSession::takeFrame(const QByteArray &frame)
{
    const HostFrame host = decodeHostFrame(frame);
    const qint64 now = m_context.clock.elapsed();
    const double seconds = (now - std::exchange(m_context.lastFrame, now)) / 1000.0;
    m_context.state.step(seconds, host);
    const PodAnswer answered = m_feedback.take(m_context.state, host.command, now);
    noteCommand(host, answered);
    for (const QString &event : m_context.state.takeEvents())
        m_context.log.line(event);
    m_context.shown.put(m_context.state);
    answer(answered.feedback);
}

void PodSession::noteCommand(const HostFrame &host, const PodAnswer &answered)
{
    const QString text = describeCommand(host.command);
    switch (answered.kind) {
    case PodAnswer::Idle:
        ++m_context.counts.idleFrames;
        if (m_context.log.isVerbose())
            say(QStringLiteral("idle frame, control %1 %2 %3%4")
                    .arg(host.control.roll)
                    .arg(host.control.pitch)
                    .arg(host.control.yaw)
                    .arg(host.control.isValid ? QString() : QStringLiteral(" not valid")));
        break;
    case PodAnswer::New:
        ++m_context.counts.commandFrames;
        say(QStringLiteral("command %1: %2").arg(text, resultText(answered.feedback)));
        return;
    case PodAnswer::Repeat:
        ++m_context.counts.repeatedFrames;
        if (m_context.log.isVerbose())
            say(QStringLiteral("command %1, repeated").arg(text));
        break;
    }
    if (answered.isDone)
        say(QStringLiteral("command 0x%1 done: %2")
                .arg(QString::fromLatin1(answered.feedback.left(1).toHex().toUpper()),
                     resultText(answered.feedback)));
}

void PodSession::answer(const QByteArray &feedback)
{
    if (m_context.options.faults.isSilent || isClogged())
        return;
    const QByteArray frame = encodeGcuFrame(m_context.state.report(), feedback);
    const QVector<QByteArray> pieces = m_faults.pieces(frame);
    if (pieces.isEmpty())
        return;
    ++m_context.counts.answers;
    m_outbox.add(pieces);
    if (m_context.log.isVerbose())
        say(QStringLiteral("answer %1").arg(QString::fromLatin1(frame.toHex().toUpper())));
}

/// Whether more answers are waiting than the peer is likely to take.
bool PodSession::isClogged()
{
    const bool isFull = m_channel->unsent() > kMostUnsent || m_outbox.size() > kMostWaiting;
    if (isFull && !m_wasClogged)
        say(QStringLiteral("answers pile up, some are left out"));
    m_wasClogged = isFull;
    return isFull;
}

void PodSession::noteNoise(int size)
{
    if (size == 0)
        return;
    m_context.counts.noiseBytes += size;
    say(QStringLiteral("noise skipped: %1 bytes").arg(size));
}

void PodSession::noteQuiet()
{
    noteNoise(m_reader.takeNoise());
    if (m_reader.pendingSize() > 0)
        say(QStringLiteral("unfinished frame: %1 of %2 bytes so far")
                .arg(m_reader.pendingSize())
                .arg(m_reader.announcedSize()));
}

void PodSession::close()
{
    noteNoise(m_reader.takeNoise());
    m_quiet.stop();
    say(QStringLiteral("down"));
}

void PodSession::say(const QString &text) const
{
    m_context.log.line(m_channel->name() + QStringLiteral(": ") + text);
}

} // namespace podsim
