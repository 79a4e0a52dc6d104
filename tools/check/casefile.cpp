#include "tools/check/cases.h"
#include "tools/check/cyclestats.h"
#include "tools/check/jsonentry.h"
#include "tools/check/judge.h"
#include "tools/wire/compose.h"
#include "tools/wire/framefields.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>

/// The files lie in a static library, which the linker takes only by name.
static void initCases()
{
    Q_INIT_RESOURCE(check);
}

namespace check {

namespace {

constexpr qint64 kUsualTime = 2000000;
constexpr qint64 kUsualPace = 30000;
constexpr int kMostAttempts = 5;
constexpr int kMostTimes = 100000;

/// A host frame in the shape that `nacelle-wire compose --json` takes.
QByteArray frameOf(QJsonObject object, JsonEntry &entry)
{
    object.insert(QStringLiteral("frame"), QStringLiteral("host"));
    const wire::Composed made =
        wire::composeJson(QJsonDocument(object).toJson(QJsonDocument::Compact));
    if (!made.error.isEmpty())
        entry.complain(made.error);
    return made.record.bytes;
}

QVector<QByteArray> framesOf(const QJsonArray &list, JsonEntry &entry)
{
    QVector<QByteArray> frames;
    for (const QJsonValue &each : list) {
        if (!each.isObject())
            entry.complain(QStringLiteral("\"frames\": objects { … } are needed"));
        frames.append(frameOf(each.toObject(), entry));
    }
    if (frames.isEmpty())
        entry.complain(QStringLiteral("\"frames\": at least one is needed"));
    return frames;
}

/// A number, or the name of one that is remembered.
void readNear(JsonEntry &entry, Condition &condition)
{
    const QString near = entry.words("near").value(0);
    bool isNumber = false;
    condition.near = near.toDouble(&isNumber);
    condition.remembered = isNumber ? QString() : near;
    condition.within = entry.number("within", -1);
    if (condition.within < 0)
        entry.complain(QStringLiteral("\"near\" takes \"within\", 0 or more"));
    condition.turns = entry.flag("turns");
}

Condition readCondition(const QString &field, const QJsonValue &value, const QString &place,
                        QString &error)
{
    Condition condition;
    condition.field = field;
    if (!value.isObject()) {
        JsonEntry entry(QJsonObject{{QStringLiteral("is"), value}}, place, error);
        condition.oneOf = entry.words("is");
        return condition;
    }
    JsonEntry entry(value, place, error);
    condition.least = entry.number("least", -kNoLimit);
    condition.most = entry.number("most", kNoLimit);
    if (entry.has("bits") && !wire::readDigits(entry.text("bits").toLatin1(), condition.bits))
        entry.complain(QStringLiteral("\"bits\": hexadecimal digits are needed"));
    if (entry.has("near"))
        readNear(entry, condition);
    return condition;
}

bool canFail(const Condition &condition, bool isOfNumber)
{
    const bool isOfRange =
        std::isfinite(condition.least) || std::isfinite(condition.most) || condition.within >= 0;
    return isOfRange ? isOfNumber : !condition.oneOf.isEmpty() || !condition.bits.isEmpty();
}

QVector<Condition> readConditions(const QJsonObject &object, JsonEntry &entry, QString &error)
{
    QVector<Condition> conditions;
    for (auto each = object.begin(); each != object.end(); ++each) {
        const protocol::Field *field = wire::fieldNamed(wire::FrameKind::Gcu, each.key());
        if (!field || wire::isVariable(field->kind))
            entry.complain(QStringLiteral("no such field of an answer: ") + each.key());
        const QString place = entry.place() + '.' + each.key();
        const Condition condition = readCondition(each.key(), each.value(), place, error);
        if (field && error.isEmpty() && !canFail(condition, wire::isNumber(field->kind)))
            error = place + QStringLiteral(": nothing is wanted of it that such a field can miss");
        for (const QString &word : condition.oneOf)
            if (field && error.isEmpty() && !canBe(*field, word))
                error = place + QStringLiteral(": it is never \"%1\"").arg(word);
        conditions.append(condition);
    }
    return conditions;
}

Wanted readWanted(JsonEntry &entry)
{
    if (!entry.has("result"))
        return Wanted::Success;
    const QString word = entry.text("result");
    const QStringList words{QStringLiteral("success"), QStringLiteral("failure"),
                            QStringLiteral("refused"), QStringLiteral("any")};
    if (!words.contains(word))
        entry.complain(QStringLiteral("\"result\": one of ") + words.join(QStringLiteral(", ")));
    return Wanted(qMax(0, words.indexOf(word)));
}

void readAsk(JsonEntry &entry, QString &error, Step &step)
{
    step.kind = StepKind::Ask;
    step.writes = {frameOf(entry.object("ask"), entry)};
    step.time = entry.duration("within", kUsualTime);
    step.every = entry.duration("every", kUsualPace);
    step.wanted = readWanted(entry);
    step.conditions = readConditions(entry.object("expect"), entry, error);
}

/// The length field one less than it should be, or the checksum's last byte turned round.
void spoil(const QString &what, QByteArray &bytes, JsonEntry &entry)
{
    if (bytes.size() < kFrameOverhead)
        return;
    if (what == QLatin1String("checksum")) {
        bytes[bytes.size() - 1] = char(~bytes[bytes.size() - 1]);
    } else if (what == QLatin1String("length")) {
        bytes[2] = char(bytes[2] - 1);
        bytes.chop(2);
        const quint16 crc = crc16(bytes.constData(), quint8(bytes.size()));
        bytes += char(crc >> 8);
        bytes += char(crc & 0xFF);
    } else {
        entry.complain(QStringLiteral("\"spoil\": checksum or length"));
    }
}

QByteArray bytesToSend(JsonEntry &entry)
{
    QByteArray bytes;
    if ((entry.has("bytes") || entry.has("frames")) && !entry.object("send").isEmpty())
        entry.complain(QStringLiteral("\"send\": empty where \"bytes\" or \"frames\" are given"));
    if (entry.has("bytes")) {
        if (!wire::readDigits(entry.text("bytes").toLatin1(), bytes))
            entry.complain(QStringLiteral("\"bytes\": hexadecimal digits are needed"));
        return bytes;
    }
    const QVector<QByteArray> frames =
        entry.has("frames") ? framesOf(entry.array("frames"), entry)
                            : QVector<QByteArray>{frameOf(entry.object("send"), entry)};
    for (const QByteArray &frame : frames)
        bytes += frame;
    if (entry.has("spoil") && frames.size() > 1)
        entry.complain(QStringLiteral("\"spoil\" takes one frame"));
    if (entry.has("spoil"))
        spoil(entry.text("spoil"), bytes, entry);
    return bytes;
}

void readSend(JsonEntry &entry, QString &, Step &step)
{
    step.kind = StepKind::Send;
    const QByteArray bytes = bytesToSend(entry);
    const int piece = entry.count("piece", bytes.size());
    if (piece == 0)
        entry.complain(QStringLiteral("\"piece\": at least a byte"));
    for (int at = 0; at < bytes.size() && piece > 0; at += piece)
        step.writes.append(bytes.mid(at, piece));
    step.times = entry.count("times", 1);
    if (step.times < 1 || step.times > kMostTimes)
        entry.complain(QStringLiteral("\"times\": 1 to %1").arg(kMostTimes));
    step.every = entry.duration("every", kUsualPace);
    step.isAtOnce = entry.flag("at_once");
}

void readAnswer(JsonEntry &entry, QString &error, Step &step)
{
    step.kind = StepKind::Answer;
    step.time = entry.duration("answer", kUsualTime);
    if (entry.has("to"))
        step.writes = {frameOf(entry.object("to"), entry)};
    if (entry.has("result") && !entry.has("to"))
        entry.complain(QStringLiteral("\"result\" takes \"to\""));
    step.wanted = readWanted(entry);
    step.conditions = readConditions(entry.object("expect"), entry, error);
}

void readQuiet(JsonEntry &entry, QString &, Step &step)
{
    step.kind = StepKind::Quiet;
    step.time = entry.duration("quiet", kUsualTime);
}

void readHold(JsonEntry &entry, QString &error, Step &step)
{
    step.kind = StepKind::Hold;
    step.time = entry.duration("hold", kUsualTime);
    step.writes = {frameOf(entry.object("frame"), entry)};
    step.every = entry.duration("every", kUsualPace);
    step.conditions = readConditions(entry.object("expect"), entry, error);
    if (step.every >= step.time)
        entry.complain(QStringLiteral("\"hold\" takes longer than \"every\""));
}

void readReach(JsonEntry &entry, QString &error, Step &step)
{
    step.kind = StepKind::Reach;
    step.conditions = readConditions(entry.object("reach"), entry, error);
    step.writes = {frameOf(entry.object("frame"), entry)};
    step.time = entry.duration("within", kUsualTime);
    step.every = entry.duration("every", kUsualPace);
}

void readRemember(JsonEntry &entry, QString &, Step &step)
{
    step.kind = StepKind::Remember;
    step.name = entry.text("remember");
    step.field = entry.text("field");
    const protocol::Field *field = wire::fieldNamed(wire::FrameKind::Gcu, step.field);
    if (!field || !wire::isNumber(field->kind))
        entry.complain(QStringLiteral("no such number of an answer: ") + step.field);
}

void readMeasured(JsonEntry &entry, QString &, Step &step)
{
    step.kind = StepKind::Measure;
    step.name = entry.text("measure");
    step.value = entry.text("value");
    if (!figureRow(step.value))
        entry.complain(QStringLiteral("no such value: ") + step.value);
    step.least = entry.number("least", -kNoLimit);
    step.most = entry.number("most", kNoLimit);
    if (!(step.least > 0) && !std::isfinite(step.most)) // no number of a run is below 0
        entry.complain(QStringLiteral("\"least\" above 0, or \"most\", is needed"));
}

struct StepRow
{
    const char *key;
    void (*read)(JsonEntry &, QString &, Step &);
};

constexpr std::array<StepRow, 8> kStepRows{{
    {"ask", readAsk},
    {"send", readSend},
    {"answer", readAnswer},
    {"quiet", readQuiet},
    {"hold", readHold},
    {"reach", readReach},
    {"remember", readRemember},
    {"measure", readMeasured},
}};

Step readStep(const QJsonValue &value, const QString &place, QString &error)
{
    JsonEntry entry(value, place, error);
    Step step;
    for (const StepRow &row : kStepRows) {
        if (!entry.has(row.key))
            continue;
        row.read(entry, error, step);
        return step;
    }
    QStringList keys;
    for (const StepRow &row : kStepRows)
        keys.append(QLatin1String(row.key));
    entry.complain(QStringLiteral("a step is one of ") + keys.join(QStringLiteral(", ")));
    return step;
}

QVector<Step> readSteps(const QJsonArray &list, const QString &place, QString &error)
{
    QVector<Step> steps;
    for (const QJsonValue &each : list)
        steps.append(
            readStep(each, place + QStringLiteral(".steps[%1]").arg(steps.size() + 1), error));
    return steps;
}

QVector<wire::LinkAddress::Kind> readLinks(JsonEntry &entry)
{
    const QStringList known{QStringLiteral("tcp"), QStringLiteral("tcp-listen"),
                            QStringLiteral("udp"), QStringLiteral("serial")};
    QVector<wire::LinkAddress::Kind> links;
    if (!entry.has("links"))
        return links;
    for (const QString &word : entry.words("links")) {
        if (!known.contains(word))
            entry.complain(QStringLiteral("\"links\": some of ") +
                           known.join(QStringLiteral(", ")));
        links.append(wire::LinkAddress::Kind(qMax(0, known.indexOf(word))));
    }
    if (links.isEmpty())
        entry.complain(QStringLiteral("\"links\": at least one"));
    return links;
}

/// The name of the first command that is asked for, which is a case's name where it has none.
LocalText commandName(const QVector<Step> &steps)
{
    for (const Step &step : steps) {
        const QByteArray frame = step.writes.value(0);
        const CommandRow *row =
            frame.size() > kFixedSize ? findCommand(quint8(frame[kFixedSize])) : nullptr;
        if (step.kind == StepKind::Ask && row)
            return {wire::nameOf(row->name, wire::Language::Chinese),
                    wire::nameOf(row->name, wire::Language::English)};
    }
    return {};
}

/// What a condition is compared with has been remembered by a step before.
void holdToNames(const QVector<Step> &steps, JsonEntry &entry)
{
    QStringList known;
    for (const Step &step : steps) {
        for (const Condition &condition : step.conditions)
            if (!condition.remembered.isEmpty() && !known.contains(condition.remembered))
                entry.complain(
                    QStringLiteral("nothing is remembered as \"%1\"").arg(condition.remembered));
        known.append(step.kind == StepKind::Remember ? step.name : QString());
    }
}

/// An answer to a command says which: of any other frame nobody knows what it answers.
void holdToAnswers(const QVector<Step> &steps, JsonEntry &entry)
{
    bool isCommand = false;
    for (const Step &step : steps) {
        if (step.kind == StepKind::Answer && step.writes.isEmpty() && isCommand)
            entry.complain(QStringLiteral("\"answer\" takes \"to\" where a command was sent"));
        for (const QByteArray &bytes : step.writes)
            isCommand = step.kind == StepKind::Send && (isCommand || hasCommand(bytes));
    }
}

/// Whether a pod can fail the step; the others only prepare.
bool judges(const Step &step)
{
    return step.kind != StepKind::Send && step.kind != StepKind::Remember;
}

bool isMeasured(const Step &step)
{
    return step.kind == StepKind::Measure;
}

int readAttempts(JsonEntry &entry, const QVector<Step> &steps)
{
    const int attempts = entry.count("attempts", 1);
    if (attempts < 1 || attempts > kMostAttempts)
        entry.complain(QStringLiteral("\"attempts\": 1 to %1").arg(kMostAttempts));
    if (attempts > 1 && std::any_of(steps.begin(), steps.end(), isMeasured))
        entry.complain(QStringLiteral("\"attempts\": what is measured once stays as it is"));
    return attempts;
}

Case readCase(const QJsonValue &value, const Group &group, const LocalText &usualReason,
              const QString &place, QString &error)
{
    JsonEntry entry(value, place, error);
    Case made;
    made.id = group.id + QLatin1Char('.') + entry.text("id");
    if (made.id.contains(QLatin1Char(',')))
        entry.complain(QStringLiteral("\"id\": without commas"));
    const QString inside = place + QStringLiteral(" (%1)").arg(made.id);
    made.steps = readSteps(entry.array("steps"), inside, error);
    holdToNames(made.steps, entry);
    holdToAnswers(made.steps, entry);
    made.name = entry.has("name") ? entry.localText("name") : commandName(made.steps);
    made.reason = entry.has("reason") ? entry.localText("reason") : usualReason;
    made.isEssential = entry.flag("essential");
    made.attempts = readAttempts(entry, made.steps);
    made.links = readLinks(entry);
    if (made.name.isEmpty() || made.reason.isEmpty())
        entry.complain(QStringLiteral("a name and a reason are needed"));
    if (std::none_of(made.steps.begin(), made.steps.end(), judges))
        entry.complain(QStringLiteral("a case without a step that can fail"));
    return made;
}

Measure readMeasure(const QJsonValue &value, const QString &place, QString &error)
{
    JsonEntry entry(value, place, error);
    Measure measure;
    measure.id = entry.text("id");
    measure.name = entry.localText("name");
    if (measure.name.isEmpty())
        entry.complain(QStringLiteral("a name is needed"));
    measure.frames = framesOf(entry.array("frames"), entry);
    measure.cycles = entry.count("cycles", 0);
    measure.every = entry.duration("every", kUsualPace);
    return measure;
}

quint8 readEffects(JsonEntry &entry)
{
    quint8 effects = kStill;
    if (!entry.has("effects"))
        return effects;
    for (const QString &word : entry.words("effects")) {
        quint8 effect = kMoves;
        while (effect <= kRecords && namesOf(effect) != word)
            effect = quint8(effect << 1);
        if (effect > kRecords)
            entry.complain(QStringLiteral("no such effect: ") + word);
        effects |= effect;
    }
    return effects;
}

/// Of the steps one after another: two of them may send the halves of a frame.
quint8 effectsOfAll(const QVector<Step> &steps)
{
    QByteArray all;
    for (const Step &step : steps)
        for (const QByteArray &bytes : step.writes)
            all += bytes;
    return effectsOf(all);
}

/// The frames of a group do nothing but what the group says of itself.
void holdToEffects(const Group &group, quint8 effects, const QString &place, QString &error)
{
    const quint8 more = effects & quint8(~group.effects);
    if (more != kStill && error.isEmpty())
        error =
            place +
            QStringLiteral(": it %1, which the group's \"effects\" don't say").arg(namesOf(more));
}

void holdToEffects(const Group &group, const QString &file, QString &error)
{
    for (const Measure &measure : group.measures)
        for (const QByteArray &frame : measure.frames)
            holdToEffects(group, effectsOf(frame), file + ": " + measure.id, error);
    for (const Case &each : group.cases)
        holdToEffects(group, effectsOfAll(each.steps), file + ": " + each.id, error);
    holdToEffects(group, effectsOfAll(group.after), file + ": after", error);
}

/// What a group does at its end is short, and its cases can be told apart.
void holdToOrder(const Group &group, JsonEntry &entry)
{
    for (const Step &step : group.after)
        if (step.kind != StepKind::Ask)
            entry.complain(QStringLiteral("\"after\" takes \"ask\" alone"));
    QStringList ids;
    for (const Case &each : group.cases)
        ids.append(each.id);
    for (const Measure &each : group.measures)
        ids.append(each.key);
    ids.sort();
    const auto twice = std::adjacent_find(ids.begin(), ids.end());
    if (twice != ids.end())
        entry.complain(QStringLiteral("%1 stands there twice").arg(*twice));
}

/// What a group says of itself.
void readHead(JsonEntry &entry, Group &group)
{
    group.id = entry.text("group");
    group.title = entry.localText("title");
    group.effects = readEffects(entry);
    group.isLong = entry.flag("long");
    group.warning = entry.localText("warning");
    // The command line names groups with commas between them, cases with their group and a dot.
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_-]+$"));
    if (!plain.match(group.id).hasMatch())
        entry.complain(QStringLiteral("\"group\": letters, digits, - and _"));
    if (group.title.isEmpty())
        entry.complain(QStringLiteral("a title is needed"));
    if (group.effects != kStill && group.warning.isEmpty())
        entry.complain(QStringLiteral("a group that does something has to warn of it"));
}

Group readWhole(const QJsonValue &value, const QString &file, QString &error)
{
    JsonEntry entry(value, file, error);
    Group group;
    readHead(entry, group);
    const LocalText reason = entry.localText("reason");
    for (const auto &each : entry.array("measures")) {
        group.measures.append(readMeasure(each, file + QStringLiteral(": measures"), error));
        group.measures.last().key = group.id + QLatin1Char('/') + group.measures.last().id;
    }
    for (const auto &each : entry.array("cases"))
        group.cases.append(
            readCase(each, group, reason,
                     file + QStringLiteral(": cases[%1]").arg(group.cases.size() + 1), error));
    group.after = readSteps(entry.array("after"), file + QStringLiteral(": after"), error);
    holdToOrder(group, entry);
    return group;
}

const Measure *measureNamed(const QString &id, const Group &group)
{
    for (const Measure &measure : group.measures)
        if (measure.id == id)
            return &measure;
    return nullptr;
}

void tie(Step &step, const Group &group, const QString &place, const QVector<Group> &groups,
         QString &error)
{
    const Measure *measure = measureNamed(step.name, group);
    for (auto other = groups.begin(); !measure && other != groups.end(); ++other)
        measure = measureNamed(step.name, *other);
    if (!measure) {
        error = QStringLiteral("%1: there is no measure \"%2\"").arg(place, step.name);
        return;
    }
    if (measure->cycles == 0 && !group.isLong)
        error = QStringLiteral("%1: \"%2\" has no \"cycles\", and the group isn't \"long\"")
                    .arg(place, step.name);
    step.name = measure->key;
    for (const QByteArray &frame : measure->frames)
        holdToEffects(group, effectsOf(frame), place, error);
}

} // namespace

