#include "foundation/QGlobal.h"
#include "protocol/codec.h"
#include "protocol/commands.h"
#include "protocol/hostframe.h"
#include "tests/support/strictmain.h"

namespace {

/// A frame whose every field differs from its neighbours, command area and CRC appended.
QByteArray sampleFrame(const QByteArray &command)
{
    // clang-format off
    QByteArray frame = QByteArray::fromHex("A8E5") + encodeU16(quint16(71 + command.size())) +
                       QByteArray::fromHex("01"               // version
                                           "B80B48F40100"     // 3000, -3000, 1
                                           "05"               // both flags
                                           "D204 2EFB 9F8C"   // 1234, -1234, 35999
                                           "0100 FEFF 0300"   // accelerations
                                           "F401 0CFE 0700"   // velocities
                                           "02 A1A2A3A4A5A6 01"
                                           "24F2DF65 C0FBFBB6 A3A00000"
                                           "0F B00C0615 E608 10270000"
                                           "B1B2B3B4B5B6B7B8");
    // clang-format on
    frame += command;
    appendCrc(frame);
    return frame;
}

} // namespace

class tst_hostframe : public QObject
{
    Q_OBJECT

private slots:
    void parse();
    void packKeepsEveryByte_data();
    void packKeepsEveryByte();
    void parseCutFrames();
    void buildFromTexts();
    void saidLengthDecidesSlices();
};

void tst_hostframe::parse()
{
    HostFrame record;
    parseHostFrame(sampleFrame(QByteArray::fromHex("2001")), record);
    QCOMPARE(int(record.header0), 0xA8);
    QCOMPARE(int(record.header1), 0xE5);
    QCOMPARE(int(record.length), 73);
    QCOMPARE(int(record.version), 1);
    QCOMPARE(int(record.rollControl), 3000);
    QCOMPARE(int(record.pitchControl), -3000);
    QCOMPARE(int(record.yawControl), 1);
    QVERIFY(record.controlValid && record.inertialValid);
    QCOMPARE(int(record.carrierRoll), 1234);
    QCOMPARE(int(record.carrierPitch), -1234);
    QCOMPARE(int(record.carrierYaw), 35999);
    QCOMPARE(int(record.accelNorth), 1);
    QCOMPARE(int(record.accelEast), -2);
    QCOMPARE(int(record.accelUp), 3);
    QCOMPARE(int(record.velocityNorth), 500);
    QCOMPARE(int(record.velocityEast), -500);
    QCOMPARE(int(record.velocityUp), 7);
    QCOMPARE(int(record.subFrameRequest), 2);
    QCOMPARE(int(record.reserved1[5]), 0xA6);
    QCOMPARE(int(record.subFrameHeader), 1);
    QCOMPARE(record.longitude, 1709175332);
    QCOMPARE(record.latitude, -1225000000);
    QCOMPARE(record.altitude, 41123);
    QCOMPARE(int(record.satellites), 15);
    QCOMPARE(record.gnssMilliseconds, 352718000u);
    QCOMPARE(int(record.gnssWeek), 2278);
    QCOMPARE(record.relativeHeight, 10000);
    QCOMPARE(int(record.reserved2[0]), 0xB1);
    QCOMPARE(record.commandCode, 0x20u);
    QCOMPARE(record.commandName, QByteArray::fromHex("C5C4D5D5")); // "拍照" in GBK
    QCOMPARE(int(record.param0), 1);
    QVERIFY(record.crcValid);

    QByteArray broken = sampleFrame(QByteArray::fromHex("2001"));
    broken[40] = 0;
    parseHostFrame(broken, record);
    QVERIFY(!record.crcValid);
}

void tst_hostframe::packKeepsEveryByte_data()
{
    QTest::addColumn<QByteArray>("command");
    // clang-format off
    const char *commands[] = {"00", "01", "03", "0605", "0701", "08F8", "10", "11", "12", "13", "14",
                              "1524F2DF6516EEAA16A3A00000", "16", "17010101020304050607080910",
                              "1A0164 00C800", "1B02FF7F018003", "1C", "2001", "2101", "2201",
                              "2302", "2401", "2501F6FF", "2601", "2A0203", "2B0101",
                              "300101 0102030405060708", "310101C8003200", "320102C8003200",
                              "33010188138813", "7301", "7404", "7501", "7601", "80FF", "8102",
                              "02", "FF"};
    // clang-format on
    for (const char *command : commands)
        QTest::newRow(command) << QByteArray::fromHex(command);
}

void tst_hostframe::packKeepsEveryByte()
{
    QFETCH(QByteArray, command);
    // Tracking's eleventh byte: the table ends its payload at offset 79.
    const QByteArray area = quint8(command.at(0)) == 0x17 ? command.left(11) : command;
    const QByteArray frame = sampleFrame(area);
    HostFrame record;
    parseHostFrame(frame, record);
    QVERIFY(record.crcValid);
    QByteArray packed(frame.size(), '\0');
    QCOMPARE(int(packHostFrame(record, packed)), frame.size());
    QCOMPARE(packed, frame);
}

void tst_hostframe::parseCutFrames()
{
    const QByteArray whole = sampleFrame(QByteArray::fromHex("1524F2DF6516EEAA16A3A00000"));
    for (int size = 0; size <= whole.size(); ++size) {
        const QByteArray cut = whole.left(size);
        HostFrame record;
        parseHostFrame(cut, record);
        QCOMPARE(record.crcValid, size == whole.size());
        QByteArray packed(size, '\0');
        packHostFrame(record, packed);
        QCOMPARE(packed.left(qMin(size, 37)), cut.left(37));
    }
    for (const char *length : {"0000", "0100", "FFFF", "0080", "FF7F"}) {
        HostFrame record;
        parseHostFrame(QByteArray::fromHex("A8E5") + QByteArray::fromHex(length) +
                           QByteArray(80, '\x33'),
                       record);
        QByteArray packed(12, '\0');
        packHostFrame(record, packed);
        QCOMPARE(packed.mid(2, 2), QByteArray::fromHex(length));
    }
}

void tst_hostframe::buildFromTexts()
{
    HostTexts texts;
    // clang-format off
    const QStringList values = {"", "72", "1", "0", "0", "0", "", "0", "0", "0", "0", "0", "0", "0",
                                "0", "0", "1", "", "1", "170.9175332", "38.0300822", "41.123", "15",
                                "352718000", "2278", "10", "", "", ""};
    // clang-format on
    for (int i = 0; i < values.size(); ++i)
        texts.values[std::size_t(i)] = values.at(i);
    texts.inertialValid = true;
    texts.command = QStringLiteral("00 ");
    const QByteArray expected =
        QByteArray::fromHex("A8E5480001 000000000000 01") + QByteArray(18, '\0') +
        QByteArray::fromHex(
            "01000000000000 01 24F2DF65 16EEAA16 A3A00000 0F B00C0615 E608 10270000") +
        QByteArray(9, '\0') + QByteArray::fromHex("7B70");
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
    const Field &area = kHostRows[kHostRows.size() - 2].field;
    const Field &crc = kHostRows.back().field;
    QByteArray frame = sampleFrame(QByteArray::fromHex("2001"));
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

NACELLE_TEST_MAIN(tst_hostframe)
#include "tst_hostframe.moc"
