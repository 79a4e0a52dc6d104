#pragma once

#include "protocol/commands.h"
#include "protocol/modes.h"

#include <QString>

namespace wire {

enum class Language : quint8 { Chinese, English };

/// Text of a Chinese key in a language, or the key itself. The texts are those of the bench, and
/// part of the tool: it speaks the same wherever it lies.
QString nameOf(const char *key, Language language);

/// A command by its code in decimal or as 0x20, its id, or its name in either language; null where
/// there is none. Codes without a row have none either.
const CommandRow *commandNamed(const QString &word);

/// A work mode by its code, id or name in the same way.
const ModeRow *modeNamed(const QString &word);
const ModeRow *modeOf(quint8 code);

/// A number in decimal or, after 0x, hexadecimal digits; false for another text.
bool readNumber(const QString &text, qint64 &number);

} // namespace wire
