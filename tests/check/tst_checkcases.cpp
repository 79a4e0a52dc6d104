#include "tests/check/podframes.h"
#include "tests/support/strictmain.h"
#include "tools/check/cases.h"
#include "tools/check/cyclestats.h"
#include "tools/check/judge.h"

#include <QFile>

using namespace check;

namespace {

/// What a word of a session stands for: `s24` a sent command, `a24` its answer, `a` an answer
/// without feedback, `c24` the answer with a wrong checksum, `crc`, `long` and `noise` what isn't
/// an answer.
wire::Record recordOf(const QByteArray &word, qint64 time)
{
    wire::Record record;
    record.time = time;
    record.direction = word[0] == 's' ? wire::Direction::Tx : wire::Direction::Rx;
    const bool isNamed = word.size() == 3 && (word[0] == 'a' || word[0] == 'c') && word != "crc";
    record.bytes = word[0] == 's'    ? hostWith(word.mid(1))
                   : word == "noise" ? QByteArray("\x01\x02\x03", 3)
                                     : answerWith(isNamed ? word.mid(1) + "00" : QByteArray());
    if (word[0] == 'c')
        record.bytes.data()[record.bytes.size() - 1] ^= 1;
    if (word == "long")
        record.bytes[2] = 72;
    return record;
}

/// Of the words of a session, 5 ms from each to the next.
CycleStats statsOf(const QByteArray &session, qint64 every)
{
    CycleStats stats;
    stats.every = every;
    qint64 time = 1000000;
    for (const QByteArray &word : session.split(' ')) {
        const wire::Record record = recordOf(word, time += 5000);
        if (word[0] == 's')
            stats.takeSent(record);
        else
            stats.takeReceived(record);
    }
    return stats;
}

} // namespace

class tst_checkcases : public QObject
{
    Q_OBJECT

private slots:
    void mistakesInFiles_data();
    void mistakesInFiles();
    void shippedCases();
    void measures();
    void ownCases();
    void cycles_data();
    void cycles();
    void detailsOfCycles();
    void conditions_data();
    void conditions();
};

