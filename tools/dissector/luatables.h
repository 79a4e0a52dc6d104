#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

class Notes;

/// What explains the rows, in both languages: by "zh" and "en".
using Explanations = QMap<QString, Notes *>;

/// The program's tables as Lua: HOST_ROWS, GCU_ROWS, FLAG_BITS, COMMANDS, PARAMS, MODES and WORDS,
/// with names in both languages. `notes` explain rows, `names` name parameters; what lacks either,
/// in either language, is complained of there.
QString luaTables(const Explanations &notes, const Explanations &names);
