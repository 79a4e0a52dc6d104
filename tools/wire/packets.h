#pragma once

#include <QByteArray>

namespace wire {

/// What a captured packet carries by TCP or UDP.
struct Payload
{
    enum Kind { None, Stream, Datagram };
    Kind kind = None;
    const char *bytes = nullptr;
    int size = 0;
    QByteArray flow; ///< both ends, from source to destination
    // Of a stream:
    quint32 sequence = 0; ///< of the first byte
    int missing = 0;      ///< bytes of the segment that follow on the wire and weren't captured
    bool isFirst = false; ///< it opens a connection
};

/// True for link types whose packets can be looked into: Ethernet, raw IP, loopback, Linux's own.
bool isKnownLinkType(quint16 linkType);

/// Looks into a packet of such a link type. Of a datagram in fragments the first is
/// taken. Whatever the bytes say, what lies outside them isn't read.
Payload payloadOf(quint16 linkType, const char *bytes, int size);

} // namespace wire
