#include "tools/podsim/podsession.h"

#include "tools/podsim/framefaults.h"
#include "tools/podsim/podchannel.h"
#include "tools/podsim/podcommands.h"

#include <utility>

namespace podsim {

namespace {

constexpr qint64 kMostUnsent = 1024 * 1024; // bytes
constexpr int kMostWaiting = 20000;         // pieces
constexpr qint64 kMostWaitingBytes = 64 * kMostUnsent;
constexpr int kDeafFrames = 3;
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

QString controlText(const ControlInput &control)
{
    return QStringLiteral("%1 %2 %3%4")
        .arg(control.roll)
        .arg(control.pitch)
        .arg(control.yaw)
        .arg(control.isValid ? QString() : QStringLiteral(" not valid"));
}

} // namespace

PodSession::PodSession(PodChannel *channel, PodContext &context)
    : QObject(channel), m_channel(channel), m_context(context), m_feedback(context.options.faults),
      m_faults(context.options.faults), m_outbox(channel, context.options.faults.delay, this)
{
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(kQuietMs);
    connect(&m_quiet, &QTimer::timeout, this, &PodSession::noteQuiet);
    connect(&m_outbox, &PodOutbox::emptied, this, &PodSession::leaveInTime);
    connect(channel, &PodChannel::received, this, &PodSession::take);
    connect(channel, &PodChannel::closed, this, &PodSession::close);
    say(QStringLiteral("up"));
}

void PodSession::take(const QByteArray &bytes)
{
    if (m_context.options.faults.noReassembly) {
        takeAlone(bytes);
        return;
    }
    for (const ReaderEvent &event : m_reader.take(bytes))
        takeEvent(event);
    m_quiet.start();
}

/// Takes a read as a pod does that keeps nothing from one to the next.
void PodSession::takeAlone(const QByteArray &bytes)
{
    const QVector<ReaderEvent> events = HostReader().take(bytes);
    const bool hasFrame = !events.isEmpty() && events.first().kind == ReaderEvent::Frame;
    const int lost = bytes.size() - (hasFrame ? events.first().size : 0);
    if (hasFrame)
        takeEvent(events.first());
    if (lost > 0)
        say(QStringLiteral("%1 bytes of a read are lost").arg(lost));
}

void PodSession::takeEvent(const ReaderEvent &event)
{
    switch (event.kind) {
    case ReaderEvent::Frame:
        takeFrame(event.frame);
        break;
    case ReaderEvent::Noise:
        noteNoise(event.size);
        break;
    case ReaderEvent::BadChecksum:
    case ReaderEvent::BadLength:
        noteBroken(event);
        break;
    }
}

void PodSession::noteBroken(const ReaderEvent &event)
{
    if (event.kind == ReaderEvent::BadLength)
        say(QStringLiteral("broken frame: bad length %1").arg(event.size));
    else
        say(QStringLiteral("broken frame: bad checksum %1 instead of %2, %3 bytes")
                .arg(hexadecimal(event.found), hexadecimal(event.expected))
                .arg(event.size));
    ++m_context.counts.brokenFrames;
    goDeaf();
    if (m_context.options.faults.answerBroken)
        answer({});
}

void PodSession::goDeaf()
{
    if (m_context.options.faults.deafAfterBroken)
        m_deafFor = kDeafFrames;
}

void PodSession::takeFrame(const QByteArray &frame)
{
    if (m_deafFor > 0) {
        say(QStringLiteral("frame passed over, %1 to go").arg(--m_deafFor));
        return;
    }
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
            say(QStringLiteral("idle frame, control ") + controlText(host.control));
        break;
    case PodAnswer::New:
        ++m_context.counts.commandFrames;
        say(QStringLiteral("command %1: %2").arg(text, resultText(answered.feedback)));
        return;
    case PodAnswer::Ignored:
        ++m_context.counts.commandFrames;
        say(QStringLiteral("command %1: ignored").arg(text));
        break;
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
    if (isMute() || isClogged())
        return;
    const QByteArray frame = answerFrame(feedback);
    const PodWrite write = m_faults.take(frame);
    if (write.pieces.isEmpty())
        return;
    m_context.counts.answers += write.frames;
    if (m_context.hasAnswered(m_context.options.faults.hangAfter))
        say(QStringLiteral("no more answers from now on"));
    m_outbox.add(write.pieces, write.late);
    if (m_context.log.isVerbose())
        say(QStringLiteral("answer %1").arg(QString::fromLatin1(frame.toHex().toUpper())));
}

QByteArray PodSession::answerFrame(const QByteArray &feedback)
{
    const FaultOptions &faults = m_context.options.faults;
    const PodState &state = m_context.state;
    const GcuReport report = m_context.reportFaults.told(state.report(), state.seconds);
    return spoiltFrame(encodeGcuFrame(report, spoiltFeedback(feedback, faults)), faults);
}

bool PodSession::isMute() const
{
    const FaultOptions &faults = m_context.options.faults;
    return faults.isSilent || m_context.hasAnswered(faults.hangAfter) ||
           m_context.hasAnswered(faults.leaveAfter);
}

void PodSession::leaveInTime()
{
    if (m_context.hasAnswered(m_context.options.faults.leaveAfter))
        emit left();
}

/// Whether more answers are waiting than the peer is likely to take.
bool PodSession::isClogged()
{
    const bool isFull = m_channel->unsent() > kMostUnsent || m_outbox.size() > kMostWaiting ||
                        m_outbox.bytes() > kMostWaitingBytes;
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
    goDeaf();
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
    leaveInTime(); // what was still to be written has nowhere to go
}

void PodSession::say(const QString &text) const
{
    m_context.log.line(m_channel->name() + QStringLiteral(": ") + text);
}

} // namespace podsim
