#include "shell/devicekey.h"

namespace {

constexpr int kBlock = 16;

/// A buffer whose writes the compiler must leave as they are. Key and vector are written into one
/// byte by byte at each use: gathered into a constant they would stand somewhere as a whole.
using WrittenBytes = volatile char[kBlock];

QByteArray copyOf(const WrittenBytes &bytes)
{
    QByteArray copy;
    for (const volatile char &byte : bytes)
        copy.append(char(byte));
    return copy;
}

} // namespace

QByteArray deviceKey()
{
    WrittenBytes key;
    key[0] = '\xB3';
    key[1] = '\xCB';
    key[2] = '\xC3';
    key[3] = '\x6A';
    key[4] = '\x05';
    key[5] = '\x55';
    key[6] = '\xD1';
    key[7] = '\xDE';
    key[8] = '\x8A';
    key[9] = '\x68';
    key[10] = '\x69';
    key[11] = '\xCF';
    key[12] = '\x1A';
    key[13] = '\x45';
    key[14] = '\xDA';
    key[15] = '\xE1';
    return copyOf(key);
}

QByteArray deviceVector()
{
    WrittenBytes vector;
    vector[0] = '\xA7';
    vector[1] = '\x34';
    vector[2] = '\xF5';
    vector[3] = '\x52';
    vector[4] = '\x13';
    vector[5] = '\x0C';
    vector[6] = '\x95';
    vector[7] = '\xC1';
    vector[8] = '\x47';
    vector[9] = '\x12';
    vector[10] = '\x85';
    vector[11] = '\xA1';
    vector[12] = '\x6B';
    vector[13] = '\x12';
    vector[14] = '\xBC';
    vector[15] = '\x72';
    return copyOf(vector);
}
