#include "foundation/PopFrame.h"
#include "fuzz/fuzzgui.h"
#include "fuzz/fuzzinput.h"
#include "protocol/codec.h"
#include "protocol/dataPacketAnalysis.h"

#include <QTextEdit>

// Frame texts that an operator pasted, in one of the two boxes. Of the first byte, bit 0 makes a
// text of the bytes after it, with a right checksum, which no fuzzer would come upon; bit 1 takes
// the right box.

namespace {

QString textOf(const QByteArray &input)
{
    if ((byteAt(input, 0) & 1) == 0)
        return QString::fromUtf8(input.mid(1));
    QByteArray frame = input.mid(1);
    appendCrc(frame);
    return toHexText(frame);
}

void closeNotices()
{
    for (QWidget *widget : QApplication::topLevelWidgets())
        if (qobject_cast<PopFrame *>(widget))
            delete widget;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    needApplication();
    static auto *page = new dataPacketAnalysis;
    static auto *sendBox = page->findChild<QTextEdit *>(QStringLiteral("textEdit_Send"));
    static auto *receiveBox = page->findChild<QTextEdit *>(QStringLiteral("textEdit_Rev"));
    const QByteArray input = inputOf(data, size);
    if (byteAt(input, 0) & 2) {
        receiveBox->setPlainText(textOf(input));
        page->analysisRev();
    } else {
        sendBox->setPlainText(textOf(input));
        page->analysisSend();
    }
    closeNotices();
    return 0;
}