void tst_checkcases::mistakesInFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("error");
    const struct
    {
        const char *name;
        QByteArray file;
        const char *error;
    } rows[] = {
        {"no JSON", "{\n\n  nonsense", "f.json: line 3: "},
        {"a key too many", fileWith(R"([{"ask": {}, "whithin": "2s"}])"),
         "\"whithin\" isn't known"},
        {"no steps", fileWith("[]"), "a case without a step that can fail"},
        {"nothing to judge", fileWith(R"([{"send": {}}])"), "a case without a step that can fail"},
        {"nothing wanted", fileWith(R"([{"ask": {}, "expect": {"version": {}}}])"),
         "nothing is wanted of it"},
        {"below 0 within",
         fileWith(R"([{"ask": {}, "expect": {"relative_y": {"near": 1, "within": -1}}}])"),
         "\"within\", 0 or more"},
        {"near without within",
         fileWith(R"([{"ask": {}, "expect": {"relative_y": {"near": 1, "least": -180}}}])"),
         "\"within\", 0 or more"},
        {"no such mode", fileWith(R"([{"ask": {}, "expect": {"mode": ["lock", "folow"]}}])"),
         "g.c).steps[1].mode: it is never \"folow\""},
        {"more than a byte", fileWith(R"([{"ask": {}, "expect": {"version": 256}}])"),
         "it is never \"256\""},
        {"digits of another length", fileWith(R"([{"ask": {}, "expect": {"reserved1": "00"}}])"),
         "it is never \"00\""},
        {"always so", fileWith(R"([{"measure": "cycle", "value": "sent", "least": 0}])"),
         "\"least\" above 0"},
        {"measured again",
         fileWith(R"([{"measure": "cycle", "value": "lost", "most": 0}])")
             .replace(R"("id": "c")", R"("id": "c", "attempts": 3)"),
         "stays as it is"},
        {"any answer to a command",
         fileWith(R"([{"send": {"command": {"name": "zoom_stop", "params": {"camera": 1}}}},)"
                  R"( {"answer": "1s"}])"),
         "takes \"to\""},
        {"a range of bytes", fileWith(R"([{"ask": {}, "expect": {"reserved1": {"least": 5}}}])"),
         "nothing is wanted of it"},
        {"no limit", fileWith(R"([{"measure": "cycle", "value": "lost"}])"), "\"most\", is needed"},
        {"too short to hold", fileWith(R"([{"hold": "20ms", "frame": {}}])"), "longer than"},
        {"a frame that is a word",
         fileWith(R"([{"send": {}, "frames": ["look_down"]}, {"quiet": "1s"}])"),
         "objects { … } are needed"},
        {"two things to send",
         fileWith(R"([{"send": {"fields": {}}, "bytes": "00"}, {"quiet": "1s"}])"), "empty where"},
        {"no such step", fileWith(R"([{"wait": "2s"}])"), "a step is one of ask, send"},
        {"no such field", fileWith(R"([{"ask": {}, "expect": {"rol": 1}}])"),
         "no such field of an answer: rol"},
        {"a field without a place", fileWith(R"([{"ask": {}, "expect": {"crc": "0000"}}])"),
         "no such field of an answer: crc"},
        {"no such command", fileWith(R"([{"ask": {"command": {"name": "fly"}}}])"),
         "no such command: fly"},
        {"no time", fileWith(R"([{"ask": {}, "within": "soon"}])"), "a time as 30ms or 2s"},
        {"a number without a unit", fileWith(R"([{"ask": {}, "within": "5"}])"),
         "a time as 30ms or 2s"},
        {"a key twice", fileWith(R"([{"ask": {"fields": {}, "fields": {}}}])"),
         "\"fields\" stands there twice"},
        {"no title",
         fileWith(R"([{"ask": {}}])").replace(R"("title": {"zh": "组", "en": "group"},)", ""),
         "a title is needed"},
        {"a dot in a group's name", fileWith(R"([{"ask": {}}])").replace(R"("g")", R"("g.h")"),
         "letters, digits"},
        {"a measure without a name",
         fileWith(R"([{"ask": {}}])", R"("measures": [{"id": "m",)"
                                      R"( "frames": [{}]}],)"),
         "a name is needed"},
        {"two measures of one name",
         fileWith(R"([{"ask": {}}])",
                  R"("measures": [)"
                  R"({"id": "m", "name": {"zh": "量", "en": "m"}, "frames": [{}]},)"
                  R"({"id": "m", "name": {"zh": "量", "en": "m"}, "frames": [{}]}],)"),
         "g/m stands there twice"},
        {"no such value", fileWith(R"([{"measure": "cycle", "value": "luck"}])"),
         "no such value: luck"},
        {"no such result", fileWith(R"([{"ask": {}, "result": "maybe"}])"), "\"result\": one of"},
        {"nothing remembered",
         fileWith(R"([{"ask": {}, "expect": {"absolute_yaw": {"near": "x", "within": 1}}}])"),
         "nothing is remembered as \"x\""},
        {"digits", fileWith(R"([{"send": {}, "bytes": "A8E"}])"), "hexadecimal digits"},
        {"it moves", fileWith(R"([{"ask": {"command": {"name": "recentre"}}}])"),
         "it moves, which the group's \"effects\" don't say"},
        {"control inputs move",
         fileWith(R"([{"send": {"fields": {"yaw_control": 100, "flags": 4}}}, {"quiet": "1s"}])"),
         "it moves"},
        {"bytes move", // recentre, behind a frame that does nothing
         fileWith(
             R"([{"send": {}, "frames": [{}, {"command": {"name": "recentre"}}]}, {"quiet": "1s"}])"),
         "it moves"},
        {"halves move",
         fileWith(R"([{"send": {}, "bytes": ")" + hostWith("13").left(40).toHex() +
                  R"("}, {"send": {}, "bytes": ")" + hostWith("13").mid(40).toHex() +
                  R"("}, {"quiet": "1s"}])"),
         "it moves"},
        {"light without a parameter", fileWith(R"([{"ask": {"command": {"area": "80"}}}])"),
         "it lights"},
        {"no measures at the end", fileWith(R"([{"ask": {}}])", R"("after": [{"quiet": "1s"}],)"),
         "takes \"ask\" alone"},
        {"light", fileWith(R"([{"ask": {"command": {"name": "light", "params": {"state": 5}}}}])"),
         "it lights"},
        {"no warning",
         fileWith(R"([{"ask": {"command": {"name": "recentre"}}}])", R"("effects": ["moves"],)"),
         "has to warn of it"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << row.file << QString(row.error);
}

