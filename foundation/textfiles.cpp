#include "foundation/textfiles.h"

#include "foundation/QGlobal.h"

#include <QFile>
#include <QTextStream>

namespace {

constexpr int kSmallestConfigValue = 10;

QStringList partsOf(const QString &line, QChar separator)
{
    return line.split(separator, Qt::KeepEmptyParts, Qt::CaseSensitive);
}

/// Hands the parts of every line that has `count` of them to `take`.
template <typename Take>
void readLines(const QString &path, QChar separator, int count, Take take)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QTextStream stream(&file);
    for (QString line = stream.readLine(); !line.isNull(); line = stream.readLine()) {
        const QStringList parts = partsOf(line, separator);
        if (parts.size() == count)
            take(parts);
    }
}

void readConfigLine(QTextStream &stream, int &value)
{
    const QStringList parts = partsOf(stream.readLine(), QLatin1Char(':'));
    if (parts.size() == 2)
        value = qMax(kSmallestConfigValue, parts.at(1).toInt() / 10);
}

/// Names aren't looked at: the first two lines count, whatever they are called.
void readConfig(const QString &path, QGlobal &global)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QTextStream stream(&file);
    readConfigLine(stream, global.configValue1);
    readConfigLine(stream, global.configValue2);
}

void readModels(const QString &path, QGlobal &global)
{
    readLines(path, QLatin1Char(':'), 2, [&global](const QStringList &parts) {
        QList<int> numbers;
        for (const QString &piece : partsOf(parts.at(1), QLatin1Char(',')))
            numbers.append(piece.toInt());
        global.modelMap->insert(parts.at(0), numbers);
    });
}

void readLanguage(const QString &path, QGlobal &global)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QTextStream stream(&file);
    stream.setCodec("utf-8");
    const auto take = [&global](const QString &line) {
        const QStringList parts = partsOf(line, QLatin1Char(':'));
        if (parts.size() != 3)
            return;
        global.chineseTexts->insert(parts.at(0), parts.at(1));
        global.englishTexts->insert(parts.at(0), parts.at(2));
    };
    QString line = stream.readLine();
    take(line);
    while (!line.isNull() && !stream.atEnd()) {
        line = stream.readLine();
        take(line);
        // Closed after the first pass on purpose: from here on the stream serves only what its
        // buffer of 16384 bytes holds, which is the limit on this file's size.
        file.close();
    }
}

} // namespace

void readTextFilesFrom(const QString &folder, QGlobal &global)
{
    readConfig(folder + QLatin1String("/Config.ini"), global);

    global.keyboardMap = new QMap<QString, int>;
    readLines(folder + QLatin1String("/KeyboardMap.ini"), QLatin1Char(','), 2,
              [&global](const QStringList &parts) {
                  global.keyboardMap->insert(parts.at(0), parts.at(1).toInt());
              });

    global.palette = new QMap<QString, QString>;
    readLines(
        folder + QLatin1String("/UIColorMap.ini"), QLatin1Char(':'), 2,
        [&global](const QStringList &parts) { global.palette->insert(parts.at(0), parts.at(1)); });

    global.modelMap = new QMap<QString, QList<int>>;
    readModels(folder + QLatin1String("/ModelMap.ini"), global);

    global.chineseTexts = new QMap<QString, QString>;
    global.englishTexts = new QMap<QString, QString>;
    readLanguage(folder + QLatin1String("/LanguageMap.ini"), global);
}
