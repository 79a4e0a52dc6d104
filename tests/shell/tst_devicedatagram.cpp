#include "protocol/codec.h"
#include "shell/devicedatagram.h"
#include "tests/support/datagramsample.h"
#include "tests/support/strictmain.h"

#include <vector>

namespace {

QByteArray withTotal(qint16 total)
{
    return kDatagram.left(4) + encodeI16(total) + kDatagram.mid(6);
}

/// A record of type 0 with its right checksum.
QByteArray recordOf(const QByteArray &text, char flag = '\1')
{
    QByteArray record = QByteArray(2, '\0') + encodeI16(qint16(text.size() + 38)) +
                        QByteArray(43, '\0') + flag + text;
    const quint16 crc = crc16Of(record.mid(2));
    return record.append(char(crc >> 8)).append(char(crc));
}

/// The first twelve bytes of a record.
QByteArray headOf(qint16 length, qint16 type)
{
    return QByteArray(2, 'h') + encodeI16(length) + QByteArray(4, 'h') + encodeI16(type) + "hh";
}

void addColumns()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("goesOn");
    QTest::addColumn<QString>("name");
}

} // namespace

class tst_devicedatagram : public QObject
{
    Q_OBJECT

private slots:
    void totals_data();
    void totals();
    void records_data();
    void records();
    void lengths_data();
    void lengths();
};

void tst_devicedatagram::totals_data()
{
    addColumns();
    QTest::newRow("exact") << kDatagram << true << kName;
    QTest::newRow("bytes after T") << kDatagram + "behind" << true << kName;
    QTest::newRow("above the datagram") << withTotal(32767) << true << kName;
    QTest::newRow("negative") << withTotal(-1) << true << kOldName;
    QTest::newRow("most negative") << withTotal(-32768) << true << kOldName;
    QTest::newRow("0") << withTotal(0) << true << kOldName;
    QTest::newRow("5") << withTotal(5) << true << kOldName;
    QTest::newRow("6, nothing") << withTotal(6) << true << kOldName;
    QTest::newRow("a block less") << withTotal(54) << false << kOldName;
    // The last block, filled up with zeros, deciphers to other bytes.
    QTest::newRow("no whole blocks") << withTotal(69) << false << kOldName;
    QTest::newRow("no bytes") << QByteArray() << true << kOldName;
    QTest::newRow("half of T") << kDatagram.left(5) << true << kOldName;
}

void tst_devicedatagram::totals()
{
    QFETCH(QByteArray, bytes);
    QString name = kOldName;
    QTEST(readDeviceDatagram(bytes, name), "goesOn");
    QTEST(name, "name");
}

void tst_devicedatagram::records_data()
{
    addColumns();
    const QByteArray other = withByte(kRecord, 8, 1);
    QTest::newRow("one") << kRecord << true << kName;
    QTest::newRow("padding of a whole block")
        << recordOf("12345678901234") + QByteArray(16, '\x10') << true << "12345678901234";
    QTest::newRow("wrong CRC, high byte") << withByte(kRecord, 61, 0) << false << kOldName;
    QTest::newRow("wrong CRC, low byte") << withByte(kRecord, 62, 0) << false << kOldName;
    QTest::newRow("what the CRC doesn't cover") << withByte(kRecord, 1, 'x') << true << kName;
    QTest::newRow("another type") << other << true << kOldName;
    QTest::newRow("type 0x0100") << withByte(kRecord, 9, 1) << true << kOldName;
    // The place of the CRC is counted from the first record's start, so that a second record
    // passes only where the bytes there hold its CRC, as when it repeats the first; its own CRC
    // isn't looked at.
    QTest::newRow("repeated") << kRecord + kRecord << true << kName;
    QTest::newRow("repeated, own CRC wrong") << kRecord + withByte(kRecord, 61, 0) << true << kName;
    QTest::newRow("second one different") << kRecord + recordOf("other") << false << kName;
    QTest::newRow("after another type") << other + recordOf("other") << false << kOldName;
    QTest::newRow("after one that holds its CRC") << other + kRecord << true << kName;
    QTest::newRow("no text") << recordOf("text", '\0') << true << kOldName;
    QTest::newRow("flag below zero") << recordOf("text", '\xFF') << true << "text";
    QTest::newRow("empty first line") << recordOf("\nrest") << true << "";
    QTest::newRow("text of nothing") << recordOf("") << true << "";
    QTest::newRow("zero in the text")
        << recordOf(QByteArray("a\0b", 3)) << true << QString(QLatin1String("a\0b", 3));
    QTest::newRow("no UTF-8") << recordOf("\xFF\xC3\n") << true << QString(2, QChar(0xFFFD));
    // 257 bytes are covered, of which the checksum takes the first.
    QTest::newRow("more than a byte counts")
        << recordOf(QByteArray(211, 't')) << true << QString(211, QLatin1Char('t'));
}

