#include "foundation/QAESEncryption.h"
#include "tests/support/strictmain.h"

#include <QLoggingCategory>

namespace {

using Aes = QAESEncryption;

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

const QByteArray kVector = hex("000102030405060708090a0b0c0d0e0f");

/// Keys and text of NIST SP 800-38A, appendix F; the keys are those of FIPS 197, appendix A, too.
const QByteArray kKeys[] = {hex("2b7e151628aed2a6abf7158809cf4f3c"),
                            hex("8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b"),
                            hex("603deb1015ca71be2b73aef0857d7781"
                                "1f352c073b6108d72d9810a30914dff4")};
const QByteArray kText = hex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                             "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");

/// The one block of FIPS 197, appendix C.
const QByteArray kBlock = hex("00112233445566778899aabbccddeeff");

/// A text without a zero, a 0x80 or a small byte at its end.
QByteArray textOf(int size)
{
    return QByteArray(size, 'x');
}

/// What makes whole blocks of a text of up to 47 bytes.
QByteArray appendedTo(int size, Aes::Padding padding)
{
    const int missing = (48 - size) % 16;
    if (padding == Aes::PKCS7)
        return missing == 0 ? QByteArray(16, '\x10') : QByteArray(missing, char(missing));
    const QByteArray zeros(15, '\0');
    return (padding == Aes::ISO ? '\x80' + zeros : zeros).left(missing);
}

/// What `work` writes to the log.
template <typename Work>
QStringList loggedBy(Work work)
{
    static QStringList lines;
    lines.clear();
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
    const QtMessageHandler before = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &line) { lines << line; });
    work();
    qInstallMessageHandler(before);
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    return lines;
}

} // namespace

class tst_QAESEncryption : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void exampleVectors_data();
    void exampleVectors();
    void modes_data();
    void modes();
    void schedules_data();
    void schedules();
    void unknownSettings();
    void keysOfOtherSizes();
    void encodeTellsItsKeys();
    void vectors_data();
    void vectors();
    void paddings_data();
    void paddings();
    void paddingAtEverySize();
    void removal_data();
    void removal();
    void lastBlockCutShort_data();
    void lastBlockCutShort();
};

/// The keys of each `encode` would fill the log.
void tst_QAESEncryption::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

void tst_QAESEncryption::exampleVectors_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("coded");
    QTest::newRow("FIPS 197, C.1") << int(Aes::AES_128) << hex("000102030405060708090a0b0c0d0e0f")
                                   << hex("69c4e0d86a7b0430d8cdb78070b4c55a");
    QTest::newRow("FIPS 197, C.2")
        << int(Aes::AES_192) << hex("000102030405060708090a0b0c0d0e0f1011121314151617")
        << hex("dda97ca4864cdfe06eaf70a0ec0d7191");
    QTest::newRow("FIPS 197, C.3") << int(Aes::AES_256)
                                   << hex("000102030405060708090a0b0c0d0e0f"
                                          "101112131415161718191a1b1c1d1e1f")
                                   << hex("8ea2b7ca516745bfeafc49904b496089");
}

void tst_QAESEncryption::exampleVectors()
{
    QFETCH(int, level);
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, coded);
    Aes aes{Aes::Aes(level), Aes::ECB, Aes::ZERO};
    QCOMPARE(aes.encode(kBlock, key, QByteArray()), coded);
    QCOMPARE(aes.decode(coded, key, QByteArray()), kBlock);
}

