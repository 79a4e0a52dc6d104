#include "tools/config/configfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

QString damage(BlockState state)
{
    return state == BlockState::Unusable
               ? QStringLiteral(
                     "it doesn't hold 16 control rows, and the program starts without it")
               : QStringLiteral("it ends early or has bytes left over");
}

/// Whether there is a folder to look into, and no such file in it.
bool canBeMade(const QString &path)
{
    const QFileInfo folder(QFileInfo(path).path());
    return !path.isEmpty() && folder.isDir() && folder.isExecutable() && !QFile::exists(path);
}

} // namespace

ConfigFile readConfigFile(const QString &path)
{
    ConfigFile result;
    QFile file(path);
    result.isThere = file.open(QIODevice::ReadOnly);
    if (!result.isThere) {
        result.block = blockOf(*QGlobal::atFirstStart());
        if (!canBeMade(path)) {
            result.code = kExitFailure;
            result.error = path + QStringLiteral(": ") + file.errorString();
        }
        return result;
    }
    const BlockState state = readBlock(file, result.block);
    if (state != BlockState::Whole) {
        result.code = kExitDamaged;
        result.error = QStringLiteral("%1 is damaged: %2. It is left as it is; delete it to begin "
                                      "with the defaults.")
                           .arg(path, damage(state));
    }
    return result;
}

QString replaceConfigFile(const QString &path, const SavedBlock &block)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        writeBlock(file, block);
        // A failure of the last write is seen here; committing alone passes over it.
        if (!file.flush())
            file.cancelWriting();
        if (file.commit())
            return {};
    }
    return path + QStringLiteral(": ") + file.errorString();
}
