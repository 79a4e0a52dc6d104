// Nanoseconds of the protocol's functions beside QByteArray::toHex of an equal array.

#include "protocol/codec.h"
#include "protocol/gcuframe.h"
#include "protocol/hostframe.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

namespace {

HostTexts initialTexts()
{
    const char *values[] = {
        "",           "72",     "1",  "0",         "0",    "0",  "",  "0", "0", "0",
        "0",          "0",      "0",  "0",         "0",    "0",  "1", "",  "1", "170.9175332",
        "38.0300822", "41.123", "15", "352718000", "2278", "10", "",  "",  ""};
    HostTexts texts;
    for (std::size_t i = 0; i < texts.values.size(); ++i)
        texts.values[i] = QString::fromLatin1(values[i]);
    texts.command = QStringLiteral("00 ");
    return texts;
}

QByteArray gcuFrame()
{
    QByteArray frame =
        QByteArray::fromHex("8A5E49000111") + QByteArray(63, '\x12') + QByteArray::fromHex("2000");
    appendCrc(frame);
    return frame;
}

void toHexBaseline(benchmark::State &state)
{
    const QByteArray bytes(73, '\x12');
    for (auto _ : state)
        benchmark::DoNotOptimize(bytes.toHex());
}
BENCHMARK(toHexBaseline);

void crc16Of71Bytes(benchmark::State &state)
{
    const QByteArray bytes(71, '\x12');
    for (auto _ : state)
        benchmark::DoNotOptimize(crc16(bytes.constData(), 71));
}
BENCHMARK(crc16Of71Bytes);

void buildHostFrameFromTexts(benchmark::State &state)
{
    const HostTexts texts = initialTexts();
    for (auto _ : state)
        benchmark::DoNotOptimize(buildHostFrame(texts));
}
BENCHMARK(buildHostFrameFromTexts);

void parseHost(benchmark::State &state)
{
    const QByteArray frame = buildHostFrame(initialTexts());
    HostFrame record;
    for (auto _ : state) {
        parseHostFrame(frame, record);
        benchmark::DoNotOptimize(record);
    }
}
BENCHMARK(parseHost);

void parseGcu(benchmark::State &state)
{
    const QByteArray frame = gcuFrame();
    GcuFrame record;
    for (auto _ : state) {
        parseGcuFrame(frame, record);
        benchmark::DoNotOptimize(record);
    }
}
BENCHMARK(parseGcu);

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
