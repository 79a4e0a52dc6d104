#include "tools/protocoldoc/examples.h"

#include "console/carrierblock.h"
#include "console/commandframe.h"
#include "protocol/codec.h"
#include "video/pickframe.h"

#include <cstring>

namespace {

const QString kOne = QStringLiteral("01");

/// The carrier of all examples, as hexadecimal text.
QString carrier()
{
    const char *const texts[kCarrierFieldCount] = {
        "-15.25",      "3.5",        "270.5",  // roll, pitch, yaw
        "0",           "0",          "0",      // accelerations
        "12.34",       "-5",         "0.5",    // velocities
        "116.3912757", "38.0300822", "41.123", // position
        "15",          "352718000",  "2278",   // GNSS
    };
    CarrierTexts form;
    std::copy(std::begin(texts), std::end(texts), form.begin());
    return toHexText(carrierBlock(form));
}

ConsoleState console()
{
    ConsoleState state;
    state.carrier = carrier();
    state.textOf = [](const char *object) {
        return std::strcmp(object, kVersionObject) == 0 ? kOne : QString();
    };
    return state;
}

} // namespace

QByteArray idleFrame()
{
    return consoleFrame(console(), true);
}

QByteArray photoFrame()
{
    ConsoleState state = console();
    for (std::size_t i = 0; i < kConsoleCommands.size(); ++i)
        state.selected[i] = std::strcmp(kConsoleCommands[i].button, "pushButton_photo") == 0;
    return consoleFrame(state, false);
}

QByteArray pointingFrame()
{
    const quint16 middle = pickUnit(0.5, 1);
    return pickFrame(video::Pick::Pointing, true, {middle, middle, middle, middle},
                     {carrier(), kOne, kOne});
}

QByteArray answerFrame()
{
    QByteArray frame = QByteArray::fromHex("8A5E 4900 01 12 0000 0000 0000"
                                           "F305 2700 6FFF FEFF 0000 1469 0000 0000 ABFD"
                                           "00000000000000"
                                           "01 01 01 01 0000 C4090000"
                                           "35E65F45 16EEAA16 A3A00000 1900 0A00 000000000000"
                                           "2000");
    appendCrc(frame);
    return frame;
}
