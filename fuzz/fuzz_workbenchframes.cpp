#include "fuzz/fuzzgui.h"
#include "fuzz/fuzzinput.h"
#include "protocol/dataPacketAnalysis.h"

// Frames of the link and of the history, shown on a live page, which is made once.

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    needApplication();
    static auto *page = new dataPacketAnalysis;
    const QByteArray input = inputOf(data, size);
    page->showHostFrame(input);
    page->showReceivedFrame(input);
    page->buildHostFrame();
    page->retranslate();
    return 0;
}
