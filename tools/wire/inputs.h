#pragma once

#include "tools/wire/filter.h"
#include "tools/wire/output.h"
#include "tools/wire/recordreader.h"
#include "tools/wire/recordwriter.h"

#include <QCommandLineParser>
#include <QStringList>

#include <functional>

namespace wire {

/// Options of all verbs that read recordings, and of those that choose among frames.
void addReadOptions(QCommandLineParser &parser);
void addFilterOptions(QCommandLineParser &parser);
void addTimeOptions(QCommandLineParser &parser);
void addLanguageOption(QCommandLineParser &parser);
void addOutputOption(QCommandLineParser &parser);

/// What they say; false with `error` set where a value isn't one that the option takes.
bool readReadOptions(const QCommandLineParser &parser, ReadOptions &options, QString &error);
bool readFilter(const QCommandLineParser &parser, Filter &filter, QString &error);
bool readTimes(const QCommandLineParser &parser, Filter &filter, QString &error);
bool readLanguage(const QCommandLineParser &parser, Language &language, QString &error);

/// The form in which a recording is written: by name, or else by the end of the file's name; null
/// with `error` set where there is none such. Where neither says one it is `usual`. A recording's
/// first block names the origin.
std::unique_ptr<FrameFormat> readForm(const QString &name, const QString &path, Language language,
                                      const Origin &origin, QString &error,
                                      const QString &usual = QStringLiteral("line"));

/// A length of time or a whole number from `least` on; what isn't given stays as it is.
bool readDurationOption(const QCommandLineParser &parser, const char *name, qint64 &microseconds,
                        QString &error);
bool readCountOption(const QCommandLineParser &parser, const char *name, int least, int &count,
                     QString &error);

/// The reader of a path, "-" for standard input, or of the digits of a frame; null with `error`
/// set.
std::unique_ptr<RecordReader> openInput(const QString &word, const ReadOptions &options,
                                        std::function<void()> beforeRead, QString &error);

/// Says what the filter of an input has to remark.
void sayRemark(const QString &word, const Filter &filter);

/// Opens the output and puts what the form begins with; false with the output's `error` set.
bool begin(Output &output, const QString &path, const FrameFormat &format);

/// False with `error` set if the file to be written is among the inputs: it would be emptied before
/// it is read.
bool mayWrite(const QString &target, const QStringList &inputs, QString &error);

/// Hands the records of all inputs, standard input where none is named, to `take`, which says
/// whether it wants more. `begin` opens the output and is called when the first input is open, so
/// that a mistyped name empties no file. What is put out is handed over before each wait for an
/// input. Gives the exit code back; what is wrong with an input or the output is said on standard
/// error.
int forEachRecord(const QStringList &words, const ReadOptions &options, Output &output,
                  const std::function<bool()> &begin,
                  const std::function<bool(const Record &)> &take);

} // namespace wire
