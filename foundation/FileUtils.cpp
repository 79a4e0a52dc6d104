#include "foundation/FileUtils.h"

#include "foundation/savedblock.h"

#include <QFile>

bool FileUtils::loadControlConfig()
{
    QFile file(savedFilePath());
    SavedBlock block;
    // A file that ends or breaks after the control rows is taken all the same: saved files in the
    // field have no key rows.
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
