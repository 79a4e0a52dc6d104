#include "tools/wire/recordfeed.h"

#include <QQueue>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace wire {

namespace {

constexpr int kMostRecords = 1024;
constexpr qint64 kMostBytes = 1 << 20;

} // namespace

/// What both threads hold: the one that reads may outlive the feed.
struct RecordFeed::Shared
{
    std::mutex mutex;
    std::condition_variable changed;
    QQueue<Record> records;
    qint64 bytes = 0;
    bool isEnded = false;
    bool isAwaited = false;
    RecordFeed *feed = nullptr; ///< null once it is gone

    bool hasRoom() const { return records.size() < kMostRecords && bytes < kMostBytes; }

    /// Puts a record, or the end, where the feed takes it; false where nobody does any more.
    bool put(const Record *record)
    {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [this] { return hasRoom() || !feed; });
        if (record) {
            bytes += record->bytes.size();
            records.enqueue(*record);
        }
        isEnded = !record;
        if (feed && isAwaited)
            QMetaObject::invokeMethod(feed, &RecordFeed::ready, Qt::QueuedConnection);
        isAwaited = false;
        return feed != nullptr;
    }
};

RecordFeed::RecordFeed(std::function<bool(Record &)> read) : m_shared(std::make_shared<Shared>())
{
    m_shared->feed = this;
    std::thread([shared = m_shared, read = std::move(read)] {
        for (Record record; read(record);)
            if (!shared->put(&record))
                return;
        shared->put(nullptr);
    }).detach();
}

RecordFeed::~RecordFeed()
{
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    m_shared->feed = nullptr;
    m_shared->changed.notify_all();
}

RecordFeed::Next RecordFeed::take(Record &record)
{
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    if (m_shared->records.isEmpty()) {
        m_shared->isAwaited = !m_shared->isEnded;
        return m_shared->isEnded ? Next::End : Next::Later;
    }
    record = m_shared->records.dequeue();
    m_shared->bytes -= record.bytes.size();
    m_shared->changed.notify_one();
    return Next::Here;
}

bool RecordFeed::isEnded() const
{
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    return m_shared->isEnded;
}

} // namespace wire
