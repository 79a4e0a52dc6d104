#pragma once

#include <QByteArray>

/// Offsets 12 to 68 of a frame made from the console's initial texts.
inline QByteArray initialCarrier()
{
    return QByteArray::fromHex("000000000000000000000000000000000000"
                               "0100000000000001"
                               "24F2DF65"
                               "16EEAA16"
                               "A3A00000"
                               "0F"
                               "B00C0615"
                               "E608"
                               "000000000000000000000000");
}
