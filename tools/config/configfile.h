#pragma once

#include "foundation/savedblock.h"

/// What the program ends with.
enum ExitCode {
    kExitDone = 0,
    kExitFailure = 1, ///< a wrong command line, or what can't be opened or written
    kExitDamaged = 2  ///< a file that the program wouldn't read to its last byte
};

/// A saved file as it was found, or what a first start has where there is none.
struct ConfigFile
{
    SavedBlock block;
    QByteArray bytes; ///< the block as it stands in the file
    bool isThere = true;
    ExitCode code = kExitDone;
    QString error; ///< empty with `kExitDone`
};

ConfigFile readConfigFile(const QString &path);

/// Puts a new file in the old one's place once all of it is written. The reason of a failure, or
/// nothing.
QString replaceConfigFile(const QString &path, const QByteArray &bytes);
