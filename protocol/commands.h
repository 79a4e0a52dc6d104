#pragma once

#include <QByteArray>
#include <QString>

#include <array>

// The command set: what stands in the command area of a host frame, one row a command.

/// How one parameter of a payload is parsed and stored.
enum class ParamKind : quint8 {
    None,
    Byte,        ///< `toInt`, low 8 bits
    U16,         ///< `toUShort`
    I16,         ///< `toShort`
    Temperature, ///< i16: `toDouble`, truncated without a scale, low 16 bits
    GeoDegrees,  ///< i32: `toDouble` times 10000000, truncated
    Metres,      ///< i32: `toDouble` times 1000, truncated
};

constexpr int kMaxParams = 6;
constexpr int kNoFixedByte = -1;

/// A command: its code byte, then the fixed byte if there is one, then its parameters.
struct CommandRow
{
    quint8 code = 0;
    const char *name = "";
    int fixedByte = kNoFixedByte;
    std::array<ParamKind, kMaxParams> params = {};
};

constexpr int kCommandCount = 36;
extern const std::array<CommandRow, kCommandCount> kCommands;

/// Width of a parameter on the wire, in bytes.
constexpr int paramSize(ParamKind kind)
{
    switch (kind) {
    case ParamKind::None:
        return 0;
    case ParamKind::Byte:
        return 1;
    case ParamKind::GeoDegrees:
    case ParamKind::Metres:
        return 4;
    default:
        return 2;
    }
}

/// The row of a code, or of a name in the current language; null where there is none.
const CommandRow *findCommand(quint8 code);
const CommandRow *findCommand(const QString &name);

/// Name of a command code in the current language, empty for an unknown code. Code 0x16 has the
/// name of code 0x15, so that feedback for the geographic lock reads as guidance: operators know it
/// so, and the dialog that opens on 0x16 would otherwise look for an item that it doesn't offer.
QString commandName(quint8 code);

/// The same name as 8-bit text in GBK without language lookup, null for an unknown code.
QByteArray commandNameGbk(quint8 code);

/// The command area (code byte and payload) of the command named `name` in the current language.
/// Parameter texts stand in payload order without the fixed byte; those beyond the command's own
/// are ignored. An unknown name gives an empty array.
QByteArray commandBytes(const QString &name, const QString &p1 = {}, const QString &p2 = {},
                        const QString &p3 = {}, const QString &p4 = {}, const QString &p5 = {},
                        const QString &p6 = {});