void tst_QAESEncryption::modes_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QByteArray>("coded");
    const auto row = [](const char *name, int level, int mode, const char *coded) {
        QTest::newRow(name) << level << mode << hex(coded);
    };
    // NIST SP 800-38A, appendix F; CFB is the form with whole blocks, CFB128.
    row("F.1.1 ECB-AES128", Aes::AES_128, Aes::ECB,
        "3ad77bb40d7a3660a89ecaf32466ef97f5d3d58503b9699de785895a96fdbaaf"
        "43b1cd7f598ece23881b00e3ed0306887b0c785e27e8ad3f8223207104725dd4");
    row("F.1.3 ECB-AES192", Aes::AES_192, Aes::ECB,
        "bd334f1d6e45f25ff712a214571fa5cc974104846d0ad3ad7734ecb3ecee4eef"
        "ef7afd2270e2e60adce0ba2face6444e9a4b41ba738d6c72fb16691603c18e0e");
    row("F.1.5 ECB-AES256", Aes::AES_256, Aes::ECB,
        "f3eed1bdb5d2a03c064b5a7e3db181f8591ccb10d410ed26dc5ba74a31362870"
        "b6ed21b99ca6f4f9f153e7b1beafed1d23304b7a39f9f3ff067d8d8f9e24ecc7");
    row("F.2.1 CBC-AES128", Aes::AES_128, Aes::CBC,
        "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
        "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7");
    row("F.2.3 CBC-AES192", Aes::AES_192, Aes::CBC,
        "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"
        "571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd");
    row("F.2.5 CBC-AES256", Aes::AES_256, Aes::CBC,
        "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
        "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b");
    row("F.3.13 CFB128-AES128", Aes::AES_128, Aes::CFB,
        "3b3fd92eb72dad20333449f8e83cfb4ac8a64537a0b3a93fcde3cdad9f1ce58b"
        "26751f67a3cbb140b1808cf187a4f4dfc04b05357c5d1c0eeac4c66f9ff7f2e6");
    row("F.3.15 CFB128-AES192", Aes::AES_192, Aes::CFB,
        "cdc80d6fddf18cab34c25909c99a417467ce7f7f81173621961a2b70171d3d7a"
        "2e1e8a1dd59b88b1c8e60fed1efac4c9c05f9f9ca9834fa042ae8fba584b09ff");
    row("F.3.17 CFB128-AES256", Aes::AES_256, Aes::CFB,
        "dc7e84bfda79164b7ecd8486985d386039ffed143b28b1c832113c6331e5407b"
        "df10132415e54b92a13ed0a8267ae2f975a385741ab9cef82031623d55b1e471");
    row("F.4.1 OFB-AES128", Aes::AES_128, Aes::OFB,
        "3b3fd92eb72dad20333449f8e83cfb4a7789508d16918f03f53c52dac54ed825"
        "9740051e9c5fecf64344f7a82260edcc304c6528f659c77866a510d9c1d6ae5e");
    row("F.4.3 OFB-AES192", Aes::AES_192, Aes::OFB,
        "cdc80d6fddf18cab34c25909c99a4174fcc28b8d4c63837c09e81700c1100401"
        "8d9a9aeac0f6596f559c6d4daf59a5f26d9f200857ca6c3e9cac524bd9acc92a");
    row("F.4.5 OFB-AES256", Aes::AES_256, Aes::OFB,
        "dc7e84bfda79164b7ecd8486985d38604febdc6740d20b3ac88f6ad82a4fb08d"
        "71ab47a086e86eedf39d1c5bba97c4080126141d67f37be8538f5a8be740e484");
}

void tst_QAESEncryption::modes()
{
    QFETCH(int, level);
    QFETCH(int, mode);
    QFETCH(QByteArray, coded);
    const auto aes = Aes::Aes(level);
    QCOMPARE(Aes::Crypt(aes, Aes::Mode(mode), kText, kKeys[level], kVector, Aes::ZERO), coded);
    QCOMPARE(Aes::Decrypt(aes, Aes::Mode(mode), coded, kKeys[level], kVector, Aes::ZERO), kText);
}

void tst_QAESEncryption::schedules_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("end");
    // Last words of FIPS 197, appendix A. One byte more follows the second level's, a zero.
    QTest::newRow("A.1") << int(Aes::AES_128) << 176 << hex("b6630ca6");
    QTest::newRow("A.2") << int(Aes::AES_192) << 209 << hex("0100220200");
    QTest::newRow("A.3") << int(Aes::AES_256) << 240 << hex("706c631e");
}

void tst_QAESEncryption::schedules()
{
    QFETCH(int, level);
    QFETCH(QByteArray, end);
    const QByteArray keys = Aes::ExpandKey(Aes::Aes(level), Aes::CBC, kKeys[level]);
    QTEST(keys.size(), "size");
    QVERIFY(keys.startsWith(kKeys[level]));
    QCOMPARE(keys.right(end.size()), end);
}

