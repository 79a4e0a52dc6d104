#include "fuzz/fuzzinput.h"
#include "tools/podsim/podchannel.h"
#include "tools/podsim/podcodec.h"
#include "tools/podsim/podsession.h"

#include <QCoreApplication>

// The simulated pod's input over one connection. A chunk of odd size is sent as a host frame with
// right header, length and checksum, which no fuzzer would come upon.

namespace {

class FuzzChannel : public podsim::PodChannel
{
public:
    QString name() const override { return QStringLiteral("fuzz"); }
    void send(const QByteArray &) override {}
    qint64 unsent() const override { return 0; }
};

QByteArray frameOf(const QByteArray &content)
{
    QByteArray frame = QByteArray::fromHex("A8E50000") + content;
    frame.append(QByteArray(qMax(0, podsim::kLeastHostFrame - 2 - frame.size()), '\0'));
    const int size = frame.size() + podsim::kChecksumSize;
    frame[2] = char(size);
    frame[3] = char(size >> 8);
    podsim::appendChecksum(frame);
    return frame;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argc = 0;
    static QCoreApplication application(argc, nullptr);
    podsim::PodOptions options;
    options.isVerbose = true;
    podsim::PodContext context{options};
    context.clock.start();
    FuzzChannel channel;
    podsim::PodSession session(&channel, context);
    for (const QByteArray &chunk : chunksOf(data, size))
        emit channel.received(chunk.size() % 2 == 0 ? chunk : frameOf(chunk));
    emit channel.closed();
    return 0;
}
