#include "protocol/codec.h"
#include "protocol/fields.h"
#include "tests/support/strictmain.h"

#include <QtEndian>

// Ahead of its use: an optimised build looks for it there.
Q_DECLARE_METATYPE(protocol::Scale)

class tst_codec : public QObject
{
    Q_OBJECT

private slots:
    void crc_data();
    void crc();
    void crcCountsLengthModulo256();
    void integersAreLittleEndian();
    void shortArraysReadAsZero();
    void setBitLeavesTheOthers();
    void hexText();
    void hexTextToBytesPairsFromTheEnd_data();
    void hexTextToBytesPairsFromTheEnd();
    void scaledFields_data();
    void scaledFields();
};

void tst_codec::crc_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("expected");
    QTest::newRow("nothing") << QByteArray() << 0x0000;
    QTest::newRow("check value") << QByteArray("123456789") << 0x31C3;
    QByteArray empty =
        QByteArray::fromHex("A8E5480001") + QByteArray(25, '\0') + '\1' + QByteArray(39, '\0');
    QTest::newRow("empty command") << empty << 0x28B2;
}

void tst_codec::crc()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, expected);
    QCOMPARE(int(crc16(bytes.constData(), quint8(bytes.size()))), expected);
    bytes.append(char(expected >> 8)).append(char(expected));
    QByteArray appended = bytes.left(bytes.size() - 2);
    appendCrc(appended);
    QCOMPARE(appended, bytes);
}

void tst_codec::crcCountsLengthModulo256()
{
    QCOMPARE(int(crc16Of(QByteArray("123456789") + QByteArray(256, 'x'))), 0x31C3);
}

void tst_codec::integersAreLittleEndian()
{
    QCOMPARE(encodeI32(-1225000000), QByteArray::fromHex("C0FBFBB6"));
    QCOMPARE(encodeU16(35999), QByteArray::fromHex("9F8C"));
    QCOMPARE(encodeI16(qint16(40000)), QByteArray::fromHex("409C"));
    QCOMPARE(decodeI16(QByteArray::fromHex("409C")), qint16(-25536));
    QCOMPARE(decodeU16(QByteArray::fromHex("9F8C")), quint16(35999));
    QCOMPARE(decodeI32(QByteArray::fromHex("C0FBFBB6FF")), -1225000000);
    QCOMPARE(decodeU32(QByteArray::fromHex("B00C0615")), 352718000u);
    QCOMPARE(crc16Bytes(0x28B2), QByteArray::fromHex("B228"));

    QByteArray buffer(9, '\x55');
    writeI16At(buffer.data(), 1, -7);
    writeU32At(buffer.data(), 3, 0x01020304u);
    QCOMPARE(buffer, QByteArray::fromHex("55F9FF040302015555"));
    QCOMPARE(readI16(buffer.constData() + 1), qint16(-7));
    QCOMPARE(readU16(buffer.constData() + 1), quint16(0xFFF9));
    QCOMPARE(readI32(buffer.constData() + 3), 0x01020304);
    writeU16At(buffer.data(), 0, 0xABCD);
    writeI32At(buffer.data(), 5, -2);
    QCOMPARE(buffer, QByteArray::fromHex("CDABFF0403FEFFFFFF"));
    QCOMPARE(readU32(buffer.constData() + 5), 0xFFFFFFFEu);
}

void tst_codec::shortArraysReadAsZero()
{
    QCOMPARE(decodeU16(QByteArray("\xFF")), quint16(255));
    QCOMPARE(decodeI16(QByteArray()), qint16(0));
    QCOMPARE(decodeI32(QByteArray("\x01\x02")), 0x0201);
    // A view without a terminating zero must not be read beyond its end.
    const char raw[] = {'\x11', '\x22'};
    QCOMPARE(decodeU16(QByteArray::fromRawData(raw, 1)), quint16(0x11));
    QCOMPARE(int(byteAt(QByteArray("a"), 1)), 0);
    QCOMPARE(int(byteAt(QByteArray("a"), -1)), 0);
}

