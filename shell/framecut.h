#pragma once

#include "protocol/codec.h"
#include "protocol/fields.h"
#include "protocol/gcuframe.h"

#include <QByteArray>

/// True when a chunk begins with the two header bytes of a GCU frame.
inline bool beginsGcuFrame(const QByteArray &chunk)
{
    return byteAt(chunk, 0) == 0x8A && byteAt(chunk, 1) == 0x5E;
}

/// Cuts a frame off the beginning of a chunk with a header; what the cache held is given up.
template <typename Record>
void cutHeadedChunk(QByteArray &cache, const QByteArray &chunk, Record record)
{
    const int length = saidLength(chunk);
    if (chunk.size() < length) {
        cache = chunk;
        return;
    }
    cache = chunk.mid(0, length);
    record(QByteArray(cache), byteAt(chunk, kModeOffset));
    // What follows the frame isn't looked at now, even if it is a whole frame.
    cache = chunk.mid(length);
}

/// Fills up the frame that the cache holds the beginning of.
template <typename Record>
void cutLaterChunk(QByteArray &cache, const QByteArray &chunk, Record record)
{
    const int length = saidLength(cache);
    if (cache.size() + chunk.size() < length) {
        cache.append(chunk);
        return;
    }
    // Where the cache holds more than S already, all of the chunk goes into the frame.
    cache.append(chunk.mid(0, length - cache.size()));
    record(QByteArray(cache), byteAt(cache, kModeOffset));
    // The rest is cut at S, not at S less what the cache had held, so that bytes after the frame
    // are lost here, unlike above. Operators know their logs so: keep it.
    cache = chunk.mid(length);
}

/// Cuts GCU frames out of the chunks of a link. Takes one chunk of any size and hands a frame that
/// it completes to `record(frame, mode)`; `cache` keeps what waits for more. No header is searched
/// inside a chunk: its first two bytes decide. A negative length makes all that is there a frame.
/// The pod's mode is byte 5 of a chunk with a header, also where the frame ends before it, and
/// byte 5 of the frame elsewhere; 0 where there is none.
template <typename Record>
void cutChunk(QByteArray &cache, const QByteArray &chunk, Record record)
{
    if (beginsGcuFrame(chunk))
        cutHeadedChunk(cache, chunk, record);
    else
        cutLaterChunk(cache, chunk, record);
}
