#pragma once

#include "tools/check/results.h"

// The files that a session leaves. Each is written whole or not at all; false with `error` set, the
// file's name in it, when it can't be.

namespace check {

/// JUnit's XML for CI servers: a test suite a group, a test case a case; what couldn't be judged is
/// skipped. Texts in a language, names by id.
bool writeJunit(const SessionResult &result, wire::Language language, const QString &path,
                QString &error);

/// All of the result, texts in both languages, frames as `nacelle-wire decode --json` has them.
bool writeJson(const SessionResult &result, const QString &path, QString &error);

/// A PDF of A4 pages, to be printed and signed. Needs a QGuiApplication.
bool writeReport(const SessionResult &result, wire::Language language, const QString &path,
                 QString &error);

} // namespace check
