#pragma once

#include "tools/check/results.h"

// What the written files say alike of a result.

namespace check {

/// The groups that have cases, in the order of their titles; one without a title is called by its
/// id and comes after them.
QVector<GroupTitle> groupsOf(const SessionResult &result);

/// The cases of a group in their order, and how many of them were judged so.
QVector<CaseResult> casesOf(const SessionResult &result, const QString &group);
int countOf(const QVector<CaseResult> &cases, Judgement judgement);

/// With at most three decimals, and its unit.
QString valueText(const Figure &figure);
/// "12.3 ms (≤ 40)"; without the brackets where nothing was asked for.
QString measuredText(const Figure &figure);

/// "protocol 1, hardware 2 …" in a language; a dash where the pod has said nothing.
QString versionText(const Versions &versions, wire::Language language);
/// "link/cycle 6 (2000)": each run of cycles, with what its file says where that is something else.
QString cyclesText(const SessionResult &result);
/// "own.json (SHA-256 0123456789abcdef…)" for each file of the user's.
QString caseFilesText(const SessionResult &result);
/// "59.4 s", "12 min 5 s".
QString durationText(double seconds);
/// With the offset from UTC.
QString beginText(const SessionResult &result);
/// Of a record, "00:00:03.250" in local time; empty for an unknown one.
QString timeText(const wire::Record &record);
/// "A8 E5 49": digits that can be broken between two bytes; of more than 512 bytes the first, since
/// noise has no end.
QString digitsText(const QByteArray &bytes);

/// The text with a picture in place of each control character: neither XML nor a page takes them.
/// Line ends stay.
QString printable(QString text);

/// The file with just these bytes, or as it was: false with `error` set, its name in it.
bool writeWhole(const QString &path, const QByteArray &bytes, QString &error);

} // namespace check
