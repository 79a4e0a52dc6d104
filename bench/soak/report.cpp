#include "bench/soak/report.h"

#include <QTextStream>

namespace {

void writeTraffic(QTextStream &out, Link link, const Fault &fault, const StageResult &result)
{
    const Losses &losses = result.losses;
    const QString options =
        QStringLiteral("%1 %2").arg(QLatin1String(fault.option), QLatin1String(fault.value));
    out << "| " << kLinks[link] << " | "
        << (*fault.option ? options.trimmed() : QStringLiteral("none")) << " | "
        << result.traffic.sent << " | " << result.podFrames << " | " << result.podAnswers << " | "
        << result.traffic.good << " | " << result.traffic.wrong << " | " << result.lateReads
        << " | " << losses.sent << " | " << losses.answers << " | " << losses.wrong << " |\n";
}

void writeGrowth(QTextStream &out, Link link, const Quantity &quantity, const Growth &growth)
{
    out << "| " << kLinks[link] << " | " << quantity.name << ' ' << quantity.unit << " | "
        << growth.early << " | " << growth.late << " | " << growth.allowed << " | "
        << (growth.isBounded() ? "bounded" : "GROWS") << " |\n";
}

} // namespace

QString report(const Results &results, const std::vector<Sample> &samples, int connections)
{
    QString text;
    QTextStream out(&text);
    out.setRealNumberNotation(QTextStream::FixedNotation);
    out.setRealNumberPrecision(1);
    out << "| Link | Fault | Sent | Pod received | Pod answered | Received | Received wrong | "
           "Late reads | Sent, lost | Answers lost | Wrong, not by the fault |\n"
           "|---|---|---|---|---|---|---|---|---|---|---|\n";
    for (int link = 0; link < kLinkCount; ++link) {
        for (std::size_t i = 0; i < kFaultCount; ++i)
            writeTraffic(out, Link(link), kFaults[i], results[std::size_t(link)][i]);
    }
    out << "\n| Link | Held | Early median | Late median | Growth allowed | |\n"
           "|---|---|---|---|---|---|\n";
    for (int link = 0; link < kLinkCount; ++link) {
        for (std::size_t i = 0; i < kQuantities.size(); ++i)
            writeGrowth(out, Link(link), kQuantities[i],
                        growthOf(samples, Link(link), i, connections));
    }
    return text;
}

bool passed(const Results &results, const std::vector<Sample> &samples, int connections)
{
    bool isGood = true;
    for (int link = 0; link < kLinkCount; ++link) {
        for (std::size_t i = 0; i < kFaultCount; ++i)
            isGood = isGood && !results[std::size_t(link)][i].losses.any();
        for (std::size_t i = 0; i < kQuantities.size(); ++i)
            isGood = isGood && growthOf(samples, Link(link), i, connections).isBounded();
    }
    return isGood;
}