void tst_codec::setBitLeavesTheOthers()
{
    quint8 byte = 0b01010001;
    setBit(&byte, 2, true);
    QCOMPARE(int(byte), 0b01010101);
    setBit(&byte, 0, false);
    QCOMPARE(int(byte), 0b01010100);
    setBit(&byte, 7, true);
    QCOMPARE(int(byte), 0b11010100);
}

void tst_codec::hexText()
{
    QCOMPARE(toHexText(QByteArray::fromHex("A805")), QStringLiteral("A8 05 "));
    QCOMPARE(toHexText(QByteArray()), QString());
    QCOMPARE(toHexText(QByteArray(72, '\0')).size(), 216);
    QCOMPARE(hexDigits(QByteArray::fromHex("A80500FF")), QStringLiteral("A80500FF"));
}

void tst_codec::hexTextToBytesPairsFromTheEnd_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("spaced") << "A8 05 " << QByteArray::fromHex("A805");
    QTest::newRow("lower case") << "a8e5" << QByteArray::fromHex("A8E5");
    QTest::newRow("odd number of digits shifts") << "A8 5 11" << QByteArray("\x0A\x85\x11");
    QTest::newRow("other characters are dropped")
        << QStringLiteral("A8\n中0G5") << QByteArray("\xA8\x05");
    QTest::newRow("nothing") << "" << QByteArray();
}

void tst_codec::hexTextToBytesPairsFromTheEnd()
{
    QFETCH(QString, text);
    QTEST(hexTextToBytes(text), "bytes");
}

void tst_codec::scaledFields_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<protocol::Scale>("scale");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](FieldKind kind, protocol::Scale scale, const char *text, const char *hex) {
        QTest::addRow("%s as kind %d, K %g", text, int(kind), scale.k)
            << int(kind) << scale << QString::fromLatin1(text) << QByteArray::fromHex(hex);
    };
    row(FieldKind::I32, kGeoDegrees, "170.9175332", "24F2DF65");
    row(FieldKind::I32, kGeoDegrees, "38.0300822", "16EEAA16");
    row(FieldKind::I32, kGeoDegrees, "-122.5", "C0FBFBB6");
    row(FieldKind::I32, kThousandths, "41.123", "A3A00000");
    row(FieldKind::I32, kThousandthsSingle, "0.251", "FA000000"); // 251 in double precision
    row(FieldKind::I16, kHundredths, "-0.07", "F9FF");
    row(FieldKind::I16, kHundredths, "400", "409C");
    row(FieldKind::U16, kHundredths, "359.99", "9F8C");
    // In double precision 0.53 would give 53.
    row(FieldKind::I16, kHundredths, "0.53", "3400");
    row(FieldKind::I16, kHundredths, "0.29", "1D00");
    row(FieldKind::I16, kHundredths, "2.12", "D300");
    // Beyond 32 bits the low ones stay: 500 degrees are 5,000,000,000.
    row(FieldKind::I32, kGeoDegrees, "500", "00F2052A");
    row(FieldKind::I32, kThousandths, "inf", "00000000");
    row(FieldKind::I32, kThousandths, "nan", "00000000");
    row(FieldKind::I16, kHundredths, "1e39", "0000");
    row(FieldKind::I32, kThousandths, "12,5", "00000000");
    row(FieldKind::I16, kPlain, "2278", "E608");
    row(FieldKind::I16, kPlain, "32768", "0000");
    row(FieldKind::U32, kPlain, "352718000", "B00C0615");
    row(FieldKind::U32, kPlain, "-1", "00000000");
    row(FieldKind::Byte, kPlain, "300", "2C");
    row(FieldKind::Byte, kPlain, "-1", "FF");
    row(FieldKind::Byte, kPlain, "", "00");
}

void tst_codec::scaledFields()
{
    QFETCH(int, kind);
    QFETCH(protocol::Scale, scale);
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    const protocol::Field field{0, bytes.size(), FieldKind(kind), scale};
    QCOMPARE(fieldBytes(field, text), bytes);
}

NACELLE_TEST_MAIN(tst_codec)
#include "tst_codec.moc"
