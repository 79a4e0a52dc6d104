// The answer time of the simulated pod over TCP, as nacelle-check measures it and by a bare socket
// that writes and waits, in turn in one run. Usage: bench_check PODSIM [CYCLES]

#include "bench/measure.h"
#include "tools/check/runner.h"

#include <QCoreApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QThread>

#include <cstdio>
#include <limits>

namespace {

constexpr int kRounds = 5;
constexpr unsigned long kPauseMs = 10;
constexpr int kFrameSize = 73;

const QByteArray kFrame = QByteArray::fromHex("A8E5490001") + QByteArray(32, '\0') + '\x01' +
                          QByteArray(31, '\0') + QByteArray::fromHex("240189B5");

class Nobody : public check::Watcher
{
public:
    void progress(qint64, qint64) override {}
    void caseEnds(const check::CaseResult &) override {}
};

quint16 portOf(QProcess &pod)
{
    const QRegularExpression line(QStringLiteral("listening on tcp [0-9.]+:(\\d+)"));
    QString text;
    while (pod.waitForReadyRead(10000)) {
        text += QString::fromUtf8(pod.readAllStandardOutput());
        const auto match = line.match(text);
        if (match.hasMatch()) {
            pod.closeReadChannel(QProcess::StandardOutput); // nobody reads its lines
            return match.captured(1).toUShort();
        }
    }
    return 0;
}

/// Milliseconds from each frame to its whole answer.
std::vector<double> byBareSocket(quint16 port, int cycles)
{
    std::vector<double> times;
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    socket.waitForConnected();
    socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    for (int i = 0; i < cycles; ++i) {
        const qint64 begin = now();
        socket.write(kFrame);
        socket.flush();
        while (socket.bytesAvailable() < kFrameSize && socket.waitForReadyRead()) {
        }
        times.push_back(double(now() - begin) * 1e-6);
        socket.readAll();
        QThread::msleep(kPauseMs);
    }
    return times;
}

check::Group oneMeasure(int cycles)
{
    check::Measure measure;
    measure.id = QStringLiteral("cycle");
    measure.frames = {kFrame};
    measure.cycles = cycles;
    measure.every = qint64(kPauseMs) * 1000;
    check::Step step;
    step.kind = check::StepKind::Measure;
    step.name = measure.id;
    step.value = QStringLiteral("answer_median");
    check::Case only;
    only.steps = {step};
    check::Group group;
    group.measures = {measure};
    group.cases = {only};
    return group;
}

double byCheck(quint16 port, int cycles)
{
    wire::LinkAddress address;
    address.host = QStringLiteral("127.0.0.1");
    address.port = port;
    check::PodLine line(address);
    if (!line.open())
        return std::numeric_limits<double>::quiet_NaN();
    const check::Group group = oneMeasure(cycles);
    const check::Plan plan{{group}, {group}, 0, 0};
    Nobody nobody;
    check::SessionResult result;
    check::Runner(line, plan, nobody).run(result);
    return result.cases.at(0).figures.at(0).value;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_check PODSIM [CYCLES]\n");
        return 2;
    }
    const int cycles = argc > 2 ? qMax(1, atoi(argv[2])) : 500;
    QProcess pod;
    pod.start(QString::fromLocal8Bit(argv[1]), {"--tcp", "0"});
    const quint16 port = portOf(pod);
    std::vector<double> bare, checked;
    for (int round = 0; round < kRounds; ++round) {
        bare.push_back(median(byBareSocket(port, cycles)));
        checked.push_back(byCheck(port, cycles));
    }
    std::printf("bare socket: median answer time       %7.3f ms\n", median(bare));
    std::printf("nacelle-check: median answer time     %7.3f ms   %+.3f ms (limit 1)\n",
                median(checked), median(checked) - median(bare));
    pod.kill();
    pod.waitForFinished();
    return 0;
}
