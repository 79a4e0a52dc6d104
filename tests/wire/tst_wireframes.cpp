#include "protocol/codec.h"
#include "tests/support/strictmain.h"
#include "tools/wire/catalogue.h"
#include "tools/wire/compose.h"
#include "tools/wire/decode.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace wire;

namespace {

QByteArray shown(const FrameFormat &format, const QByteArray &bytes)
{
    TextBuffer text;
    format.add({kNoTime, Direction::Unknown, bytes}, text);
    return text.bytes();
}

QJsonObject jsonOf(const QByteArray &bytes)
{
    return QJsonDocument::fromJson(shown(*jsonFormat(), bytes)).object();
}

QByteArray lineOf(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// What compose makes of the words, separated by blanks; an error begins with "!".
QByteArray made(FrameKind kind, const QString &words)
{
    const Composed composed = composePairs(kind, words.split(' ', Qt::SkipEmptyParts));
    return composed.error.isEmpty() ? composed.record.bytes.toHex().toUpper()
                                    : '!' + composed.error.toUtf8();
}

/// A GCU frame with different bytes everywhere, 73 of them.
QByteArray answer()
{
    QByteArray frame = QByteArray::fromHex("8A5E49000117");
    for (int i = frame.size(); i < 69; ++i)
        frame.append(char(0x80 + i));
    frame.append(QByteArray::fromHex("2001"));
    appendCrc(frame);
    return frame;
}

} // namespace

/// Frames made of words and taken apart.
class tst_wireframes : public QObject
{
    Q_OBJECT

private slots:
    void commands_data();
    void commands();
    void values_data();
    void values();
    void refuses_data();
    void refuses();
    void everyCommandComesBack();
    void everyNumberComesBackAtItsLimits();
    void brokenFramesComeBack_data();
    void brokenFramesComeBack();
    void editedFrames_data();
    void editedFrames();
    void refusesObjects_data();
    void refusesObjects();
    void takenApart();
    void catalogueNamesAll();
};

void tst_wireframes::commands_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QByteArray>("area");
    const char *const rows[][2] = {
        {"command=idle", "00"},
        {"command=0x20", "2001"},
        {"command=32", "2001"},
        {"command=photo", "2001"},
        {"command=拍照", "2001"},
        {"command=Photo", "2001"},
        {"command=0x40", "40"},
        {"command=指定倍率 camera=1 zoom=-10", "2501F6FF"},
        {"command=stare_guide param.longitude=170.9175332 param.latitude=-36.7364586 height=41.123",
         "1524F2DF6516761AEAA3A00000"},
        {"command=track state=1 x0=0x0201 y0=1027 x1=1541 y1=2055", "1701010102030405060708"},
        {"command=isotherm camera=1 state=2 upper_limit=200 lower_limit=-50", "320102C800CEFF"},
        {"command=temperature_alarm camera=1 state=1 upper_limit=35.9 lower_limit=-0.5",
         "31010123000000"},
        {"area=20FFEE", "20FFEE"},
        {"command=photo area=20FFEE", "20FFEE"},
        {"command=0x40 area=40FF", "40FF"},
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[0]) << QByteArray(row[1]);
}

void tst_wireframes::commands()
{
    QFETCH(QString, words);
    QFETCH(QByteArray, area);
    const QByteArray frame = QByteArray::fromHex(made(FrameKind::Host, words));
    QCOMPARE(frame.mid(69, frame.size() - 71).toHex().toUpper(), area);
    QCOMPARE(frame.size(), quint8(frame[2]) + 0);
    QCOMPARE(verdictOf(frame), Verdict::Ok);
}

