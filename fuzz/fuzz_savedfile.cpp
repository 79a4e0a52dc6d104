#include "foundation/savedblock.h"
#include "fuzz/fuzzinput.h"

#include <QBuffer>

// The saved file: what is written of a block that was read reads back as the same block.

namespace {

QByteArray written(const SavedBlock &block)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    writeBlock(buffer, block);
    return buffer.data();
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray input = inputOf(data, size);
    QBuffer file(&input);
    file.open(QIODevice::ReadOnly);
    SavedBlock block;
    const BlockState state = readBlock(file, block);
    if (state == BlockState::Unusable)
        return 0;
    QByteArray first = written(block);
    QBuffer again(&first);
    again.open(QIODevice::ReadOnly);
    SavedBlock second;
    require(readBlock(again, second) == BlockState::Whole, "what is written can't be read");
    require(written(second) == first, "a block changes on its way through a file");

    const std::unique_ptr<QGlobal> global = QGlobal::atFirstStart();
    takeBlock(block, *global);
    return 0;
}
