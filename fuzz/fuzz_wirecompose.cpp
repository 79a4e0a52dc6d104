#include "fuzz/fuzzinput.h"
#include "tools/wire/compose.h"
#include "tools/wire/decode.h"

#include <QCoreApplication>

// Frames made of words and of JSON. The first byte chooses; bytes that are taken apart come back.

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argc = 0;
    static const QCoreApplication application(argc, nullptr);
    const QByteArray input = inputOf(data, size);
    if (input.isEmpty())
        return 0;
    const QByteArray rest = input.mid(1);
    const auto kind = input[0] & 1 ? wire::FrameKind::Gcu : wire::FrameKind::Host;
    if (input[0] & 2) {
        wire::composePairs(kind, QString::fromUtf8(rest).split(QLatin1Char(' ')));
    } else if (input[0] & 4) {
        wire::composeJson(rest);
    } else if (!rest.isEmpty()) {
        wire::TextBuffer text;
        wire::jsonFormat()->add({wire::kNoTime, wire::Direction::Unknown, rest}, text);
        require(wire::composeJson(text.bytes()).record.bytes == rest, "a frame doesn't come back");
    }
    return 0;
}