void tst_wireframes::values_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("bytes");
    // Single precision rounds a product that double precision leaves below the whole number.
    QTest::newRow("hundredths") << "carrier_roll=-1.15" << 12 << QByteArray("8dff");
    QTest::newRow("unsigned") << "carrier_yaw=359.99" << 16 << QByteArray("9f8c");
    QTest::newRow("thousandths, truncated") << "altitude=1.001" << 46 << QByteArray("e8030000");
    QTest::newRow("thousandths, single") << "relative_height=1.001" << 57 << QByteArray("e9030000");
    QTest::newRow("degrees") << "longitude=-122.5" << 38 << QByteArray("c0fbfbb6");
    QTest::newRow("integer") << "raw.altitude=1001" << 46 << QByteArray("e9030000");
    QTest::newRow("plain") << "yaw_control=-3000" << 9 << QByteArray("48f4");
    QTest::newRow("signed byte") << "version=-2" << 4 << QByteArray("fe");
    QTest::newRow("milliseconds") << "gnss_ms=4294967295" << 51 << QByteArray("ffffffff");
    QTest::newRow("flags") << "flags=0x05" << 11 << QByteArray("05");
    QTest::newRow("digits") << "reserved1=A1A2A3A4A5A6" << 31 << QByteArray("a1a2a3a4a5a6");
    QTest::newRow("length") << "length=1" << 2 << QByteArray("0100");
    QTest::newRow("checksum") << "crc=BEEF" << 70 << QByteArray("beef");
}

void tst_wireframes::values()
{
    QFETCH(QString, word);
    QFETCH(int, offset);
    QFETCH(QByteArray, bytes);
    const QByteArray frame = QByteArray::fromHex(made(FrameKind::Host, word));
    QCOMPARE(frame.size(), 72);
    QCOMPARE(frame.mid(offset, bytes.size() / 2).toHex(), bytes);
}

void tst_wireframes::refuses_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("words");
    QTest::addColumn<QByteArray>("error");
    const char *const named[][2] = {
        {"command=0x40 foo=1", "0x40 takes no foo; area= takes any bytes"},
        {"command=0x40 area=4", "area=4: not in hexadecimal digits"},
        {"command=photo area=2501", "photo, but area=2501 says otherwise"},
        {"command=zoom_ratio camera=2 area=250100F6", "camera=2, but area=250100F6 says otherwise"},
        {"command=stare_guide longitude=120 latitude=30 height=10",
         "stare_guide needs param.longitude"},
        {"raw.carrier_roll=abc", "raw.carrier_roll=abc: not a whole number"},
        {"carrier_roll=1 raw.carrier_roll=2", "carrier_roll is given twice"},
        {"command=palette state=1 param.state=2", "state is given twice"},
        {"command=isotherm camera=1 state=2 upper_limit=40000 lower_limit=0",
         "upper_limit=40000: beyond what the field holds"},
    };
    for (const auto &row : named)
        QTest::newRow(row[0]) << int(FrameKind::Host) << QString(row[0]) << QByteArray(row[1]);
    for (const char *words : {"roll=1",
                              "carrier_roll=x",
                              "carrier_roll=400",
                              "carrier_roll=nan",
                              "roll_control=40000",
                              "roll_control=1.5",
                              "command=no",
                              "command=0x100",
                              "command=zoom_ratio camera=1",
                              "command=photo zoom=1",
                              "zoom=1",
                              "crc=1",
                              "reserved1=A1",
                              "raw.header=1",
                              "raw.version=128",
                              "version=0x-1",
                              "version=0x0x1",
                              "area=2",
                              "command",
                              "feedback=photo"})
        QTest::newRow(words) << int(FrameKind::Host) << QString(words) << QByteArray();
    for (const char *words : {"command=photo", "feedback=photo result=256", "result=0", "mode=fast",
                              "feedback=zoom_ratio param.zoom=1", "area=2000 result=failure"})
        QTest::newRow(words) << int(FrameKind::Gcu) << QString(words) << QByteArray();
}

void tst_wireframes::refuses()
{
    QFETCH(int, kind);
    QFETCH(QString, words);
    const QByteArray text = made(FrameKind(kind), words);
    QVERIFY2(text.startsWith('!'), text);
    QFETCH(QByteArray, error);
    if (!error.isEmpty())
        QCOMPARE(text.mid(1), error);
}

