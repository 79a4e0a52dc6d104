#include "fuzz/fuzzgui.h"
#include "fuzz/fuzzinput.h"
#include "protocol/codec.h"
#include "protocol/controlCmd.h"

// The command area that the command dialog opens on, as text and as the text of bytes.

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    needApplication();
    static auto *dialog = new controlCmd;
    const QByteArray input = inputOf(data, size);
    dialog->setCommandText(QString::fromUtf8(input));
    dialog->setCommandText(toHexText(input));
    return 0;
}
