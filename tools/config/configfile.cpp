#include "tools/config/configfile.h"

#include <QBuffer>
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
    return folder.isDir() && folder.isExecutable() && !QFile::exists(path);
}

ConfigFile failure(const QString &path, const QString &reason)
{
    ConfigFile result;
    result.error = path + QStringLiteral(": ") + reason;
    return result;
}

ConfigFile firstStart()
{
    ConfigFile result;
    result.isThere = false;
    result.block = blockOf(*QGlobal::atFirstStart());
    QBuffer buffer(&result.bytes);
    buffer.open(QIODevice::WriteOnly);
    writeBlock(buffer, result.block);
    return result;
}

} // namespace

ConfigFile readConfigFile(const QString &path)
{
    // Others may let a reader wait for ever, or never end.
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile())
        return failure(path, QStringLiteral("not a file"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return canBeMade(path) ? firstStart() : failure(path, file.errorString());
    ConfigFile result;
    result.bytes = file.readAll();
    QBuffer buffer(&result.bytes);
    buffer.open(QIODevice::ReadOnly);
    const BlockState state = readBlock(buffer, result.block);
    if (state != BlockState::Whole)
        result.error = QStringLiteral("%1 is damaged: %2. It is left as it is; delete it to begin "
                                      "with the defaults.")
                           .arg(path, damage(state));
    return result;
}

QString replaceConfigFile(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(bytes);
        // A failure of the last write is seen here; committing alone passes over it.
        if (!file.flush())
            file.cancelWriting();
        if (file.commit())
            return {};
    }
    return path + QStringLiteral(": ") + file.errorString();
}
