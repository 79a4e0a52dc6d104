#pragma once

#include "foundation/savedblock.h"

/// A saved file as it was found, or what a first start has where there is none.
struct ConfigFile
{
    SavedBlock block;
    QByteArray bytes; ///< the block as it stands in the file
    bool isThere = true;
    QString error; ///< of a file that can't be opened, or that the program wouldn't read to its end
};

ConfigFile readConfigFile(const QString &path);

/// Puts a new file in the old one's place once all of it is written. The reason of a failure, or
/// nothing.
QString replaceConfigFile(const QString &path, const QByteArray &bytes);
