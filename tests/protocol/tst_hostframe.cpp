#include "foundation/QGlobal.h"
#include "protocol/hostframe.h"
#include "tests/support/strictmain.h"

namespace {

/// A frame whose every field differs from its neighbours: its length, command area and CRC in
/// hexadecimal, divided by blanks.
QByteArray sampleFrame(const char *lengthAreaCrc)
{
    const QList<QByteArray> parts = QByteArray(lengthAreaCrc).split(' ');
    // clang-format off
    return QByteArray::fromHex("A8E5" + parts[0] + "00 01" // version
                               "B80B48F40100"              // 3000, -3000, 1
                               "05"                        // both flags
                               "D204 2EFB 9F8C"            // 1234, -1234, 35999
                               "0100 FEFF 0300"            // accelerations
                               "F401 0CFE 0700"            // velocities
                               "02 A1A2A3A4A5A6 01"
                               "24F2DF65 C0FBFBB6 A3A00000"
                               "0F B00C0615 E608 10270000"
                               "B1B2B3B4B5B6B7B8" + parts[1] + parts[2]);
    // clang-format on
}

} // namespace

class tst_hostframe : public QObject
{
    Q_OBJECT

private slots:
    void parse();
    void packKeepsEveryByte_data();
    void packKeepsEveryByte();
    void payloadMembers();
    void parseCutFrames();
    void buildFromTexts();
    void saidLengthDecidesSlices();
    void byteLabels();
};

void tst_hostframe::parse()
{
    HostFrame r;
    parseHostFrame(sampleFrame("49 2001 8E5F"), r);
    const QVector<qint64> values = {
        r.header0,        r.header1,          r.length,          r.version,
        r.rollControl,    r.pitchControl,     r.yawControl,      r.controlValid,
        r.inertialValid,  r.carrierRoll,      r.carrierPitch,    r.carrierYaw,
        r.accelNorth,     r.accelEast,        r.accelUp,         r.velocityNorth,
        r.velocityEast,   r.velocityUp,       r.subFrameRequest, r.reserved1[5],
        r.subFrameHeader, r.longitude,        r.latitude,        r.altitude,
        r.satellites,     r.gnssMilliseconds, r.gnssWeek,        r.relativeHeight,
        r.reserved2[0],   r.commandCode,      r.param0};
    const QVector<qint64> expected = {
        0xA8,        0xE5,  73, 1,         3000, -3000, 1,    1,    1,    1234, -1234,
        35999,       1,     -2, 3,         500,  -500,  7,    2,    0xA6, 1,    1709175332,
        -1225000000, 41123, 15, 352718000, 2278, 10000, 0xB1, 0x20, 1};
    QCOMPARE(values, expected);
    QCOMPARE(r.commandName, QByteArray::fromHex("C5C4D5D5")); // "拍照" in GBK
    QVERIFY(r.crcValid);

    parseHostFrame(sampleFrame("49 2001 8E5E"), r);
    QVERIFY(!r.crcValid);
}

void tst_hostframe::packKeepsEveryByte_data()
{
    // clang-format off
    const char *const frames[] = {
        "48 00 ABFC", "48 01 BBDD", "48 03 9B9F", "49 0605 629B", "49 0701 112E",
        "49 08F8 7F26", "48 10 B9CD", "48 11 A9EC", "48 12 998F", "48 13 89AE", "48 14 F949",
        "54 1524F2DF6516EEAA16A3A00000 84A7", "48 16 D90B", "52 1701010203040506070809 6285",
        "4D 1A01640000C8 5FB6", "4E 1B02FF7F018003 B776", "48 1C 7841", "49 2001 8E5F",
        "49 2101 BD6E", "49 2201 E83D", "49 2302 EB6F", "49 2401 429B", "4B 2501F6FF 881A",
        "49 2601 24F9", "4A 2A0203 135D", "4A 2B0101 517C", "52 3001010102030405060708 5FB5",
        "4E 310101C8003200 CB10", "4E 320102C8003200 FD40", "4E 33010188138813 0CC8",
        "49 7301 D5B3", "49 7404 1C81", "49 7501 7F15", "49 7601 2A46", "49 80FF 9DF0",
        "49 8102 9073", "48 02 8BBE", "48 FF B50C"};
    // clang-format on
    QTest::addColumn<QByteArray>("frame");
    for (const char *frame : frames)
        QTest::newRow(frame) << sampleFrame(frame);
}

void tst_hostframe::packKeepsEveryByte()
{
    QFETCH(QByteArray, frame);
    HostFrame record;
    parseHostFrame(frame, record);
    QVERIFY(record.crcValid);
    QByteArray packed(frame.size(), '\0');
    QCOMPARE(int(packHostFrame(record, packed)), frame.size());
    QCOMPARE(packed, frame);
}

