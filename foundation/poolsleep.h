#pragma once

#include <QThread>
#include <QThreadPool>

/// Sleeps in a task of the global pool without keeping its place there. A pool may have one thread
/// only, and what the window waits for must not queue up after a run of the console.
inline void sleepInPool(unsigned long milliseconds)
{
    QThreadPool::globalInstance()->releaseThread();
    QThread::msleep(milliseconds);
    QThreadPool::globalInstance()->reserveThread();
}