void tst_checkcases::mistakesInFiles()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, error);
    QVector<Group> groups;
    QString said;
    QVERIFY(!readGroup(file, "f.json", groups, said));
    QVERIFY2(said.contains(error) && said.startsWith("f.json"), qPrintable(said));
    QVERIFY(groups.isEmpty());
}

/// What runs without being named does nothing to the pod, by the bytes of its frames.
void tst_checkcases::shippedCases()
{
    QVector<Group> groups;
    QString error;
    for (const QString &path : shippedFiles()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY2(readGroup(file.readAll(), path, groups, error), qPrintable(error));
    }
    QStringList still, other;
    for (const Group &group : groups)
        (group.effects == kStill ? still : other).append(group.id);
    QCOMPARE(still, QStringList({"link", "timing", "protocol", "commands", "endurance"}));
    QCOMPARE(other, QStringList({"payload", "motion"}));
    QCOMPARE(namesOf(effectsOf(QByteArray::fromHex(
                 "A8E5480001000000000000000000000000000000000000000000000000000000000000000001"
                 "00000000000000000000000000000000000000000000000000000000000000037BA9"))),
             QString("moves"));
}

/// A measure counts as sent by the group that asks for it.
void tst_checkcases::measures()
{
    const QByteArray moving =
        R"("measures": [{"id": "m", "name": {"zh": "量", "en": "m"}, "cycles": 9,)"
        R"( "frames": [{"command": {"name": "look_down"}}]}],)"
        R"( "effects": ["moves"], "warning": {"zh": "动", "en": "moves"},)";
    const QByteArray user = fileWith(R"([{"measure": "m", "value": "lost", "most": 0}])");
    QVector<Group> groups;
    QString error;
    QVERIFY(readGroup(user, "f.json", groups, error));
    QVERIFY(!tieMeasures(groups, error));
    QCOMPARE(error, QString("g.c: there is no measure \"m\""));
    QByteArray endless = fileWith(R"([{"measure": "m", "value": "lost", "most": 0}])", moving);
    QVector<Group> own;
    QVERIFY(readGroup(endless.replace(R"("cycles": 9,)", ""), "f.json", own, error));
    QVERIFY(!tieMeasures(own, error));
    QVERIFY2(error.startsWith("g.c: \"m\" has no \"cycles\""), qPrintable(error));
    error.clear();
    QByteArray other = fileWith(R"([{"ask": {}}])", moving);
    QVERIFY(
        readGroup(other.replace(R"("group": "g")", R"("group": "h")"), "f.json", groups, error));
    QVERIFY(!tieMeasures(groups, error));
    QVERIFY2(error.startsWith("g.c: it moves"), qPrintable(error));
}

void tst_checkcases::ownCases()
{
    QVector<Group> groups;
    QString error;
    QVERIFY(readGroup(fileWith(R"([{"ask": {}}])"), "f.json", groups, error));
    QVERIFY(readGroup(fileWith(R"([{"ask": {}}, {"quiet": "1s"}])"), "f.json", groups, error));
    QCOMPARE(groups.size(), 1);
    QCOMPARE(groups.at(0).cases.at(0).steps.size(), 2);
    QCOMPARE(groups.at(0).cases.at(0).id, QString("g.c"));
}