void tst_devicedatagram::records()
{
    QFETCH(QByteArray, bytes);
    // No zero follows the last byte: the address sanitizer sees what is read beyond it.
    const std::vector<char> exact(bytes.cbegin(), bytes.cend());
    QString name = kOldName;
    QTEST(readDeviceRecords(QByteArray::fromRawData(exact.data(), int(exact.size())), name),
          "goesOn");
    QTEST(name, "name");
}

void tst_devicedatagram::lengths_data()
{
    addColumns();
    const QByteArray rest(60, 'r');
    // Type 0: the place of the CRC has to lie inside, and what is covered.
    for (const int length : {-32768, -13, -12, -11, -10, -9, 100, 32767})
        QTest::addRow("type 0, %d", length)
            << headOf(qint16(length), 0) + rest << false << kOldName;
    QTest::newRow("type 0, 0, CRC right, flag beyond the end")
        << QByteArray(16, '\0') << false << kOldName;
    QTest::newRow("type 0, 0, CRC right throughout") << QByteArray(60, '\0') << false << kOldName;
    QTest::newRow("type 0, below 38, text")
        << QByteArray(12, '\0') + headOf(32767, 1) + rest << true << "";
    // Of an L + 8 below zero the checksum takes 254 or 255 bytes. What passes has an empty text.
    const QByteArray ten = QByteArray::fromHex("8D35") + headOf(-10, 0).mid(2);
    QTest::newRow("type 0, -10, CRC right") << ten + QByteArray(248, 'r') << true << "";
    QTest::newRow("type 0, -10, CRC wrong")
        << headOf(-10, 0) + QByteArray(248, 'r') << false << kOldName;
    QTest::newRow("type 0, -10, to the end") << ten + QByteArray(244, 'r') << true << "";
    QTest::newRow("type 0, -10, a byte short") << ten + QByteArray(243, 'r') << false << kOldName;
    const QByteArray nine = QByteArray::fromHex("00C3F7FF") + headOf(-9, 0).mid(4) +
                            QByteArray(229, 'r') + QByteArray(15, 's');
    QTest::newRow("type 0, -9, CRC right") << nine + "srrr" << true << "";
    QTest::newRow("type 0, -9, to the end") << nine + "s" << true << "";
    QTest::newRow("type 0, -9, a byte short") << nine << false << kOldName;
    // Others are passed over, and may lead past the end, but neither before the start nor in a
    // circle.
    for (const int length : {0, 38, 32767})
        QTest::addRow("another type, %d", length)
            << headOf(qint16(length), 1) + rest << true << kOldName;
    for (const int length : {-12, -13, -32768})
        QTest::addRow("another type, %d", length)
            << headOf(qint16(length), 1) + rest << false << kOldName;
    QTest::newRow("circle of two") << headOf(0, 1) + headOf(-24, 1) + rest << false << kOldName;
    QTest::newRow("circle after the first")
        << headOf(0, 1) + headOf(0, 1) + headOf(-24, 1) + rest << false << kOldName;
    QTest::newRow("back once, then out")
        << headOf(12, 1) + headOf(32767, 1) + headOf(-24, 1) + rest << true << kOldName;
    QTest::newRow("repeated, cut short") << kRecord + kRecord.left(50) << false << kName;
    // Of the second record's L + 8 = 258 bytes the checksum takes two, FA 00: that is FC0A.
    const QByteArray first = headOf(300, 1) + QByteArray(248, 'r') + QByteArray::fromHex("FC0A") +
                             QByteArray(50, 'r') + headOf(250, 0);
    QTest::newRow("text to the end")
        << first + QByteArray(248, 'r') << true << QString(212, QLatin1Char('r'));
    QTest::newRow("text beyond the end") << first + QByteArray(247, 'r') << false << kOldName;
    QTest::newRow("no text, to the flag and no further")
        << first + QByteArray(36, '\0') << true << kOldName;
    QTest::newRow("the flag beyond the end") << first + QByteArray(35, '\0') << false << kOldName;
    // A checksum of 0 doesn't match what isn't there.
    QTest::newRow("CRC 0, cut off")
        << recordOf("name\n" + QByteArray::fromHex("7931")).chopped(2) << false << kOldName;
    QTest::newRow("shorter than a walk takes") << QByteArray(15, '\0') << true << kOldName;
}

void tst_devicedatagram::lengths()
{
    records();
}

NACELLE_TEST_MAIN(tst_devicedatagram)
#include "tst_devicedatagram.moc"
