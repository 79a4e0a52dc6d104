#pragma once

#include "tools/podsim/hostreader.h"
#include "tools/podsim/podfaults.h"
#include "tools/podsim/podfeedback.h"
#include "tools/podsim/podlog.h"
#include "tools/podsim/podoptions.h"
#include "tools/podsim/podoutbox.h"
#include "tools/podsim/podsnapshot.h"
#include "tools/podsim/podstate.h"
#include "tools/podsim/reportfaults.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

namespace podsim {

class PodChannel;

/// What all connections with the pod share: there is one pod.
struct PodContext
{
    explicit PodContext(const PodOptions &chosen)
        : options(chosen), log(chosen.isVerbose), reportFaults(chosen.faults)
    {
        state.motion.setSpeed(chosen.faults.speed);
    }

    /// Whether so many answers were sent; 0 stands for never.
    bool hasAnswered(int answers) const { return answers > 0 && counts.answers >= answers; }

    PodOptions options;
    PodLog log;
    PodState state;
    ReportFaults reportFaults;
    PodSnapshot shown; ///< the state for the stream's thread
    PodCounts counts;
    QElapsedTimer clock;
    qint64 lastFrame = 0; ///< when the state last moved, by `clock`, in milliseconds
};

/// One connection: reads its frames, moves the pod on by each, and answers. A child of its channel,
/// in the main thread.
class PodSession : public QObject
{
    Q_OBJECT

public:
    PodSession(PodChannel *channel, PodContext &context);

signals:
    /// The pod is to be gone: its last answer is written.
    void left();

private:
    void take(const QByteArray &bytes);
    void takeAlone(const QByteArray &bytes);
    void takeEvent(const ReaderEvent &event);
    void takeFrame(const QByteArray &frame);
    void noteCommand(const HostFrame &host, const PodAnswer &answer);
    void noteBroken(const ReaderEvent &event);
    void answer(const QByteArray &feedback);
    QByteArray answerFrame(const QByteArray &feedback);
    bool isMute() const;
    bool isClogged();
    void noteNoise(int size);
    void noteQuiet();
    void goDeaf();
    void leaveInTime();
    void close();
    void say(const QString &text) const;

    PodChannel *m_channel;
    PodContext &m_context;
    HostReader m_reader;
    PodFeedback m_feedback;
    PodFaults m_faults;
    PodOutbox m_outbox;
    QTimer m_quiet;
    bool m_wasClogged = false;
    int m_deafFor = 0; ///< good frames that will be passed over
};

} // namespace podsim
