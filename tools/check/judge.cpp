#include "tools/check/judge.h"

#include "protocol/modes.h"
#include "tools/check/results.h"
#include "tools/wire/compose.h"
#include "tools/wire/decode.h"
#include "tools/wire/framefields.h"

#include <algorithm>
#include <cmath>

namespace check {

namespace {

constexpr double kTurn = 360;
constexpr double kSlack = 1e-9; // of decimal fractions

QString shownIn(const protocol::Field &field, const QByteArray &frame)
{
    wire::TextBuffer text;
    wire::putValue(field, frame.constData() + field.offset, text);
    return QString::fromLatin1(text.bytes());
}

bool isOneOf(const QStringList &words, const QString &shown, bool isOfNumbers)
{
    for (const QString &word : words) {
        bool isNumber = false, isShownNumber = false;
        const double wanted = word.toDouble(&isNumber), is = shown.toDouble(&isShownNumber);
        if (word.compare(shown, Qt::CaseInsensitive) == 0 ||
            (isOfNumbers && isNumber && isShownNumber && std::abs(wanted - is) < kSlack))
            return true;
    }
    return false;
}

bool hasOnlyBits(const QByteArray &bits, const char *at, int size)
{
    for (int i = 0; i < size; ++i)
        if ((quint8(at[i]) & ~unsigned(quint8(i < bits.size() ? bits[i] : '\0'))) != 0)
            return false;
    return true;
}

QString plain(double number)
{
    return QString::number(number, 'g', 10);
}

/// What a number should have been, or nothing where it is so.
QString wantedOf(const Condition &condition, double value, const QMap<QString, double> &remembered)
{
    if (value < condition.least - kSlack || value > condition.most + kSlack)
        return shownLimit(limitText(condition.least, condition.most));
    if (condition.within < 0)
        return {};
    const double near =
        condition.remembered.isEmpty() ? condition.near : remembered.value(condition.remembered);
    const double apart =
        condition.turns ? std::abs(std::remainder(value - near, kTurn)) : std::abs(value - near);
    return apart <= condition.within + kSlack
               ? QString()
               : plain(near) + QStringLiteral(" ± ") + plain(condition.within);
}

LocalText bitsText(const QString &digits)
{
    return {QStringLiteral("只含 %1 中的位").arg(digits),
            QStringLiteral("no bits but those of %1").arg(digits)};
}

LocalText sameIn(const QString &text)
{
    return {text, text};
}

LocalText wantedOf(const Condition &condition, const protocol::Field &field,
                   const QByteArray &answer, const QMap<QString, double> &remembered)
{
    if (!condition.oneOf.isEmpty() &&
        !isOneOf(condition.oneOf, shownIn(field, answer), wire::isNumber(field.kind)))
        return sameIn(condition.oneOf.join(QStringLiteral(" / ")));
    const char *at = answer.constData() + field.offset;
    if (!condition.bits.isEmpty() && !hasOnlyBits(condition.bits, at, field.size))
        return bitsText(QString::fromLatin1(condition.bits.toHex().toUpper()));
    double number = 0;
    return numberIn(answer, condition.field, number)
               ? sameIn(wantedOf(condition, number, remembered))
               : LocalText();
}

} // namespace

bool isGoodAnswer(const wire::Record &record)
{
    const QByteArray &bytes = record.bytes;
    return wire::kindOf(bytes) == wire::FrameKind::Gcu &&
           wire::lengthOf(bytes.constData(), bytes.size()) == bytes.size() &&
           bytes.size() >= kFrameOverhead && wire::verdictOf(bytes) == wire::Verdict::Ok;
}

bool canBe(const protocol::Field &field, const QString &word)
{
    QByteArray digits;
    if (!wire::isNumber(field.kind))
        return wire::readDigits(word.toLatin1(), digits) && digits.size() == field.size;
    bool isNumber = false;
    const double raw = word.toDouble(&isNumber) * qMax(1.0, field.scale.k);
    const wire::Range range = wire::rangeOf(field.kind);
    if (isNumber)
        return raw >= double(range.least) && raw <= double(range.most);
    const auto isMode = [&word](const ModeRow &row) {
        return word.compare(QLatin1String(row.id), Qt::CaseInsensitive) == 0;
    };
    return field.kind == FieldKind::Mode && std::any_of(kModes.begin(), kModes.end(), isMode);
}

bool numberIn(const QByteArray &frame, const QString &field, double &number)
{
    const protocol::Field *row = wire::fieldNamed(wire::FrameKind::Gcu, field);
    if (!row || !wire::isNumber(row->kind) || frame.size() < row->offset + row->size)
        return false;
    number = double(wire::rawNumber(row->kind, frame.constData() + row->offset)) /
             qMax(1.0, row->scale.k);
    return true;
}

LocalText unmet(const QVector<Condition> &conditions, const QByteArray &answer,
                const QMap<QString, double> &remembered)
{
    for (const Condition &condition : conditions) {
        const protocol::Field &field = *wire::fieldNamed(wire::FrameKind::Gcu, condition.field);
        const LocalText wanted = wantedOf(condition, field, answer, remembered);
        if (wanted.isEmpty())
            continue;
        const QString shown = shownIn(field, answer);
        return {QStringLiteral("%1为 %2，要求 %3")
                    .arg(wire::nameOf(field.key, wire::Language::Chinese), shown, wanted.zh),
                QStringLiteral("%1 is %2, wanted %3")
                    .arg(wire::nameOf(field.key, wire::Language::English), shown, wanted.en)};
    }
    return {};
}

char namedBy(const QByteArray &answer)
{
    const wire::Span area = wire::areaOf(wire::FrameKind::Gcu, answer.constData(), answer.size());
    return area.size < 2 ? '\0' : answer[area.offset];
}

Acknowledged acknowledgementOf(const QByteArray &sent, const QByteArray &answer)
{
    const char code = sent.size() > kFixedSize ? sent[kFixedSize] : '\0';
    if (code == '\0')
        return Acknowledged::Success;
    if (namedBy(answer) != code)
        return Acknowledged::Not;
    const quint8 result = quint8(answer[kFixedSize + 1]);
    return result == 0   ? Acknowledged::Success
           : result == 1 ? Acknowledged::Failure
                         : Acknowledged::Executing;
}

QString limitText(double least, double most)
{
    const bool hasLeast = std::isfinite(least), hasMost = std::isfinite(most);
    if (hasLeast && hasMost)
        return least == most ? plain(least) : plain(least) + QStringLiteral(" … ") + plain(most);
    if (hasLeast)
        return QStringLiteral(">= ") + plain(least);
    return hasMost ? QStringLiteral("<= ") + plain(most) : QString();
}

} // namespace check
