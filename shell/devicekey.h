#pragma once

#include <QByteArray>

// What the enciphered device datagram is enciphered with, in AES-128 and CBC mode. The sender has
// the same.

/// The key, 16 bytes, made anew at each call.
QByteArray deviceKey();

/// The initialisation vector, 16 bytes, made anew at each call.
QByteArray deviceVector();
