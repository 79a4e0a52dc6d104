#include "shell/links.h"

#include <QDebug>
#include <QList>
#include <QNetworkInterface>

namespace {

QList<QHostAddress> localIpv4Addresses()
{
    QList<QHostAddress> found;
    for (const QNetworkInterface &device : QNetworkInterface::allInterfaces())
        qDebug() << "Device:" << device.name();
    for (const QHostAddress &address : QNetworkInterface::allAddresses()) {
        if (address.protocol() == QAbstractSocket::IPv4Protocol && !found.contains(address))
            found.append(address);
    }
    return found;
}

} // namespace

bool sameSubnet(const QString &a, const QString &b, const QString &mask)
{
    const quint32 bits = QHostAddress(mask).toIPv4Address();
    return (QHostAddress(a).toIPv4Address() & bits) == (QHostAddress(b).toIPv4Address() & bits);
}

QHostAddress localAddressFor(const QString &peer)
{
    for (const QHostAddress &address : localIpv4Addresses()) {
        if (sameSubnet(peer, address.toString(), QStringLiteral("255.255.255.0")))
            return address;
    }
    return {};
}
