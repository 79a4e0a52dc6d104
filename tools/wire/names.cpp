#include "tools/wire/names.h"

#include "foundation/QGlobal.h"
#include "foundation/textfiles.h"

#include <QRegularExpression>

/// The texts lie in a static library, which the linker takes only by name.
static void initTexts()
{
    Q_INIT_RESOURCE(wire);
}

namespace wire {

namespace {

/// Kept to the end of the process, as its maps are.
const QGlobal &texts()
{
    static const QGlobal *const global = [] {
        initTexts();
        QGlobal *made = QGlobal::atFirstStart().release();
        readTextFilesFrom(QStringLiteral(":/nacelle_wire"), *made);
        return made;
    }();
    return *global;
}

template <typename Row>
bool isCalled(const Row &row, const QString &word)
{
    const auto equals = [&word](const QString &name) {
        return name.compare(word, Qt::CaseInsensitive) == 0;
    };
    return equals(QLatin1String(row.id)) || equals(nameOf(row.name, Language::Chinese)) ||
           equals(nameOf(row.name, Language::English));
}

template <typename Rows>
auto rowNamed(const Rows &rows, const QString &word) -> decltype(&rows[0])
{
    qint64 code = 0;
    const bool isCode = readNumber(word, code);
    for (const auto &row : rows) {
        if (isCode ? code == row.code : isCalled(row, word))
            return &row;
    }
    return nullptr;
}

} // namespace

QString nameOf(const char *key, Language language)
{
    const QString text = QString::fromUtf8(key);
    const QGlobal &global = texts();
    return (language == Language::Chinese ? global.chineseTexts : global.englishTexts)
        ->value(text, text);
}

const CommandRow *commandNamed(const QString &word)
{
    return rowNamed(kCommands, word);
}

const ModeRow *modeNamed(const QString &word)
{
    return rowNamed(kModes, word);
}

const ModeRow *modeOf(quint8 code)
{
    for (const ModeRow &row : kModes) {
        if (row.code == code)
            return &row;
    }
    return nullptr;
}

bool readNumber(const QString &text, qint64 &number)
{
    const bool isHex = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const QString digits = text.mid(isHex ? 2 : 0);
    bool isGood = false;
    number = digits.toLongLong(&isGood, isHex ? 16 : 10);
    // To the toolkit a sign or another 0x after it is part of a number too.
    return isGood &&
           !(isHex && digits.contains(QRegularExpression(QStringLiteral("[^0-9A-Fa-f]"))));
}

} // namespace wire
