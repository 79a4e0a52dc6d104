#include "tools/wire/link.h"

#include <QUrl>
#include <QUrlQuery>

namespace wire {

namespace {

constexpr quint16 kPodTcp = 2332;
constexpr quint16 kPodUdp = 2337;
constexpr quint16 kBenchUdp = 2338;

constexpr struct
{
    const char *scheme;
    LinkAddress::Kind kind;
} kSchemes[] = {{"tcp", LinkAddress::Tcp},
                {"tcp-listen", LinkAddress::TcpListen},
                {"udp", LinkAddress::Udp},
                {"serial", LinkAddress::Serial}};

bool takeNumber(QUrlQuery &query, const char *name, int least, int most, int &value)
{
    const QString key = QLatin1String(name);
    if (!query.hasQueryItem(key))
        return true;
    bool isGood = false;
    value = query.queryItemValue(key).toInt(&isGood);
    query.removeQueryItem(key);
    return isGood && value >= least && value <= most;
}

bool takeParity(QUrlQuery &query, char &parity)
{
    const QString key = QStringLiteral("parity");
    if (!query.hasQueryItem(key))
        return true;
    const QString word = query.queryItemValue(key);
    query.removeQueryItem(key);
    for (const char *each : {"none", "odd", "even"}) {
        parity = each[0];
        if (word == QLatin1String(each))
            return true;
    }
    return false;
}

/// "/dev/ttyUSB0" as it is; "/COM3" without the slash that the form asks for.
QString portName(const QString &path)
{
    return path.lastIndexOf(QLatin1Char('/')) == 0 ? path.mid(1) : path;
}

bool takeSerial(const QUrl &url, QUrlQuery &query, LinkAddress &address)
{
    address.host = portName(url.path());
    return !address.host.isEmpty() && url.host().isEmpty() &&
           takeNumber(query, "baud", 1, 10000000, address.baud) &&
           takeNumber(query, "data", 5, 8, address.dataBits) && takeParity(query, address.parity);
}

bool takeNetwork(const QUrl &url, QUrlQuery &query, LinkAddress &address)
{
    const bool isUdp = address.kind == LinkAddress::Udp;
    address.host = url.host();
    address.port = quint16(url.port(isUdp ? kPodUdp : kPodTcp));
    int local = address.port == kBenchUdp ? kPodUdp : kBenchUdp;
    const bool isGood = !isUdp || takeNumber(query, "local", 0, 65535, local);
    address.local = quint16(isUdp ? local : 0);
    return isGood && !address.host.isEmpty() && url.path().size() <= 1;
}

} // namespace

bool readLinkAddress(const QString &text, LinkAddress &address, QString &error)
{
    const QUrl url(text, QUrl::StrictMode);
    QUrlQuery query(url);
    address.text = text;
    for (const auto &each : kSchemes) {
        if (url.scheme() != QLatin1String(each.scheme))
            continue;
        address.kind = each.kind;
        const bool isGood = each.kind == LinkAddress::Serial ? takeSerial(url, query, address)
                                                             : takeNetwork(url, query, address);
        const bool hasMore = !query.isEmpty() || url.hasFragment() || !url.userInfo().isEmpty();
        if (isGood && !hasMore && url.isValid())
            return true;
    }
    error =
        text + QStringLiteral(": not a link; one is tcp://host:2332, tcp-listen://address:2332, "
                              "udp://host:2337?local=2338 or serial:///port?baud=115200");
    return false;
}

} // namespace wire
