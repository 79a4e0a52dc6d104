#pragma once

#include "tools/podsim/faultoptions.h"

#include <QByteArray>

namespace podsim {

struct PodState;

/// What a host frame's command area comes to.
struct PodAnswer
{
    enum Kind {
        Idle,    ///< no command
        New,     ///< a command that has just come in
        Repeat,  ///< the command of the frame before, once more
        Ignored, ///< a command that has just come in, and is neither done nor answered
    };
    Kind kind = Idle;
    bool isDone = false; ///< the result has just come about
    QByteArray feedback; ///< the feedback area: empty, or code and result
};

/// Carries out the commands of one connection and makes their feedback. Plain data.
///
/// A host repeats a command in every frame until it sees an answer. So a frame with the same
/// command area as the one before, within 200 ms, is the same command: it is answered again but
/// not carried out again. A command that is still being carried out is named in the answers to idle
/// frames too; the next command takes its place.
class PodFeedback
{
public:
    explicit PodFeedback(const FaultOptions &options) : m_options(options) {}

    /// Takes the command area of a frame that came at `now`, in milliseconds of a steady clock.
    PodAnswer take(PodState &state, const QByteArray &area, qint64 now);

private:
    bool isRepeat(const QByteArray &area, qint64 now);
    QByteArray progress(PodState &state, bool *isDone);

    FaultOptions m_options;
    QByteArray m_lastArea;
    qint64 m_lastTime = 0;
    QByteArray m_pending; ///< command area that is being carried out, or empty
    int m_left = 0;       ///< answers until its result
    quint8 m_result = 0;  ///< of the last command
};

} // namespace podsim
