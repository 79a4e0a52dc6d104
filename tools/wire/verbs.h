#pragma once

#include <QCommandLineParser>

namespace wire {

/// The code for a command that nobody has answered; the others are those of all tools.
constexpr int kExitNoAnswer = 3;
/// The code of what is stopped before it is done, as a shell has it for SIGINT.
constexpr int kExitStopped = 130;

/// What the tool does, a row a verb: its options beyond the standard ones, and its work with the
/// words after it. `run` gives the exit code back.
struct Verb
{
    const char *name;
    const char *words;   ///< after the verb, as the usage line shows them
    const char *summary; ///< a line of the tool's own help
    const char *text;    ///< its own help, with examples
    void (*addOptions)(QCommandLineParser &parser);
    int (*run)(const QCommandLineParser &parser, const QStringList &words);
};

extern const Verb kComposeVerb;
extern const Verb kDecodeVerb;
extern const Verb kConvertVerb;
extern const Verb kFieldsVerb;
extern const Verb kDiffVerb;
extern const Verb kSendVerb;
extern const Verb kDumpVerb;
extern const Verb kRecordVerb;
extern const Verb kReplayVerb;

} // namespace wire
