#pragma once

#include <QString>

class QGlobal;

/// Reads the five text files of a folder into `global`, which has none yet: numbers, keyboard map,
/// palette, model table and language table, in this order. A missing file leaves its table empty
/// without a word; a line with the wrong number of parts is skipped; a later line of a name wins.
void readTextFilesFrom(const QString &folder, QGlobal &global);
