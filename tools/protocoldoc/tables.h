#pragma once

#include "tools/protocoldoc/notes.h"

#include <QMap>
#include <QString>

/// The text of every placeholder in the language of `QGlobal`: the tables of both frames, of the
/// commands and of the work modes, and example frames, each composed by the program itself.
QMap<QString, QString> placeholderTexts(Notes &notes);
