#pragma once

#include "tools/check/localtext.h"
#include "tools/wire/link.h"

#include <QByteArray>
#include <QStringList>
#include <QVector>

#include <limits>

// What is checked: groups of cases, each a list of steps, read from JSON files.

namespace check {

constexpr double kNoLimit = std::numeric_limits<double>::infinity();

/// What one field of an answer has to be: one of some texts, as `nacelle-wire decode --json` shows
/// them, or a number in a range, or near another one, or only some of its bits set.
struct Condition
{
    QString field; ///< its id
    QStringList oneOf;
    double least = -kNoLimit;
    double most = kNoLimit;
    QByteArray bits;    ///< that may be set, for fields shown in digits
    QString remembered; ///< what `near` is compared with in place of a number
    double near = 0;    ///< with `within`
    double within = -1; ///< below 0 for no such condition
    bool turns = false; ///< of an angle: 359 is 2 away from 1
};

enum class StepKind : quint8 {
    Ask,      ///< sends a frame again and again until the pod answers its command
    Send,     ///< writes bytes
    Answer,   ///< waits for a good frame, or for what it says of a command
    Quiet,    ///< nothing may come
    Hold,     ///< sends a frame at a pace; each answer meets the conditions
    Reach,    ///< sends a frame at a pace until an answer meets the conditions
    Remember, ///< keeps a field of the newest answer under a name
    Measure,  ///< a number of a run of cycles, which is made when it is first asked for
};

/// What an acknowledgement has to say. `Refused` is anything but success, silence included.
enum class Wanted : quint8 { Success, Failure, Refused, Any };

struct Step
{
    StepKind kind = StepKind::Ask;
    QVector<QByteArray> writes; ///< what goes out, a write each
    int times = 1;              ///< all of them so often
    qint64 time = 0;            ///< microseconds: within, for, or of a quiet time
    qint64 every = 30000;       ///< microseconds
    Wanted wanted = Wanted::Success;
    bool isAtOnce = false; ///< sent right after the step before, nothing is waited for
    QVector<Condition> conditions;
    QString name;  ///< of what is remembered, or the key of the measure
    QString field; ///< to be remembered
    QString value; ///< of the measure
    double least = -kNoLimit;
    double most = kNoLimit;
};

/// A run of cycles: frames in turn at a pace.
struct Measure
{
    QString id;
    QString key; ///< with its group: link/cycle
    LocalText name;
    QVector<QByteArray> frames;
    int cycles = 0; ///< 0 for the length that the user gives in minutes
    qint64 every = 30000;
};

struct Case
{
    QString id; ///< with its group: link.answers
    LocalText name;
    LocalText reason;
    bool isEssential = false;               ///< without it nothing else can be judged
    int attempts = 1;                       ///< so often it may fail before it has failed
    QVector<wire::LinkAddress::Kind> links; ///< on which it can be judged; empty for all
    QVector<Step> steps;
};

/// What a frame does to a pod beyond answering; a group says so of its frames before they are sent.
enum Effect : quint8 { kStill = 0, kMoves = 1, kZooms = 2, kLights = 4, kRecords = 8 };

struct Group
{
    QString id;
    LocalText title;
    LocalText warning; ///< what it does to the pod, for those that do something
    quint8 effects = kStill;
    bool isLong = false; ///< lasts as long as the user says
    QVector<Measure> measures;
    QVector<Case> cases;
    QVector<Step> after; ///< done at its end, however it ends, once it has done something
};

/// Reads a file of cases and adds its group, or puts it in place of the one with the same id. False
/// with `error` set, file and place in it, for anything that isn't understood.
bool readGroup(const QByteArray &json, const QString &file, QVector<Group> &groups, QString &error);

/// Ties the steps that measure to their measures: one of the same group, else of any other. False
/// with `error` set where there is none, where its frames do what the group doesn't say, or where
/// nobody says how long it takes.
bool tieMeasures(QVector<Group> &groups, QString &error);

/// The files that come with the tool, in the order of their running.
QStringList shippedFiles();

/// What the host frames in some bytes do to a pod, whether by their command or by control inputs;
/// and those of all that a step writes.
quint8 effectsOf(const QByteArray &bytes);
quint8 effectsOf(const Step &step);

/// Whether a host frame in some bytes carries a command.
bool hasCommand(const QByteArray &bytes);

/// Names of effects, as case files have them: "moves, lights".
QString namesOf(quint8 effects);

} // namespace check