void tst_checkcases::cycles_data()
{
    QTest::addColumn<QByteArray>("session");
    // Lost, doubled, reordered, bad, long, noise; the worst answer time, below 0 for none.
    QTest::addColumn<QVector<double>>("values");
    const struct
    {
        const char *name;
        QByteArray session;
        QVector<double> values;
    } rows[] = {
        {"whole", "s24 a24 s75 a75 s80 a80 s07 a07 s24 a24", {0, 0, 0, 0, 0, 0, 5}},
        {"slow", "s24 s75 s80 a24 s07 a75 s24 a80 a07 a24", {0, 0, 0, 0, 0, 0, 25}},
        {"lost", "s24 a24 s75 s80 a80 s07 a07 s24 a24 s75 a75", {1, 0, 0, 0, 0, 0, 5}},
        {"the last one lost", "s24 a24 s75", {1, 0, 0, 0, 0, 0, 5}},
        {"all lost", "s24 s75 s80 s07", {4, 0, 0, 0, 0, 0, -1}},
        {"two lost, then alike", "s24 a24 s75 s80 s24 a24", {2, 0, 0, 0, 0, 0, 5}},
        {"doubled", "s24 a24 a24 s75 a75 s80 a80 a80", {0, 2, 0, 0, 0, 0, 5}},
        {"doubled by a slow pod",
         "s24 s75 s80 a24 a24 a75 s07 s24 a80 a07 a24",
         {0, 1, 0, 0, 0, 0, 30}},
        {"doubled late", "s24 a24 s75 a75 s80 a24 a80", {0, 1, 0, 0, 0, 0, 10}},
        {"lost, then doubled", "s24 s75 a75 s80 a80 s24 a24 a24", {1, 1, 0, 0, 0, 0, 5}},
        {"in another order", "s24 a24 s75 s80 a80 a75 s07 a07", {0, 0, 1, 0, 0, 0, 15}},
        {"lost, then in another order",
         "s24 s75 a75 s80 a80 s24 s07 a07 a24",
         {1, 0, 1, 0, 0, 0, 15}},
        {"in another order by a slow pod",
         "s24 s75 s80 s07 s73 s24 s75 s80 s07 s73 s24 s75 s80 s07 s73 s24 s75 s80 s07 s73 "
         "a75 a24 a80 a07 a73 a24 a75 a80 a07 a73 a24 a75 a80 a07 a73 a24 a75 a80 a07 a73",
         {0, 0, 1, 0, 0, 0, 105}},
        {"a wrong checksum", "s24 crc s75 a75 s80 a80", {0, 0, 0, 1, 0, 0, 5}},
        {"a wrong checksum, doubled", "s24 c24 c24 s75 a75", {0, 0, 0, 2, 0, 0, 5}},
        {"lost, then a wrong checksum", "s80 a80 s24 s75 c75 s80 a80", {1, 0, 0, 1, 0, 0, 5}},
        {"a wrong checksum in another order", "s24 s75 c75 a24", {0, 0, 1, 1, 0, 0, 15}},
        {"a wrong length", "s24 a24 s75 long s80 a80", {0, 0, 0, 0, 1, 0, 5}},
        {"noise", "s24 noise a24 s75 noise a75", {0, 0, 0, 0, 0, 6, 10}},
        {"no feedback", "s24 a s75 a s80 a s07 a", {0, 0, 0, 0, 0, 0, 5}},
        {"other codes", "s24 a25 s75 a76 s80 a81", {0, 0, 0, 0, 0, 0, 5}},
        {"no feedback, one lost", "s24 a s75 s80 a s07 a", {1, 0, 0, 0, 0, 0, -1}},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << row.session << row.values;
}

void tst_checkcases::cycles()
{
    QFETCH(QByteArray, session);
    QFETCH(QVector<double>, values);
    const CycleStats stats = statsOf(session, 0);
    QVector<double> found;
    for (const char *id : {"lost", "doubled", "reordered", "bad_checksum", "bad_length",
                           "noise_bytes", "answer_worst"}) {
        const bool isKnown = found.size() < 6 || figureRow(id)->whyNot(stats).isEmpty();
        found.append(isKnown ? figureRow(id)->of(stats) : -1);
    }
    QCOMPARE(found, values);
}

/// When it was measured, what shows it, and whose fault it is that there is nothing to say.
void tst_checkcases::detailsOfCycles()
{
    CycleStats stats = statsOf("s24 a24 s75 a75 crc s80 a80 a80", 10000);
    QCOMPARE(stats.answerTimes.moments, QVector<int>({5, 15, 30}));
    QCOMPARE(stats.periods.micros, QVector<int>({10000}));
    QCOMPARE(stats.periods.moments, QVector<int>({15}));
    QCOMPARE(stats.evidence[int(Amiss::Doubled)].size(), 1);
    QCOMPARE(stats.evidence[int(Amiss::Checksum)].value(0).bytes.size(), 71);
    stats = statsOf("s24 a24 s75 s80 s07 a07 a80" + QByteArray(" s24 a24 s80 a80").repeated(9), 0);
    QStringList records;
    for (const Amiss amiss : {Amiss::Lost, Amiss::Late})
        for (const wire::Record &record : stats.evidence[int(amiss)])
            records << record.bytes.left(1).toHex() + ' ' + record.bytes.mid(69, 1).toHex();
    QCOMPARE(records, QStringList({"a8 75", "a8 80", "8a 80"}));
    stats = statsOf("s24 a24 s75 a75 s80 a80", 5000); // sent every 10 ms
    QCOMPARE(figureRow("period_worst")->whyNot(stats).en,
             QString("this computer was too seldom on time with its frames"));
}

void tst_checkcases::conditions_data()
{
    QTest::addColumn<QByteArray>("expect");
    QTest::addColumn<QString>("why"); // nothing where the answer is as it should be
    const struct
    {
        const char *expect;
        const char *why;
    } rows[] = {
        {R"("version": 1)", ""},
        {R"("version": 2)", "Version is 1, wanted 2"},
        {R"("length": [71, 73])", ""},
        {R"("length": 72)", "Frame length is 73, wanted 72"},
        {R"("mode": ["lock", "follow"])", ""},
        {R"("mode": "LOCK")", "Pod work mode is follow, wanted LOCK"},
        {R"("reserved1": "00000000000000")", ""},
        {R"("reserved1": "0000000E000000")", "Reserved is 00000000000000, wanted 0000000E000000"},
        {R"("reserved2": "000000000001")", "Reserved is 000000000000, wanted 000000000001"},
        {R"("camera_status": {"bits": "FF1F"})", ""},
        {R"("camera_status": {"bits": "EF1F"})",
         "Pod status flags is 1000, wanted no bits but those of EF1F"},
        {R"("absolute_pitch": {"least": -90, "most": -12.34})", ""},
        {R"("absolute_pitch": {"least": -12.33})", "Camera abs. pitch is -12.34, wanted ≥ -12.33"},
        {R"("absolute_yaw": {"near": 1, "within": 2.5, "turns": true})", ""},
        {R"("absolute_yaw": {"near": 1, "within": 2.5})", "Camera abs. yaw is 359, wanted 1 ± 2.5"},
        {R"("absolute_yaw": {"near": "before", "within": 1})", ""},
    };
    for (const auto &row : rows)
        QTest::newRow(row.expect) << QByteArray(row.expect) << QString(row.why);
}

void tst_checkcases::conditions()
{
    QFETCH(QByteArray, expect);
    QFETCH(QString, why);
    QVector<Group> groups;
    QString error;
    QVERIFY2(readGroup(fileWith(R"([{"remember": "before", "field": "absolute_yaw"},)"
                                R"({"ask": {}, "expect": {)" +
                                expect + "}}]"),
                       "f.json", groups, error),
             qPrintable(error));
    // Mode follow, flags 10 00, absolute pitch -12.34, absolute yaw 359.
    QByteArray answer = answerWith("2400");
    answer[5] = 0x12;
    answer[6] = 0x10;
    answer.replace(20, 4, QByteArray::fromHex("2EFB3C8C"));
    const LocalText said = unmet(groups.at(0).cases.at(0).steps.at(1).conditions, answer,
                                 {{QStringLiteral("before"), 358.5}});
    QCOMPARE(said.en, why);
}

NACELLE_TEST_MAIN(tst_checkcases)
#include "tst_checkcases.moc"