void tst_QAESEncryption::unknownSettings()
{
    const QByteArray key = hex("000102030405060708090a0b0c0d0e0f");
    const QByteArray coded = hex("69c4e0d86a7b0430d8cdb78070b4c55a");
    for (const int value : {-1, 4}) {
        Aes aes{Aes::Aes(qMin(value, 3)), Aes::Mode(value), Aes::Padding(qMin(value, 3))};
        QCOMPARE(aes.encode(kBlock, key, kVector), coded);
        QCOMPARE(aes.decode(coded, key, kVector), kBlock);
        QCOMPARE(aes.encode(kBlock, key, QByteArray()), QByteArray());
        QCOMPARE(aes.decode(aes.encode("text", key, kVector), key, kVector),
                 "text" + QByteArray(12, '\0'));
        QCOMPARE(aes.removePadding(hex("41800000")), hex("41800000"));
    }
}

void tst_QAESEncryption::keysOfOtherSizes()
{
    const auto schedule = [](const QByteArray &key) {
        return Aes::ExpandKey(Aes::AES_128, Aes::ECB, key);
    };
    QCOMPARE(schedule(kKeys[0] + "more"), schedule(kKeys[0]));
    QCOMPARE(schedule(hex("2b7e")), schedule(hex("2b7e") + QByteArray(14, '\0')));
    QCOMPARE(schedule(QByteArray()), schedule(QByteArray(16, '\0')));
}

/// `encode` writes its keys to the debug log, `decode` writes nothing.
void tst_QAESEncryption::encodeTellsItsKeys()
{
    Aes aes{Aes::AES_128, Aes::ECB, Aes::PKCS7};
    QByteArray coded;
    // The schedule of FIPS 197, A.1, and the key it is made of.
    const QString keys =
        QStringLiteral("2b7e151628aed2a6abf7158809cf4f3ca0fafe1788542cb123a339392a6c7605"
                       "f2c295f27a96b9435935807a7359f67f3d80477d4716fe3e1e237e446d7a883b"
                       "ef44a541a8525b7fb671253bdb0bad00d4d1c6f87c839d87caf2b8bc11f915bc"
                       "6d88a37a110b3efddbf98641ca0093fd4e54f70e5f5fc9f384a64fb24ea6dc4f"
                       "ead27321b58dbad2312bf5607f8d292fac7766f319fadc2128d12941575c006e"
                       "d014f9a8c9ee2589e13f0cc8b6630ca6 2b7e151628aed2a6abf7158809cf4f3c");
    QCOMPARE(loggedBy([&] { coded = aes.encode(QByteArray(), kKeys[0], QByteArray()); }),
             QStringList(keys));
    QCOMPARE(loggedBy([&] { aes.decode(coded, kKeys[0], QByteArray()); }), QStringList());
}

void tst_QAESEncryption::vectors_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("fits");
    for (const int size : {0, 15, 16, 17})
        QTest::addRow("ECB, %d", size) << int(Aes::ECB) << size << true;
    for (const int mode : {Aes::CBC, Aes::CFB, Aes::OFB})
        for (const int size : {0, 15, 16, 17})
            QTest::addRow("mode %d, %d", mode, size) << mode << size << (size == 16);
}

void tst_QAESEncryption::vectors()
{
    QFETCH(int, mode);
    QFETCH(int, size);
    QFETCH(bool, fits);
    const QByteArray vector(size, 'v');
    Aes aes{Aes::AES_128, Aes::Mode(mode), Aes::ZERO};
    QByteArray coded;
    const QStringList lines = loggedBy([&] { coded = aes.encode(kText, kKeys[0], vector); });
    QCOMPARE(coded.size(), fits ? 64 : 0);
    QCOMPARE(lines.size(), fits ? 1 : 0); // without a vector it ends before any work
    QCOMPARE(aes.decode(kText, kKeys[0], vector).size(), fits ? 64 : 0);
}

void tst_QAESEncryption::paddings_data()
{
    QTest::addColumn<int>("padding");
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("appended");
    const auto row = [](const char *name, int padding, int size, const QByteArray &appended) {
        QTest::addRow("%s, %d", name, size) << padding << size << appended;
    };
    row("zeros", Aes::ZERO, 0, QByteArray());
    row("zeros", Aes::ZERO, 13, hex("000000"));
    row("zeros", Aes::ZERO, 16, QByteArray());
    row("zeros", Aes::ZERO, 31, hex("00"));
    row("counts", Aes::PKCS7, 0, QByteArray(16, '\x10'));
    row("counts", Aes::PKCS7, 13, hex("030303"));
    row("counts", Aes::PKCS7, 16, QByteArray(16, '\x10'));
    row("counts", Aes::PKCS7, 31, hex("01"));
    row("mark", Aes::ISO, 0, QByteArray());
    row("mark", Aes::ISO, 13, hex("800000"));
    row("mark", Aes::ISO, 16, QByteArray());
    row("mark", Aes::ISO, 31, hex("80"));
}