/// Where the record keeps a payload: both ways of it could be wrong in the same way.
void tst_hostframe::payloadMembers()
{
    HostFrame r;
    parseHostFrame(sampleFrame("52 1701010203040506070809 6285"), r);
    QCOMPARE((QVector<int>{r.param0, r.param1, r.word0, r.word1, r.word2, r.word3}),
             (QVector<int>{1, 1, 0x0302, 0x0504, 0x0706, 0x0908}));
    parseHostFrame(sampleFrame("4E 1B02FF7F018003 B776"), r);
    QCOMPARE((QVector<int>{r.param0, r.word0, r.word1, r.word2}),
             (QVector<int>{2, 0x7FFF, 0x8001, 3}));
    parseHostFrame(sampleFrame("54 1524F2DF6516EEAA16A3A00000 84A7"), r);
    QCOMPARE((QVector<int>{r.long0, r.long1, r.long2}),
             (QVector<int>{1709175332, 380300822, 41123}));
    parseHostFrame(sampleFrame("4A 2A0203 135D"), r);
    QCOMPARE((QVector<int>{r.param0, r.param1}), (QVector<int>{2, 3}));
}

void tst_hostframe::parseCutFrames()
{
    const QByteArray whole = sampleFrame("54 1524F2DF6516EEAA16A3A00000 84A7");
    for (int size = 0; size <= whole.size(); ++size) {
        const QByteArray cut = whole.left(size);
        HostFrame record;
        parseHostFrame(cut, record);
        QCOMPARE(record.crcValid, size == whole.size());
        QByteArray packed(size, '\0');
        packHostFrame(record, packed);
        QCOMPARE(packed.left(qMin(size, 37)), cut.left(37));
    }
    // Of 2 bytes the CRC, 0, takes the header's place.
    for (const char *head :
         {"A8E50000", "A8E50100", "00000200", "A8E5FFFF", "A8E50080", "A8E5FF7F"}) {
        const QByteArray expected = QByteArray::fromHex(head);
        HostFrame record;
        parseHostFrame("\xA8\xE5" + expected.mid(2) + QByteArray(80, '\x33'), record);
        QByteArray packed(12, '\0');
        packHostFrame(record, packed);
        QCOMPARE(packed.left(4), expected);
    }
}

void tst_hostframe::buildFromTexts()
{
    HostTexts texts;
    // clang-format off
    const QStringList values = {"", "72", "1", "0", "0", "0", "", "0", "0", "0", "0", "0", "0", "0",
                                "0", "0", "1", "", "1", "170.9175332", "38.0300822", "41.123", "15",
                                "352718000", "2278", "0.251", "", "", ""};
    // clang-format on
    for (int i = 0; i < values.size(); ++i)
        texts.values[std::size_t(i)] = values.at(i);
    texts.inertialValid = true;
    texts.command = QStringLiteral("00 ");
    // In double precision the relative height would be 251.
    const QByteArray expected =
        QByteArray::fromHex("A8E5480001 000000000000 01") + QByteArray(18, '\0') +
        QByteArray::fromHex(
            "01000000000000 01 24F2DF65 16EEAA16 A3A00000 0F B00C0615 E608 FA000000") +
        QByteArray(9, '\0') + QByteArray::fromHex("5E1F");
    QCOMPARE(buildHostFrame(texts), expected);

    // The length is what the form says, and what doesn't parse is 0.
    texts.values[1] = QStringLiteral("40000");
    texts.values[2] = QStringLiteral("x");
    texts.controlValid = true;
    texts.command.clear();
    const QByteArray frame = buildHostFrame(texts);
    QCOMPARE(frame.size(), 71);
    QCOMPARE(frame.left(5), QByteArray::fromHex("A8E5409C00"));
    QCOMPARE(int(frame.at(11)), 5);
}

void tst_hostframe::saidLengthDecidesSlices()
{
    const protocol::Field &area = kHostRows[kHostRows.size() - 2].field;
    const protocol::Field &crc = kHostRows.back().field;
    QByteArray frame = sampleFrame("49 2001 8E5F");
    QCOMPARE(fieldSlice(area, frame), QByteArray::fromHex("2001"));
    QCOMPARE(fieldSlice(crc, frame), frame.right(2));
    QVERIFY(crcMatches(frame));
    frame[2] = 72;
    QCOMPARE(fieldSlice(area, frame), QByteArray::fromHex("20"));
    QCOMPARE(fieldSlice(crc, frame), frame.mid(70, 2));
    QVERIFY(!crcMatches(frame));
    frame[2] = 127;
    QCOMPARE(fieldSlice(area, frame), frame.mid(69));
    QCOMPARE(fieldSlice(crc, frame), QByteArray());
    // Below 71 the count is negative, which takes the rest.
    frame[2] = 70;
    QCOMPARE(fieldSlice(area, frame), frame.mid(69));
    QCOMPARE(fieldSlice(crc, frame), frame.mid(68, 2));
}

void tst_hostframe::byteLabels()
{
    QStringList labels;
    for (const std::size_t row : {0, 2, 19, 27, 28})
        labels << byteLabel(kHostRows[row].field);
    QCOMPARE(labels, (QStringList{"0～1", "4", "38～41", "69～S-3", "S-2～S-1"}));
}

NACELLE_TEST_MAIN(tst_hostframe)
#include "tst_hostframe.moc"
