#include "tools/wire/linkrun.h"

#include <QTime>

namespace wire {

namespace {

constexpr int kReopenMs = 1000;
constexpr int kExitFailure = 1;

QString timeOfDay()
{
    return QTime::currentTime().toString(QStringLiteral("[HH:mm:ss] "));
}

/// Calls `call` at the link's first signal of that kind.
template <typename Signal, typename Call>
void once(Link *link, Signal signal, QObject *context, Call call)
{
    const auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = QObject::connect(link, signal, context, [connection, call] {
        QObject::disconnect(*connection);
        call();
    });
}

} // namespace

Link &LinkRun::add(const LinkAddress &address, Link *first)
{
    m_links.push_back(Link::make(address));
    Link *link = m_links.back().get();
    connect(link, &Link::closed, this,
            [this, link](const QString &reason) { takeLoss(link, reason); });
    connect(link, &Link::ready, this, [this, link] { takeReturn(link); });
    connect(link, &Link::noticed, this, m_says);
    if (first)
        once(first, &Link::opened, link, [link] { link->open(); });
    else
        m_openedFirst.push_back(link);
    return *link;
}

void LinkRun::beginWith(Link &link, const std::function<bool()> &begin)
{
    once(&link, &Link::ready, this, [this, begin] {
        if (!begin())
            end(kExitFailure);
    });
}

void LinkRun::limit(qint64 microseconds, int code)
{
    connect(&m_limit, &FarTimer::timeout, this, [this, code] { end(code); });
    m_limit.start(microseconds);
}

void LinkRun::end(int code)
{
    m_code = m_isEnded ? m_code : code;
    m_isEnded = true;
    m_loop.quit();
}

void LinkRun::endWhenSent(Link &link)
{
    const auto endIfSent = [this, &link] {
        if (link.unsent() == 0)
            end(0);
    };
    connect(&link, &Link::left, this, [this, &link] { endForNobody(link); });
    connect(&link, &Link::written, this, endIfSent);
    endIfSent();
}

void LinkRun::endForNobody(const Link &link)
{
    if (!m_isEnded)
        m_says(link.address().text + QStringLiteral(": nobody takes the frames"));
    end(kExitFailure);
}

int LinkRun::run()
{
    for (Link *link : m_openedFirst)
        if (!m_isEnded)
            link->open();
    if (!m_isEnded)
        m_loop.exec();
    for (const auto &link : m_links) {
        link->disconnect(this);
        close(*link);
    }
    return m_code;
}

void LinkRun::close(Link &link)
{
    const qint64 left = link.close();
    if (left == 0)
        return;
    m_says(link.address().text + QStringLiteral(": %1 bytes weren't taken").arg(left));
    m_code = m_code == 0 ? kExitFailure : m_code;
}

void LinkRun::takeLoss(Link *link, const QString &reason)
{
    if (!m_reconnects) {
        m_says(reason);
        return end(kExitFailure);
    }
    QString &said = m_losses[link]; // else a night without the pod would have a line a second
    if (said != reason)
        m_says(timeOfDay() + reason);
    said = reason;
    QTimer::singleShot(kReopenMs, link, [link] { link->open(); });
}

void LinkRun::takeReturn(Link *link)
{
    if (m_losses.erase(link) > 0)
        m_says(timeOfDay() + link->address().text + QStringLiteral(": open again"));
}

void addListenOptions(QCommandLineParser &parser)
{
    parser.addOption(
        {QStringLiteral("for"), QStringLiteral("End after this time."), QStringLiteral("time")});
    parser.addOption(
        {QStringLiteral("reconnect"), QStringLiteral("Open a lost link again, every second.")});
    parser.addOption(
        {QStringLiteral("as-bench"), QStringLiteral("Cut what is received as the bench does.")});
}

Cut cutOf(const QCommandLineParser &parser)
{
    return parser.isSet(QStringLiteral("as-bench")) ? Cut::AsBench : Cut::Searching;
}

void FrameTap::push(const QByteArray &bytes)
{
    m_cutter.push(bytes.constData(), bytes.size(), m_clock.now());
    for (Record record; m_cutter.take(record, true);)
        m_take(record);
}

void FrameTap::begin()
{
    finish();
    m_cutter = StreamCutter(m_cut, m_direction);
}

void FrameTap::finish()
{
    m_cutter.finish();
    for (Record record; m_cutter.take(record, true);)
        m_take(record);
}

} // namespace wire