void tst_QAESEncryption::paddings()
{
    QFETCH(int, padding);
    QFETCH(int, size);
    QFETCH(QByteArray, appended);
    Aes aes{Aes::AES_256, Aes::CBC, Aes::Padding(padding)};
    const QByteArray coded = aes.encode(textOf(size), kKeys[2], kVector);
    QCOMPARE(aes.decode(coded, kKeys[2], kVector), textOf(size) + appended);
}

void tst_QAESEncryption::paddingAtEverySize()
{
    for (const auto padding : {Aes::ZERO, Aes::PKCS7, Aes::ISO}) {
        Aes aes{Aes::AES_192, Aes::CFB, padding};
        for (int size = 0; size <= 33; ++size) {
            const QByteArray padded = textOf(size) + appendedTo(size, padding);
            const QByteArray coded = aes.encode(textOf(size), kKeys[1], kVector);
            QCOMPARE(coded.size(), padded.size());
            QCOMPARE(aes.decode(coded, kKeys[1], kVector), padded);
            QCOMPARE(aes.removePadding(padded), textOf(size));
        }
    }
}

void tst_QAESEncryption::removal_data()
{
    QTest::addColumn<int>("padding");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("left");
    const auto row = [](const char *name, int padding, const char *text, const char *left) {
        QTest::newRow(name) << padding << hex(text) << hex(left);
    };
    row("zeros, also the text's own", Aes::ZERO, "41004200000000", "410042");
    row("zeros alone", Aes::ZERO, "0000", "");
    row("zeros, none", Aes::ZERO, "4180", "4180");
    row("count", Aes::PKCS7, "414202ff02", "414202");
    row("count of the whole", Aes::PKCS7, "030303", "");
    row("count beyond the start", Aes::PKCS7, "4142ff", "");
    row("count of nothing", Aes::PKCS7, "414200", "414200");
    row("mark and zeros", Aes::ISO, "4180000000", "41");
    row("mark, one of two", Aes::ISO, "418080", "4180");
    row("mark after nothing", Aes::ISO, "8000", "");
    row("no mark", Aes::ISO, "41000000", "41000000");
    row("no mark, zeros alone", Aes::ISO, "0000", "0000");
    for (const auto padding : {Aes::ZERO, Aes::PKCS7, Aes::ISO})
        QTest::addRow("nothing, %d", padding) << int(padding) << QByteArray() << QByteArray();
}

void tst_QAESEncryption::removal()
{
    QFETCH(int, padding);
    QFETCH(QByteArray, text);
    QTEST(Aes::RemovePadding(text, Aes::Padding(padding)), "left");
}

void tst_QAESEncryption::lastBlockCutShort_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QByteArray>("plain");
    // Of the openssl command, for the same text with 11 zeros after it; without the eleven bytes
    // they give where the cipher goes forward.
    QTest::newRow("ECB") << int(Aes::ECB)
                         << hex("500594e20d6d6c8c716b667c38f085f15db4a7d546152da8bc7d79210ebab4bd");
    QTest::newRow("CBC") << int(Aes::CBC)
                         << hex("500496e109686a8b79626c7734fd8bfe367519376855b23e554007307d29a397");
    QTest::newRow("CFB") << int(Aes::CFB) << hex("3b3fd92eb72dad20333449f8e83cfb4a94faf1e313");
    QTest::newRow("OFB") << int(Aes::OFB) << hex("3b3fd92eb72dad20333449f8e83cfb4a7789508d16");
}

/// Nothing is refused: what is missing of the last block counts as zeros.
void tst_QAESEncryption::lastBlockCutShort()
{
    QFETCH(int, mode);
    Aes aes{Aes::AES_128, Aes::Mode(mode), Aes::PKCS7};
    QTEST(aes.decode(kText.left(21), kKeys[0], kVector), "plain");
}

NACELLE_TEST_MAIN(tst_QAESEncryption)
#include "tst_QAESEncryption.moc"