/// By each of its names, with every parameter at both limits, and from its JSON without the digits.
void tst_wireframes::everyCommandComesBack()
{
    for (const CommandRow &row : kCommands) {
        for (const bool least : {true, false}) {
            QByteArray area(1, char(row.code));
            if (row.fixedByte != kNoFixedByte)
                area.append(char(row.fixedByte));
            for (int i = 0; i < paramCount(row); ++i) {
                const ParamKind kind = row.params[std::size_t(i)].kind;
                const bool isSigned = kind != ParamKind::Byte && kind != ParamKind::U16;
                QByteArray bytes(paramSize(kind), least ? '\0' : '\xFF');
                if (isSigned)
                    bytes[bytes.size() - 1] = least ? '\x80' : '\x7F';
                area.append(bytes);
            }
            const QByteArray frame =
                QByteArray::fromHex(made(FrameKind::Host, "area=" + area.toHex()));
            QJsonObject object = jsonOf(frame);
            QJsonObject command = object["command"].toObject();
            QVERIFY2(!command.contains("area"), row.id);
            object.remove("hex");
            const QString chinese = nameOf(row.name, Language::Chinese);
            const QString english = nameOf(row.name, Language::English);
            QVERIFY2(chinese != english || chinese == "OSD" || chinese == "FPV", row.id);
            for (const QString &name : {QString(row.id), chinese, english}) {
                command["name"] = name;
                object["command"] = command;
                QCOMPARE(composeJson(lineOf(object)).record.bytes, frame);
            }
        }
    }
}

void tst_wireframes::everyNumberComesBackAtItsLimits()
{
    const QByteArray host = QByteArray::fromHex(made(FrameKind::Host, "command=photo"));
    const QByteArray bare = QByteArray::fromHex(made(FrameKind::Host, "area="));
    QCOMPARE(bare.size(), 71);
    for (const QByteArray &frame : {host, bare, answer()}) {
        for (const char *pattern : {"00", "ff", "80000000", "ff7f", "ffffff7f", "7f", "80"}) {
            QByteArray bytes = frame;
            const QByteArray repeated = QByteArray::fromHex(pattern).repeated(65);
            bytes.replace(4, 65, repeated.right(65));
            bytes.chop(2);
            appendCrc(bytes);
            QJsonObject object = jsonOf(bytes);
            object.remove("hex");
            QCOMPARE(composeJson(lineOf(object)).record.bytes.toHex(), bytes.toHex());
            QCOMPARE(composeJson(shown(*jsonFormat(), bytes)).record.bytes, bytes);
        }
    }
}

void tst_wireframes::brokenFramesComeBack_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray whole = answer();
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no frame") << QByteArray("noise");
    for (const int size : {2, 3, 4, 30, 69, 70, 71, 72})
        QTest::addRow("cut to %d", size) << whole.left(size);
    for (const char *length : {"0000", "4700", "ffff", "ff7f", "4800", "4a00"})
        QTest::addRow("length %s", length)
            << QByteArray(whole).replace(2, 2, QByteArray::fromHex(length));
    QTest::newRow("checksum") << whole.chopped(1) + '\0';
    QTest::newRow("longer than a byte counts")
        << QByteArray::fromHex(made(FrameKind::Host, "area=" + QString("2F").repeated(300)));
    QTest::newRow("bytes after it") << whole + "more";
}

void tst_wireframes::brokenFramesComeBack()
{
    QFETCH(QByteArray, bytes);
    for (const auto &format :
         {jsonFormat(), csvFormat(), textFormat(Language::Chinese), lineFormat()})
        QVERIFY(shown(*format, bytes).endsWith('\n'));
    if (!bytes.isEmpty())
        QCOMPARE(composeJson(shown(*jsonFormat(), bytes)).record.bytes, bytes);
}

void tst_wireframes::editedFrames_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("bytes");
    const auto ok = QStringLiteral("fields.");
    QTest::newRow("value") << ok + "relative_x" << QJsonValue(-1.5) << 12 << QByteArray("6aff");
    QTest::newRow("integer") << "raw.relative_x" << QJsonValue(7) << 12 << QByteArray("0700");
    QTest::newRow("mode") << ok + "mode" << QJsonValue("lock") << 5 << QByteArray("11");
    QTest::newRow("digits") << ok + "fault_code" << QJsonValue("0102") << 41 << QByteArray("0102");
    QTest::newRow("result") << "feedback.result" << QJsonValue(5) << 70 << QByteArray("05");
    QTest::newRow("code") << "feedback.code" << QJsonValue(0x13) << 69 << QByteArray("13");
    QTest::newRow("state") << "feedback.state" << QJsonValue("success") << 70 << QByteArray("00");
    QTest::newRow("checksum") << ok + "crc" << QJsonValue("BEEF") << 71 << QByteArray("beef");
    QTest::newRow("length") << ok + "length" << QJsonValue(5) << 2 << QByteArray("0500");
    QTest::newRow("raw length") << "raw.length" << QJsonValue(5) << 2 << QByteArray("0500");
    QTest::newRow("area") << "feedback.area" << QJsonValue("1302") << 69 << QByteArray("1302");
}

