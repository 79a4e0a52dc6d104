#include "foundation/PopFrame.h"
#include "fuzz/fuzzgui.h"
#include "fuzz/fuzzinput.h"
#include "protocol/codec.h"
#include "protocol/dataPacketAnalysis.h"

#include <QTextEdit>

// Frame texts that an operator pasted. An odd first byte makes a text of the bytes behind it, with
// a right checksum, which no fuzzer would come upon.

namespace {

QString textOf(const QByteArray &input)
{
    if (byteAt(input, 0) % 2 == 0)
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
    const QString text = textOf(inputOf(data, size));
    for (const char *box : {"textEdit_Send", "textEdit_Rev"})
        page->findChild<QTextEdit *>(QLatin1String(box))->setPlainText(text);
    page->analysisSend();
    page->analysisRev();
    closeNotices();
    return 0;
}
