#include "protocol/commands.h"

#include "foundation/QGlobal.h"
#include "protocol/codec.h"
#include "protocol/fields.h"

#include <QTextCodec>

#include <algorithm>

namespace {

using P = ParamKind;

constexpr quint8 kGuidanceCode = 0x15;
constexpr quint8 kGeoLockCode = 0x16;

template <typename Predicate>
const CommandRow *firstWhere(Predicate predicate)
{
    const auto row = std::find_if(kCommands.begin(), kCommands.end(), predicate);
    return row == kCommands.end() ? nullptr : &*row;
}

QByteArray paramBytes(ParamKind kind, const QString &text)
{
    switch (kind) {
    case P::None:
        return {};
    case P::Byte:
        return QByteArray(1, char(text.toInt()));
    case P::U16:
        return encodeU16(text.toUShort());
    case P::I16:
        return encodeI16(text.toShort());
    case P::Temperature:
        return encodeI16(qint16(scaledDouble(text, 1.0)));
    case P::GeoDegrees:
        return encodeI32(scaledDouble(text, kGeoDegrees.k));
    case P::Metres:
        return encodeI32(scaledDouble(text, kThousandths.k));
    }
    return {};
}

} // namespace

const CommandRow *findCommand(quint8 code)
{
    return firstWhere([code](const CommandRow &row) { return row.code == code; });
}

const CommandRow *findCommand(const QString &name)
{
    return firstWhere([&name](const CommandRow &row) { return translated(row.name) == name; });
}

/// The one asymmetry of the two directions stands here.
const CommandRow *shownCommand(quint8 code)
{
    return findCommand(code == kGeoLockCode ? kGuidanceCode : code);
}

QString commandName(quint8 code)
{
    const CommandRow *row = shownCommand(code);
    return row ? translated(row->name) : QString();
}

QByteArray commandNameGbk(quint8 code)
{
    const CommandRow *row = shownCommand(code);
    const QTextCodec *gbk = QTextCodec::codecForName("GBK");
    return row && gbk ? gbk->fromUnicode(QString::fromUtf8(row->name)) : QByteArray();
}

QByteArray commandBytes(const CommandRow &command, const std::array<QString, kMaxParams> &texts)
{
    QByteArray bytes(1, char(command.code));
    if (command.fixedByte != kNoFixedByte)
        bytes.append(char(command.fixedByte));
    for (std::size_t i = 0; i < command.params.size(); ++i)
        bytes.append(paramBytes(command.params[i].kind, texts[i]));
    return bytes;
}

QByteArray commandBytes(const QString &name, const QString &p1, const QString &p2,
                        const QString &p3, const QString &p4, const QString &p5, const QString &p6)
{
    const CommandRow *row = findCommand(name);
    return row ? commandBytes(*row, {p1, p2, p3, p4, p5, p6}) : QByteArray();
}
