#include "tests/podsim/podrig.h"

QByteArray hostFrame(const QByteArray &length, const QByteArray &tail)
{
    return bytes("A8 E5" + length + "00 01") + zeros(6) + bytes("01") + zeros(18) + bytes("01") +
           zeros(6) + bytes("01 24 F2 DF 65 16 EE AA 16 A3 A0 00 00 0F B0 0C 06 15 E6 08") +
           zeros(12) + bytes(tail);
}

QByteArray answer(const QByteArray &length, const QByteArray &place, const QByteArray &tail)
{
    return bytes("8A 5E" + length + "00 01 12 10 01") + zeros(29) + bytes("01 01 01 01 00 00") +
           zeros(4) + bytes(place) + bytes("0A 00 0A 00") + zeros(6) + bytes(tail);
}

Rig::Rig(const QByteArray &kind, const QStringList &options)
{
    if (kind == "tcp") {
        start({"--tcp", "0"}, options);
        host = std::make_unique<TcpHost>(pod->port("tcp"));
    } else if (kind == "udp") {
        auto udp = std::make_unique<UdpHost>();
        start({"--udp", "0", "--udp-reply", QString::number(udp->replyPort())}, options);
        udp->setPort(pod->port("udp"));
        host = std::move(udp);
    } else {
        const QString link = directory.filePath("pod");
        start({"--pty", link}, options);
        pod->awaitLine("listening on pty");
        host = std::make_unique<PtyHost>(link);
    }
}

void Rig::start(const QStringList &link, const QStringList &options)
{
    pod = std::make_unique<PodProcess>(link + options);
}