/// Without the digits in the object nothing shows which of two that say the same was edited.
void tst_wireframes::editedFrames()
{
    QFETCH(QString, path);
    QFETCH(QJsonValue, value);
    QFETCH(int, offset);
    QFETCH(QByteArray, bytes);
    const QStringList keys = path.split('.');
    QJsonObject object = jsonOf(answer());
    QJsonObject inner = object[keys[0]].toObject();
    inner[keys[1]] = value;
    object[keys[0]] = inner;
    QByteArray expected = answer().replace(offset, bytes.size() / 2, QByteArray::fromHex(bytes));
    if (offset < 71) {
        expected.chop(2);
        appendCrc(expected);
    }
    QCOMPARE(composeJson(lineOf(object)).record.bytes.toHex(), expected.toHex());
    object.remove("hex");
    const bool isOnce = path == "fields.fault_code" || path == "fields.crc";
    QCOMPARE(composeJson(lineOf(object)).error.isEmpty(), isOnce);
}

void tst_wireframes::refusesObjects_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("error");
    const char *const rows[][2] = {
        {"[]", "not a JSON object"},
        {"{\"dir\":\"up\"}", "dir: one of tx, rx"},
        {"{\"time\":\"1\"}", "time: a number is needed"},
        {"{\"time\":1e13}", "time: beyond what a recording holds"},
        {"{\"crc\":\"bad\",\"fields\":{\"length\":71,\"crc\":\"0000\"}}",
         "fields.length: where it isn't that of the frame, hex is needed"},
        {"{\"frame\":\"pod\"}", "frame: one of host, gcu, unknown"},
        {"{\"frame\":\"unknown\"}", "frame: host or gcu is needed"},
        {"{\"frame\":\"gcu\",\"hex\":\"A8E5\"}", "frame: hex is of another one"},
        {"{\"hex\":\"11\",\"fields\":{}}", "fields: no such key (frame: unknown)"},
        {"{\"Fields\":{}}", "Fields: no such key (frame: host)"},
        {"{\"feedback\":{}}", "feedback: no such key (frame: host)"},
        {"{\"fields\":[]}", "fields: an object is needed"},
        {"{\"fields\":{\"mode\":1}}", "fields.mode: no such key (frame: host)"},
        {"{\"fields\":{\"version\":null}}", "fields.version: a number is needed"},
        {"{\"fields\":{\"reserved1\":1}}", "fields.reserved1: a text is needed"},
        {"{\"raw\":{\"altitude\":1.5}}", "raw.altitude: a whole number is needed"},
        {"{\"raw\":{\"altitude\":1e11}}", "raw.altitude: a whole number is needed"},
        {"{\"raw\":{\"reserved1\":1}}", "raw.reserved1: no such key (frame: host)"},
        {"{\"command\":{\"params\":{}}}", "command: a name or code is needed"},
        {"{\"command\":{\"name\":\"photo\",\"zoom\":1}}",
         "command.zoom: no such key (frame: host)"},
        {"{\"command\":{\"code\":37,\"params\":{\"zoom\":[]}}}",
         "command.params.zoom: a number is needed"},
        {"{\"frame\":\"gcu\",\"feedback\":{\"state\":\"maybe\"}}",
         "feedback.state: one of success, failure, executing"},
        {"{\"dir\":\"tx\", \"dir\" :\"tx\"}", "dir: is there twice"},
        {"{\"command\":{\"name\":\"photo\"},\"command\":{\"name\":\"photo\"}}",
         "command: is there twice"},
        {"{\"\":{},\"\":{}}", ": is there twice"},
        {"{\"di\\u0072\":\"tx\"}", "di\\u0072: a key without escapes is needed"},
        {"{\"command\":{\"code\":64,\"params\":{\"x\":1}}}",
         "64 takes no x; area= takes any bytes"},
        {"{\"command\":{\"code\":32,\"name\":\"osd\"}}", "command: name osd, but code 32"},
        {"{\"command\":{\"code\":32,\"area\":\"2101\"}}", "32, but area=2101 says otherwise"},
        {"{\"frame\":\"gcu\",\"feedback\":{\"code\":32,\"result\":0,\"state\":\"failure\"}}",
         "feedback: result 0, but state failure"},
        {"{\"fields\":{\"carrier_roll\":2},\"raw\":{\"carrier_roll\":150}}",
         "raw.carrier_roll: 150, but fields.carrier_roll is 2"},
        {"{\"crc\":\"bad\"}", "crc: it is ok; fields.crc has the checksum"},
        {"{\"length\":5}", "length: the frame has 72 bytes; fields.length is what it says"},
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QByteArray(row[0]) << row[1];
    // What was edited beside the digits and can't be had.
    const QByteArray line = shown(*jsonFormat(), answer());
    QTest::newRow("verdict") << QByteArray(line).replace("\"crc\":\"ok\"", "\"crc\":\"bad\"")
                             << "crc: it is ok; fields.crc has the checksum";
    QTest::newRow("size") << QByteArray(line).replace("\"length\":73,\"crc", "\"length\":5,\"crc")
                          << "length: the frame has 73 bytes; fields.length is what it says";
}

