#include "fuzz/fuzzinput.h"
#include "protocol/gcuframe.h"

// A GCU frame taken apart, with the texts of its feedback area.

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray input = inputOf(data, size);
    GcuFrame record;
    parseGcuFrame(input, record);
    feedbackText(input);
    renewedFeedbackText(input);
    return 0;
}
