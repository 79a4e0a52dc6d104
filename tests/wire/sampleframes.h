#pragma once

#include "protocol/codec.h"

// Frames that tests tell apart by a number.

/// 73 bytes that say so of themselves, with a right checksum; 64 of them are `number`.
inline QByteArray frame(const char *header, quint8 number)
{
    QByteArray bytes = QByteArray::fromHex(header) + QByteArray::fromHex("490001") +
                       QByteArray(64, char(number)) + QByteArray::fromHex("2001");
    appendCrc(bytes);
    return bytes;
}

inline QByteArray host(quint8 number)
{
    return frame("A8E5", number);
}

inline QByteArray gcu(quint8 number)
{
    return frame("8A5E", number);
}
