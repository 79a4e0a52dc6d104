#include "foundation/FileUtils.h"

#include "foundation/savedblock.h"

#include <QFile>

bool FileUtils::loadControlConfig()
{
    QFile file(savedFilePath());
    SavedBlock block;
    // A file that ends or breaks behind the control rows is taken all the same, which is meant.
    if (!file.open(QIODevice::ReadOnly) || readBlock(file, block) == BlockState::Unusable)
        return false;
    takeBlock(block, *QGlobal::instance());
    return true;
}

void FileUtils::saveControlConfig()
{
    QFile file(savedFilePath());
    if (file.open(QIODevice::WriteOnly))
        writeBlock(file, blockOf(*QGlobal::instance()));
}
