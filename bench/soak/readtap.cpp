#include "bench/soak/readtap.h"

#include "bench/soak/faults.h"

#include <QCoreApplication>
#include <QEvent>
#include <QSerialPort>
#include <QSocketNotifier>
#include <QTcpSocket>

#include <sys/ioctl.h>

namespace {

bool belongsToLink(const QObject *object)
{
    while (object && !qobject_cast<const QTcpSocket *>(object) &&
           !qobject_cast<const QSerialPort *>(object))
        object = object->parent();
    return object;
}

} // namespace

ReadTap::ReadTap(int piece) : m_piece(piece)
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool ReadTap::eventFilter(QObject *watched, QEvent *event)
{
    const auto *notifier = qobject_cast<QSocketNotifier *>(watched);
    int waiting = 0;
    if (event->type() == QEvent::SockAct && notifier && notifier->type() == QSocketNotifier::Read &&
        belongsToLink(notifier) && ioctl(int(notifier->socket()), FIONREAD, &waiting) == 0 &&
        waiting > m_piece) {
        ++m_lateReads;
        m_cost += waiting / kAnswerSize + 1;
    }
    return false;
}
