#pragma once

#include <QString>

#include <cstdio>

/// Writes a line whole, whatever characters it has. What the stream doesn't take shows in its error
/// flag.
void writeLine(std::FILE *stream, const QString &line);
