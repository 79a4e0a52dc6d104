#pragma once

#include "tools/wire/linkrun.h"

#include <QEventLoop>
#include <QTimer>

#include <functional>
#include <memory>

namespace check {

/// The link to the pod as the cases use it: send, and wait for what comes. Belongs to the main
/// thread; its event loop turns while somebody listens.
class PodLine : public QObject
{
public:
    using Take = std::function<bool(const wire::Record &)>;

    explicit PodLine(const wire::LinkAddress &address);
    ~PodLine() override;

    /// Gets all that is sent and received.
    std::function<void(const wire::Record &)> tap;

    /// False, with `reason` set, where the pod can't be reached.
    bool open();
    /// Writes at once. The record of what went out, with the time before it went; of a pod that
    /// takes nothing any more the line is lost.
    wire::Record send(const QByteArray &bytes);
    /// Turns the loop until `take` returns true, or that moment comes, or the line can't be used
    /// any more. True when `take` said so.
    bool listen(qint64 until, const Take &take);
    /// Lets time pass.
    void rest(qint64 until);
    wire::LinkAddress::Kind kind() const { return m_link->address().kind; }
    /// Microseconds since 1970, of a clock that isn't set.
    qint64 now() const { return m_clock.now(); }

    /// Ends all listening: the user wants no more.
    void stop();
    /// Listens once more after `stop`, to leave the pod in order.
    void resume() { m_isStopped = false; }

    bool isUsable() const { return m_isOpen && !m_isLost && !m_isStopped; }
    bool isLost() const { return m_isLost; }
    bool isStopped() const { return m_isStopped; }
    const QString &reason() const { return m_reason; }

private:
    void take(const wire::Record &record);
    void lose(const QString &reason);

    const wire::WireClock m_clock;
    std::unique_ptr<wire::Link> m_link;
    wire::FrameTap m_cutter;
    QEventLoop m_loop;
    QTimer m_timer;
    const Take *m_take = nullptr;
    bool m_isTaken = false;
    bool m_isOpen = false;
    bool m_isLost = false;
    bool m_isStopped = false;
    QString m_reason;
};

} // namespace check
