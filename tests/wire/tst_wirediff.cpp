#include "tests/support/strictmain.h"
#include "tests/wire/sampleframes.h"
#include "tools/wire/recorddiff.h"

using namespace wire;

/// Two recordings side by side.
class tst_wirediff : public QObject
{
    Q_OBJECT

private slots:
    void compares_data();
    void compares();
    void findsWhatALinkLost_data();
    void findsWhatALinkLost();
    void namesChanges();
    void timesFrames();
};

void tst_wirediff::compares_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<QByteArray>("signs");
    // A letter is a frame; a capital is that frame with other values throughout.
    const char *const rows[][4] = {
        {"equal", "abc", "abc", "==="},
        {"lost", "abcd", "acd", "=-=="},
        {"added", "acd", "abcd", "=+=="},
        {"changed", "abc", "axc", "=~="},
        {"changed, and there again later", "abcdabcd", "xbcdabcd", "~======="},
        {"added before equal ones", "aaa", "xaaa", "+==="},
        {"all lost", "abc", "", "---"},
        {"all added", "", "ab", "++"},
        {"reordered", "abcdef", "abdcef", "==~~=="},
        {"throughout", "abcdefgh", "ABCDEFGH", "~~~~~~~~"},
        {"throughout, one lost", "abcdefgh", "ABDEFGH", "~~-~~~~~"},
        {"throughout, one added", "abcdefgh", "ABCXDEFGH", "~~~+~~~~~"},
        {"throughout, each seventh lost", "abcdefghijklmnopqrstuvwxyz", "ABCDEFHIJKLMOPQRSTVWXYZ",
         "~~~~~~-~~~~~~-~~~~~~-~~~~~"},
        {"throughout, reordered", "abcdefgh", "ABDCEFGH", "~~~~~~~~"},
        {"throughout, lost and added", "abcdefghijk", "ABDEFGHIXJK", "~~-~~~~~~+~~"},
        {"the other kind between", "abc!def", "AB!CDEF", "~~-=+~~~"},
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QByteArray(row[1]) << QByteArray(row[2]) << QByteArray(row[3]);
    // Many times as long as what is looked at together.
    const QByteArray all("abcdefghijklmnopqrstuvwxyz"), less("ABCDEFGHIJKMNOPQRSTUVWXYZ");
    QTest::newRow("long") << all.repeated(100) << less.repeated(100)
                          << QByteArray("~~~~~~~~~~~-~~~~~~~~~~~~~~").repeated(100);
}

void tst_wirediff::compares()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    const auto source = [](const QByteArray &letters) {
        return [letters, at = 0](Record &record) mutable {
            const char letter = at < letters.size() ? letters[at] : '\0';
            record.bytes = letter == '!' ? host(0) : gcu(0);
            record.bytes.replace(38, 30, QByteArray(30, letter >= 'a' ? 0 : 9));
            record.bytes[12] = record.bytes[24] = char(letter | 0x20);
            return at++ < letters.size();
        };
    };
    RecordDiff diff(source(before), source(after));
    QByteArray signs;
    for (RecordDiff::Step step; diff.next(step);)
        signs += step.isEqual() ? '=' : !step.hasAfter ? '-' : !step.hasBefore ? '+' : '~';
    QTEST(signs, "signs");
}

void tst_wirediff::findsWhatALinkLost_data()
{
    QTest::addColumn<int>("lost");
    QTest::addColumn<char>("version");
    for (const int lost : {1, 40, 300, 2000}) {
        QTest::addRow("%d", lost) << lost << '\x01';
        QTest::addRow("%d, another version", lost) << lost << '\x02';
    }
}

/// Of a pod that turns slowly, one angle is all that tells its frames from one another.
void tst_wirediff::findsWhatALinkLost()
{
    constexpr int kBefore = 700, kAll = 6000;
    QFETCH(int, lost);
    QFETCH(char, version);
    const auto source = [](int from, int skipped, char version) {
        return [=, at = 0](Record &record) mutable {
            at += at == from ? skipped : 0;
            record.bytes = gcu(0);
            record.bytes[4] = version;
            record.bytes.replace(18, 2, encodeU16(quint16(at)));
            return at++ < kAll;
        };
    };
    RecordDiff diff(source(kBefore, 0, 1), source(kBefore, lost, version));
    int count = 0;
    for (RecordDiff::Step step; diff.next(step); ++count) {
        const bool isLost = count >= kBefore && count < kBefore + lost;
        QVERIFY2(step.hasBefore && step.hasAfter != isLost, qPrintable(QString::number(count)));
    }
    QCOMPARE(count, kAll);
}

/// In the order of the rows, and with a word for what isn't there.
void tst_wirediff::namesChanges()
{
    QByteArray changed = gcu(1).left(69);
    changed[2] = 0x47;
    changed[5] = 0x12;
    appendCrc(changed);
    changed.append("more");
    QStringList ids;
    for (const FieldChange &change : changesOf(gcu(1), changed))
        ids << change.id + ':' + change.before + '>' + change.after;
    QCOMPARE(ids, (QStringList{"length:73>71", "mode:1>follow", "feedback:photo>-",
                               "result:failure>-", "bytes:->75"}));
}

/// A clock set back by an hour and forward again is one pause.
void tst_wirediff::timesFrames()
{
    Timing timing;
    for (const qint64 second : {4000, 4001, 401, 402, 4002})
        timing.take({second * 1000000, Direction::Tx, host(1)});
    QCOMPARE(timing.length, 3602000000);
    QCOMPARE(timing.longestGap, 3600000000);
}

NACELLE_TEST_MAIN(tst_wirediff)
#include "tst_wirediff.moc"
