#pragma once

#include "tools/wire/record.h"

#include <QObject>

#include <functional>
#include <memory>

namespace wire {

/// Reads records in a thread of its own, some of them ahead, for an event loop that mustn't wait
/// for a pipe: it would hear no signal and no link meanwhile. Lives in the loop's thread. The
/// reading thread ends with its input; while it waits for that it isn't looked after, and lives to
/// the end of the process.
class RecordFeed : public QObject
{
    Q_OBJECT

public:
    enum class Next { Here, Later, End };

    /// `read` gives the records in turn, false at the end. It is called in the thread, and kept as
    /// long as that lives.
    explicit RecordFeed(std::function<bool(Record &)> read);
    ~RecordFeed() override;

    /// The next record where it has been read; after `Later` follows `ready`.
    Next take(Record &record);
    /// True once `read` has been called for the last time, so that what it left may be looked at.
    bool isEnded() const;

signals:
    void ready();

private:
    struct Shared;

    std::shared_ptr<Shared> m_shared;
};

} // namespace wire
