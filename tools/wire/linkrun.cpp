#include "tools/wire/linkrun.h"

namespace wire {

namespace {

constexpr int kReopenMs = 1000;
constexpr int kExitLost = 1;

} // namespace

Link &LinkRun::add(const LinkAddress &address, Link *first)
{
    m_links.push_back(Link::make(address));
    Link *link = m_links.back().get();
    connect(link, &Link::closed, this,
            [this, link](const QString &reason) { takeLoss(link, reason); });
    connect(link, &Link::noticed, this, m_says);
    if (!first) {
        m_openedFirst.push_back(link);
        return *link;
    }
    const auto once = std::make_shared<QMetaObject::Connection>();
    *once = connect(first, &Link::opened, link, [link, once] {
        disconnect(*once);
        link->open();
    });
    return *link;
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

void LinkRun::endForNobody(const Link &link)
{
    if (!m_isEnded)
        m_says(link.address().text + QStringLiteral(": nobody takes the frames"));
    end(kExitLost);
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
        link->close();
    }
    return m_code;
}

void LinkRun::takeLoss(Link *link, const QString &reason)
{
    m_says(reason);
    if (!m_reconnects)
        return end(kExitLost);
    QTimer::singleShot(kReopenMs, link, [link] { link->open(); });
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
