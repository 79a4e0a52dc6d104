#pragma once

#include "tools/podsim/podoptions.h"

#include <QSize>
#include <QString>

#include <memory>

namespace podsim {

class PodSnapshot;

/// The picture of the pod's camera as a stream for any number of clients, with ways to disturb
/// them. All functions belong to the main thread and return at once.
class PodStream
{
public:
    virtual ~PodStream() = default;

    /// Takes clients, again after `close`; the reason if that can't be, empty otherwise.
    virtual QString open() = 0;
    /// Kind, address, port and path.
    virtual QString where() const = 0;
    /// The pictures to come have this size, for clients that are connected too.
    virtual void setSize(const QSize &size) = 0;
    /// While frozen nothing is sent; connections stay.
    virtual void setFrozen(bool isFrozen) = 0;
    /// Ends the connections of all clients.
    virtual void drop() = 0;
    /// The same, and takes no more.
    virtual void close() = 0;
};

/// A stream of what the snapshot holds, which has to outlive it; null where the program was built
/// without the packages that it takes.
std::unique_ptr<PodStream> makeStream(const PodOptions &options, const PodSnapshot &snapshot);

} // namespace podsim
