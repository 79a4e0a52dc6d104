#pragma once

#include <QHostAddress>
#include <QString>

/// True when two IPv4 address texts agree in the bits of `mask`.
bool sameSubnet(const QString &a, const QString &b, const QString &mask);

/// The first of the host's IPv4 addresses that shares the peer's /24, or a null address. The mask
/// is fixed, whatever the real mask of the interface.
QHostAddress localAddressFor(const QString &peer);
