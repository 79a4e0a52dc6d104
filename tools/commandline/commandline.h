#pragma once

#include <QCommandLineParser>

#include <optional>

// What the command lines of all tools have in common. The bench itself takes no options.

enum ExitCode { kExitDone = 0, kExitFailure = 1, kExitUsage = 2 };

/// Adds -h, --help and --version.
void addStandardOptions(QCommandLineParser &parser);

/// The text that the standard options ask for; empty where they weren't given.
QString standardAnswer(const QCommandLineParser &parser);

/// Writes a line with the program's name to standard error and gives the code back.
int complain(const QString &text, int code = kExitFailure);
int complainOfUsage(const QString &text);

/// The exit code of a program that would end with `code`: a failure, and a word about it, where its
/// output couldn't be written.
int endWith(int code);

/// Adds the standard options, parses the program's arguments and answers what can be answered at
/// once: help, version, a mistake. The exit code if that is all there is to do.
std::optional<int> readCommandLine(QCommandLineParser &parser);
