#include "tools/check/summary.h"

#include <QSaveFile>

#include <algorithm>
#include <cmath>

namespace check {

namespace {

constexpr int kMostBytes = 512;

QString numberText(double value)
{
    QString text = QString::number(value, 'f', 3);
    while (text.contains(QLatin1Char('.')) && text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

/// Half of a pair without the other half, a control character, or what Unicode has no use for.
bool isUnprintable(const QString &text, int at)
{
    const QChar c = text[at];
    if (c.isHighSurrogate())
        return at + 1 == text.size() || !text[at + 1].isLowSurrogate();
    if (c.isLowSurrogate())
        return at == 0 || !text[at - 1].isHighSurrogate();
    return (c.unicode() < 0x20 && c != QLatin1Char('\n')) || c.unicode() == 0x7F ||
           c.unicode() >= 0xFFFE;
}

} // namespace

QVector<GroupTitle> groupsOf(const SessionResult &result)
{
    QVector<GroupTitle> all = result.groups;
    for (const CaseResult &each : result.cases) {
        const bool isKnown = std::any_of(all.begin(), all.end(), [&each](const GroupTitle &group) {
            return group.id == each.group;
        });
        if (!isKnown)
            all.append({each.group, {each.group, each.group}});
    }
    const auto isEmpty = [&result](const GroupTitle &group) {
        return casesOf(result, group.id).isEmpty();
    };
    all.erase(std::remove_if(all.begin(), all.end(), isEmpty), all.end());
    return all;
}

QVector<CaseResult> casesOf(const SessionResult &result, const QString &group)
{
    QVector<CaseResult> cases;
    std::copy_if(result.cases.begin(), result.cases.end(), std::back_inserter(cases),
                 [&group](const CaseResult &each) { return each.group == group; });
    return cases;
}

int countOf(const QVector<CaseResult> &cases, Judgement judgement)
{
    return int(std::count_if(cases.begin(), cases.end(), [judgement](const CaseResult &each) {
        return each.judgement == judgement;
    }));
}

QString valueText(const Figure &figure)
{
    const QString number =
        std::isfinite(figure.value) ? numberText(figure.value) : QStringLiteral("–");
    return figure.unit.isEmpty() ? number : number + QLatin1Char(' ') + figure.unit;
}

QString measuredText(const Figure &figure)
{
    if (figure.limit.isEmpty())
        return valueText(figure);
    return QStringLiteral("%1 (%2)").arg(valueText(figure), shownLimit(figure.limit));
}

QString cyclesText(const SessionResult &result)
{
    QStringList texts;
    for (const CycleCount &each : result.cycles) {
        const bool isUsual = each.usual == 0 || each.usual == each.cycles;
        texts.append(QStringLiteral("%1 %2").arg(each.measure).arg(each.cycles) +
                     (isUsual ? QString() : QStringLiteral(" (%1)").arg(each.usual)));
    }
    return texts.join(QStringLiteral(", "));
}

QString caseFilesText(const SessionResult &result)
{
    constexpr int kDigits = 16; // enough to tell files apart; JSON has them all
    QStringList texts;
    for (const CaseFile &each : result.caseFiles)
        texts.append(QStringLiteral("%1 (SHA-256 %2…)").arg(each.name, each.sha256.left(kDigits)));
    return texts.join(QStringLiteral(", "));
}

QString versionText(const Versions &versions, wire::Language language)
{
    if (!versions.areKnown)
        return QStringLiteral("–");
    const LocalText text{QStringLiteral("协议 %1，硬件 %2，固件 %3，吊舱代码 %4"),
                         QStringLiteral("protocol %1, hardware %2, firmware %3, pod code %4")};
    return text.in(language)
        .arg(versions.protocol)
        .arg(versions.hardware)
        .arg(versions.firmware)
        .arg(versions.podCode);
}

QString durationText(double seconds)
{
    if (!(seconds >= 60)) // also what is no number
        return QString::number(seconds, 'f', 1) + QStringLiteral(" s");
    const auto whole = qint64(std::llround(seconds));
    return QStringLiteral("%1 min %2 s").arg(whole / 60).arg(whole % 60);
}

QString beginText(const SessionResult &result)
{
    return result.begin.toOffsetFromUtc(result.begin.offsetFromUtc()).toString(Qt::ISODate);
}

QString timeText(const wire::Record &record)
{
    if (record.time == wire::kNoTime)
        return {};
    return QDateTime::fromMSecsSinceEpoch(record.time / 1000)
        .toString(QStringLiteral("HH:mm:ss.zzz"));
}

QString digitsText(const QByteArray &bytes)
{
    const QString text = QString::fromLatin1(bytes.left(kMostBytes).toHex(' ').toUpper());
    return bytes.size() > kMostBytes ? text + QStringLiteral(" …") : text;
}

QString printable(QString text)
{
    for (int i = 0; i < text.size(); ++i) {
        if (!isUnprintable(text, i))
            continue;
        const ushort code = text[i].unicode();
        text[i] = code < 0x20 ? QChar(0x2400 + code) : QChar(QChar::ReplacementCharacter);
    }
    return text;
}

bool writeWhole(const QString &path, const QByteArray &bytes, QString &error)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    error = path + QStringLiteral(": ") + file.errorString();
    return false;
}

} // namespace check
