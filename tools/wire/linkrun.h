#pragma once

#include "tools/wire/fartimer.h"
#include "tools/wire/link.h"
#include "tools/wire/record.h"
#include "tools/wire/streamcutter.h"
#include "tools/wire/wireclock.h"

#include <QCommandLineParser>
#include <QEventLoop>
#include <QTimer>

#include <functional>
#include <map>
#include <vector>

namespace wire {

/// The links of one run of the program: opens them, opens lost ones again where that is wanted, and
/// turns the event loop until somebody ends it. Belongs to the function that runs it.
class LinkRun : public QObject
{
public:
    /// `says` gets what an operator should know: a link that is lost, or up again.
    LinkRun(bool reconnects, std::function<void(const QString &)> says)
        : m_reconnects(reconnects), m_says(std::move(says))
    {
    }

    /// Adds a link. It is opened by `run`, or with `first`, once that one is up: what a bench sends
    /// before there is a pod would be lost.
    Link &add(const LinkAddress &address, Link *first = nullptr);
    /// Calls `begin` when the link is ready for the first time; the run ends as failed where it
    /// gives false. An output is opened there: no link, no reason to empty a file.
    void beginWith(Link &link, const std::function<bool()> &begin);
    /// Ends the run with that code after so many microseconds.
    void limit(qint64 microseconds, int code);
    void end(int code);
    /// Ends it as done once the link has taken all; as for nobody if its client leaves before.
    void endWhenSent(Link &link);
    /// Ends it since the link takes no frame; says so, unless its loss has been said.
    void endForNobody(const Link &link);
    bool isEnded() const { return m_isEnded; }
    /// Turns the loop until `end`, and closes the links: the code, a failure's in place of that of
    /// what is done if one of them didn't take all.
    int run();

private:
    void takeLoss(Link *link, const QString &reason);
    void takeReturn(Link *link);
    void close(Link &link);

    bool m_reconnects;
    std::function<void(const QString &)> m_says;
    std::vector<std::unique_ptr<Link>> m_links;
    std::vector<Link *> m_openedFirst;
    std::map<Link *, QString> m_losses; ///< why it isn't there, of each that is tried again
    QEventLoop m_loop;
    FarTimer m_limit;
    bool m_isEnded = false;
    int m_code = 0;
};

/// Options of the verbs that listen until they are ended: --for, --reconnect and --as-bench.
void addListenOptions(QCommandLineParser &parser);
/// What the last one says.
Cut cutOf(const QCommandLineParser &parser);

/// Makes records of what a link receives, and hands them on.
class FrameTap
{
public:
    using Take = std::function<void(const Record &)>;
    FrameTap(Cut cut, Direction direction, const WireClock &clock, Take take)
        : m_cut(cut), m_direction(direction), m_cutter(cut, direction), m_clock(clock),
          m_take(std::move(take))
    {
    }

    /// Begins with another peer: what the one before left unfinished is no part of its bytes.
    void begin();
    void push(const QByteArray &bytes);
    /// Hands on what still waits for more.
    void finish();

private:
    Cut m_cut;
    Direction m_direction;
    StreamCutter m_cutter;
    const WireClock &m_clock;
    Take m_take;
};

} // namespace wire
