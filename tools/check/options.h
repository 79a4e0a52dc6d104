#pragma once

#include "tools/check/runner.h"

#include <optional>

namespace check {

/// What the command line asks for.
struct Options
{
    wire::LinkAddress address;
    bool hasLink = false;
    bool isDryRun = false;
    bool isList = false;
    wire::Language language = wire::Language::English;
    QVector<Group> all; ///< that there are, own ones included
    QVector<CaseFile> caseFiles;
    Plan plan;
    QString device;
    QString inspector;
    QString report;
    QString junit;
    QString json;
    QString recording;
    QString exportFolder;
};

/// Reads and answers the command line: the exit code where that is all there is to do. Whether a
/// report is wanted says `wantsReport`, before there is an application.
std::optional<int> readOptions(Options &options);
bool wantsReport(int argc, const char *const *argv);

} // namespace check
