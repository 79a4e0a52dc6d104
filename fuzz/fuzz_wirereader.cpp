#include "fuzz/fuzzinput.h"
#include "tools/wire/compose.h"
#include "tools/wire/decode.h"
#include "tools/wire/recordreader.h"
#include "tools/wire/recordwriter.h"

#include <QBuffer>
#include <QCoreApplication>

// The readers of recordings of every form, by content as the tool takes them: both cuts, and each
// record shown in every format. Of a raw stream every byte comes out again.

namespace {

constexpr qint64 kFarthest = qint64(1) << 62;

std::unique_ptr<wire::RecordReader> readerOf(const QByteArray &input, wire::Cut cut)
{
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(input);
    buffer->open(QIODevice::ReadOnly);
    QString error;
    wire::ReadOptions options;
    options.cut = cut;
    return wire::makeReader(std::make_unique<wire::ByteSource>(std::move(buffer)), options, error);
}

void show(const wire::Record &record)
{
    static const std::unique_ptr<wire::FrameFormat> formats[] = {
        wire::jsonFormat(), wire::csvFormat(),      wire::textFormat(wire::Language::Chinese),
        wire::lineFormat(), wire::pcapngFormat({}), wire::logFormat(wire::Language::English)};
    for (const auto &format : formats) {
        wire::TextBuffer text;
        format->add(record, text);
        require(text.size() < 8192 + 8 * record.bytes.size(), "a record becomes too much text");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argc = 0;
    static const QCoreApplication application(argc, nullptr);
    const QByteArray input = inputOf(data, size);
    for (const wire::Cut cut : {wire::Cut::Searching, wire::Cut::AsBench}) {
        const auto reader = readerOf(input, cut);
        QByteArray all;
        for (wire::Record record; reader && reader->next(record);) {
            require(record.time == wire::kNoTime || std::abs(record.time) < kFarthest,
                    "a time beyond all");
            show(record);
            all += record.bytes;
        }
        const bool isRaw = wire::formatOf(input.constData(), input.size()) == wire::Format::Raw;
        require(!isRaw || cut == wire::Cut::AsBench || all == input, "a stream loses bytes");
    }
    return 0;
}