void tst_wireframes::refusesObjects()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, error);
    QCOMPARE(composeJson(line).error, error);
}

void tst_wireframes::takenApart()
{
    const QJsonObject frame = jsonOf(answer());
    const QJsonObject fields = frame["fields"].toObject(), raw = frame["raw"].toObject();
    QCOMPARE(fields["mode"].toString(), QString("track"));
    QCOMPARE(raw["mode"].toInt(), 0x17);
    QCOMPARE(fields["camera_status"].toString(), QString("8687"));
    QCOMPARE(raw["absolute_yaw"].toInt(), 0x9796);
    QCOMPARE(fields["absolute_yaw"].toDouble(), 388.06);
    QCOMPARE(fields["target_longitude"].toDouble(), -129.6977745);
    QCOMPARE(frame["feedback"].toObject()["state"].toString(), QString("failure"));

    Record record{-1500000, Direction::Rx, QByteArray("\x8A\x5E", 2)};
    TextBuffer text;
    lineFormat()->add(record, text);
    QCOMPARE(text.bytes(), QByteArray("(-1.500000) rx 8A5E\n"));
    const QString shownText = QString::fromUtf8(shown(*textFormat(Language::Chinese), answer()));
    for (const char *part :
         {"GCU返回数据, 73 B", "跟踪模式", "拍照失败", "388.06 deg", "-1.16223e+06 m", "通过"})
        QVERIFY2(shownText.contains(part), part);
    const QByteArray host = QByteArray::fromHex(made(FrameKind::Host, "flags=5"));
    QVERIFY(shown(*textFormat(Language::English), host).contains("INS valid, Inputs valid"));
    TextBuffer titles;
    csvFormat()->begin(titles);
    QCOMPARE(shown(*csvFormat(), answer()).count(','), titles.bytes().count(','));
    // Host and GCU frame of an unknown code.
    for (const FrameKind kind : {FrameKind::Host, FrameKind::Gcu})
        QVERIFY(shown(*csvFormat(), QByteArray::fromHex(made(kind, "area=4E"))).contains(",0x4E,"));
}

void tst_wireframes::catalogueNamesAll()
{
    const QJsonObject all = QJsonDocument::fromJson(catalogue()).object();
    QCOMPARE(all["host"].toArray().size(), 29);
    QCOMPARE(all["gcu"].toArray().size(), 31);
    QCOMPARE(all["commands"].toArray().size(), 36);
    QCOMPARE(all["modes"].toArray().size(), 8);
    const QJsonObject yaw = all["host"].toArray()[9].toObject();
    QCOMPARE(lineOf(yaw), QByteArray("{\"en\":\"Carrier yaw\",\"factor\":100,\"frame\":\"host\","
                                     "\"id\":\"carrier_yaw\",\"kind\":\"u16\",\"offset\":16,"
                                     "\"size\":2,\"unit\":\"deg\",\"zh\":\"载机偏航角\"}"));
}

NACELLE_TEST_MAIN(tst_wireframes)
#include "tst_wireframes.moc"
