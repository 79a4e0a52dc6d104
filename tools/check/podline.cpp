#include "tools/check/podline.h"

#include <QCoreApplication>

namespace check {

namespace {

constexpr qint64 kOpenLimit = 5000000;
constexpr qint64 kListenLimit = 60000000; // a pod that connects by itself is switched on now
constexpr qint64 kLongestTimer = 3600000; // milliseconds

} // namespace

PodLine::PodLine(const wire::LinkAddress &address)
    : m_link(wire::Link::make(address)),
      m_cutter(wire::Cut::Searching, wire::Direction::Rx, m_clock,
               [this](const wire::Record &record) { take(record); })
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, &m_loop, &QEventLoop::quit);
    connect(m_link.get(), &wire::Link::opened, this, [this] {
        m_isOpen = true;
        m_loop.quit();
    });
    connect(m_link.get(), &wire::Link::left, this, [this] {
        lose(m_link->address().text + QStringLiteral(": the pod has closed the connection"));
    });
    connect(m_link.get(), &wire::Link::received, this,
            [this](const QByteArray &bytes) { m_cutter.push(bytes); });
    connect(m_link.get(), &wire::Link::closed, this, &PodLine::lose);
}

void PodLine::lose(const QString &reason)
{
    m_reason = m_isLost ? m_reason : reason;
    m_isLost = true;
    m_loop.quit();
}

PodLine::~PodLine()
{
    m_link->disconnect(this);
    m_link->close();
}

bool PodLine::open()
{
    m_link->open();
    if (!m_isOpen && !m_isLost) {
        const bool isListening = kind() == wire::LinkAddress::TcpListen;
        m_timer.start(int((isListening ? kListenLimit : kOpenLimit) / 1000));
        m_loop.exec();
    }
    if (!m_isOpen && m_reason.isEmpty())
        m_reason = m_link->address().text + QStringLiteral(": no answer");
    return m_isOpen && !m_isLost;
}

wire::Record PodLine::send(const QByteArray &bytes)
{
    const wire::Record record{now(), wire::Direction::Tx, bytes};
    if (!m_isLost && !m_link->send(bytes))
        lose(m_link->address().text + QStringLiteral(": nobody takes the frames"));
    else if (m_link->unsent() > wire::kMuchUnsent)
        lose(m_link->address().text + QStringLiteral(": the pod doesn't read"));
    if (tap && !m_isLost)
        tap(record);
    return record;
}

void PodLine::take(const wire::Record &record)
{
    if (tap)
        tap(record);
    if (!m_take || m_isTaken || !(*m_take)(record))
        return;
    m_isTaken = true;
    m_loop.quit();
}

bool PodLine::listen(qint64 until, const Take &take)
{
    m_take = &take;
    m_isTaken = false;
    while (isUsable() && !m_isTaken) {
        const qint64 left = until - now();
        if (left <= 0) { // late as it is, what has come is heard
            QCoreApplication::processEvents();
            break;
        }
        m_timer.start(int(qBound<qint64>(1, (left + 999) / 1000, kLongestTimer)));
        m_loop.exec();
    }
    m_timer.stop();
    m_take = nullptr;
    return m_isTaken;
}

void PodLine::rest(qint64 until)
{
    listen(until, [](const wire::Record &) { return false; });
}

void PodLine::stop()
{
    m_isStopped = true;
    m_loop.quit();
}

} // namespace check
