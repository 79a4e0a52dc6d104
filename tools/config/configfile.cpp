#include "tools/config/configfile.h"

#include <QFile>
#include <QSaveFile>

namespace {

QString damage(BlockState state)
{
    return state == BlockState::Unusable
               ? QStringLiteral(
                     "it doesn't hold 16 control rows, and the program starts without it")
               : QStringLiteral("it ends early or has bytes left over");
}

} // namespace

ConfigFile readConfigFile(const QString &path)
{
    ConfigFile result;
    QFile file(path);
    result.isThere = file.exists();
    if (!result.isThere) {
        result.block = blockOf(*QGlobal::atFirstStart());
        return result;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        result.code = kExitFailure;
        result.error = path + QStringLiteral(": ") + file.errorString();
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
        if (file.commit())
            return {};
    }
    return path + QStringLiteral(": ") + file.errorString();
}