bool readGroup(const QByteArray &json, const QString &file, QVector<Group> &groups, QString &error)
{
    QJsonParseError parsed;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parsed);
    if (parsed.error != QJsonParseError::NoError) {
        error = QStringLiteral("%1: line %2: %3")
                    .arg(file)
                    .arg(json.left(parsed.offset).count('\n') + 1)
                    .arg(parsed.errorString());
        return false;
    }
    error.clear();
    if (const QString key = doubledKey(json); !key.isEmpty())
        error = QStringLiteral("%1: \"%2\" stands there twice").arg(file, key);
    const Group group = readWhole(document.object(), file, error);
    holdToEffects(group, file, error);
    if (!error.isEmpty())
        return false;
    for (Group &each : groups) {
        if (each.id == group.id) {
            each = group;
            return true;
        }
    }
    groups.append(group);
    return true;
}

bool tieMeasures(QVector<Group> &groups, QString &error)
{
    const QVector<Group> known = groups;
    for (Group &group : groups)
        for (Case &each : group.cases)
            for (Step &step : each.steps)
                if (step.kind == StepKind::Measure)
                    tie(step, group, each.id, known, error);
    return error.isEmpty();
}

QStringList shippedFiles()
{
    initCases();
    QStringList files;
    for (const char *name :
         {"link", "timing", "protocol", "commands", "payload", "motion", "endurance"})
        files.append(QStringLiteral(":/nacelle_check/%1.json").arg(QLatin1String(name)));
    return files;
}

} // namespace check
