#include "bench/soak/samples.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <unistd.h>

namespace {

constexpr double kWarmUp = 0.1; // of the run

double residentMegabytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    return statm.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) * 1e-6;
}

double entries(const char *folder)
{
    return QDir(QLatin1String(folder))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

Sample takeSample(double minute, Link link)
{
    return {
        minute, link, {residentMegabytes(), entries("/proc/self/fd"), entries("/proc/self/task")}};
}

Growth growthOf(const std::vector<Sample> &samples, Link link, std::size_t quantity,
                int connections)
{
    const double warm = samples.empty() ? 0 : samples.back().minute * kWarmUp;
    std::vector<double> values;
    for (const Sample &sample : samples) {
        if (sample.link == link && sample.minute >= warm)
            values.push_back(sample.figures[quantity]);
    }
    const auto third = std::ptrdiff_t(values.size() / 3);
    const Quantity &row = kQuantities[quantity];
    return {median({values.begin(), values.begin() + third}),
            median({values.end() - third, values.end()}),
            row.limit + row.perConnection * connections};
}
