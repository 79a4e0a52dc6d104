#include "protocol/codec.h"
#include "tests/support/strictmain.h"
#include "tests/wire/sampleframes.h"
#include "tools/wire/filter.h"
#include "tools/wire/link.h"
#include "tools/wire/recordreader.h"
#include "tools/wire/recordwriter.h"

#include <QIODevice>
#include <QTextCodec>

using namespace wire;

Q_DECLARE_METATYPE(Filter)

namespace {

struct Reading
{
    QVector<Record> records;
    QString error;
    QString trouble;
    Origin origin;

    QByteArray lines() const
    {
        TextBuffer text;
        for (const Record &record : records)
            lineFormat()->add(record, text);
        return text.bytes();
    }
};

/// Bytes as a pipe with a slow writer has them: never more than so many.
class Pipe : public QIODevice
{
public:
    Pipe(const QByteArray &bytes, int most) : m_bytes(bytes), m_most(most)
    {
        open(ReadOnly | Unbuffered);
    }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 size) override
    {
        const QByteArray piece = m_bytes.left(int(qMin<qint64>(size, m_most)));
        m_bytes.remove(0, piece.size());
        std::copy(piece.begin(), piece.end(), data);
        return piece.size();
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    int m_most;
};

Reading readingOf(const QByteArray &bytes, const ReadOptions &options = {}, int most = 1 << 20)
{
    Reading reading;
    auto pipe = std::make_unique<Pipe>(bytes, most);
    const auto reader =
        makeReader(std::make_unique<ByteSource>(std::move(pipe)), options, reading.error);
    for (Record record; reader && reader->next(record);)
        reading.records.append(record);
    reading.trouble = reader ? reader->trouble() : QString();
    reading.origin = reader ? reader->origin() : Origin();
    return reading;
}

QByteArray written(const FrameFormat &format, const QVector<Record> &records)
{
    TextBuffer text;
    format.begin(text);
    for (const Record &record : records)
        format.add(record, text);
    return text.bytes();
}

/// Three frames half a second apart, and bytes that are none.
QVector<Record> sample()
{
    return {{1732190000123456, Direction::Tx, host(1)},
            {1732190000623457, Direction::Rx, gcu(2)},
            {1732190001000000, Direction::Rx, "noise"}};
}

QByteArray little(quint32 value)
{
    return encodeU32(value);
}

/// A block of pcapng around its body.
QByteArray block(quint32 type, const QByteArray &body)
{
    const QByteArray length = little(quint32(body.size() + 12));
    return little(type) + length + body + length;
}

QByteArray section()
{
    return block(0x0A0D0D0A,
                 little(0x1A2B3C4D) + QByteArray::fromHex("01000000") + QByteArray(8, '\xFF'));
}

QByteArray interface(quint16 linkType, const char *options = "")
{
    return block(1, encodeU16(linkType) + QByteArray(6, '\0') + QByteArray::fromHex(options));
}

QByteArray packet(const QByteArray &bytes)
{
    const QByteArray size = little(quint32(bytes.size()));
    return block(6, QByteArray(4, '\0') + little(0) + little(1000000) + size + size + bytes +
                        QByteArray((4 - bytes.size() % 4) % 4, '\0'));
}

/// IPv4 with its header around TCP or UDP, as Ethernet carries it.
QByteArray ethernet(quint8 protocol, const QByteArray &transport)
{
    const auto size = quint16(20 + transport.size());
    return QByteArray(12, '\x02') + QByteArray::fromHex("08004500") + char(size >> 8) + char(size) +
           QByteArray::fromHex("000000004000").left(5) + char(protocol) + QByteArray(2, '\0') +
           QByteArray::fromHex("7F0000017F000001") + transport;
}

/// `at` counts from sixty bytes before the end of the sequence numbers.
QByteArray tcp(const QByteArray &payload, int at = 0, const char *flags = "18")
{
    QByteArray sequence = encodeU32(quint32(at - 60));
    std::reverse(sequence.begin(), sequence.end());
    return ethernet(6, QByteArray::fromHex("091C1F90") + sequence +
                           QByteArray::fromHex("0000000050") + QByteArray::fromHex(flags) +
                           QByteArray::fromHex("FFFF00000000") + payload);
}

QByteArray udp(const QByteArray &payload)
{
    const auto size = quint16(8 + payload.size());
    return ethernet(17, QByteArray::fromHex("09210922") + char(size >> 8) + char(size) +
                            "\x01\x02" + payload);
}

} // namespace

/// Recordings written and read, whole and damaged.
class tst_wirefiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("TZ", "UTC"); }
    void formsComeBack_data();
    void formsComeBack();
    void writesPcapng();
    void readsForeignCaptures_data();
    void readsForeignCaptures();
    void readsCutRecordings();
    void refusesDamage_data();
    void refusesDamage();
    void readsLogs();
    void findsFramesInStreams_data();
    void findsFramesInStreams();
    void givesGoodFramesAtOnce();
    void readsWordsInStreams();
    void cutsAsTheBench();
    void livesThroughNoise();
    void filters_data();
    void filters();
    void links_data();
    void links();
};

void tst_wirefiles::formsComeBack_data()
{
    QTest::addColumn<QString>("form");
    QTest::addColumn<QByteArray>("lines");
    const QByteArray sent = host(1).toHex().toUpper(), received = gcu(2).toHex().toUpper();
    const QByteArray exact = "(1732190000.123456) tx " + sent + "\n(1732190000.623457) rx " +
                             received + "\n(1732190001.000000) rx 6E6F697365\n";
    QTest::newRow("pcapng") << "pcapng" << exact;
    QTest::newRow("line") << "line" << exact;
    QTest::newRow("Chinese log") << "zh"
                                 << "(42800.123000) tx " + sent + "\n(42800.623000) rx " +
                                        received + "\n(42801.000000) rx 6E6F697365\n";
    QTest::newRow("English log") << "en"
                                 << "(42800.123000) tx " + sent + "\n(42800.623000) rx " +
                                        received + "\n(42801.000000) rx 6E6F697365\n";
    QTest::newRow("hex") << "hex"
                         << "(-) tx " + sent + "\n(-) rx " + received + "\n(-) - 6E6F697365\n";
}

void tst_wirefiles::formsComeBack()
{
    QFETCH(QString, form);
    QFETCH(QByteArray, lines);
    const auto format = form == "pcapng" ? pcapngFormat({"tcp://pod", "10.0.0.1", "tool"})
                        : form == "line" ? lineFormat()
                        : form == "hex"
                            ? hexFormat()
                            : logFormat(form == "zh" ? Language::Chinese : Language::English);
    const QByteArray bytes = written(*format, sample());
    const Reading reading = readingOf(bytes);
    QCOMPARE(reading.lines(), lines);
    QCOMPARE(reading.error + reading.trouble, QString());
    QCOMPARE(reading.origin.link + reading.origin.peer,
             QString(form == "pcapng" ? "tcp://pod10.0.0.1" : ""));
    QCOMPARE(readingOf(bytes, {}, 2).lines(), lines);
    QByteArray dos = bytes;
    if (form != "pcapng")
        QCOMPARE(readingOf("\xEF\xBB\xBF" + dos.replace("\n", "\r\n")).lines(), lines);
    if (form == "line" || form == "hex")
        QCOMPARE(readingOf("# run 7\r\n\n" + bytes + "# end\n").lines(), lines);
    // As shells of Windows write what goes through them, in pieces that cut characters.
    const QByteArray wide =
        QTextCodec::codecForName("UTF-16")->fromUnicode(QString::fromUtf8(bytes));
    if (form != "pcapng")
        QCOMPARE(readingOf(wide, {}, 3).lines(), lines);
}

/// Byte for byte what others read.
void tst_wirefiles::writesPcapng()
{
    const QByteArray bytes =
        written(*pcapngFormat({"l", "", "t"}), {{0x0102030405060708, Direction::Tx, "abcde"}});
    QCOMPARE(bytes.toHex(), QByteArray("0a0d0d0a"
                                       "28000000"
                                       "4d3c2b1a"
                                       "01000000"
                                       "ffffffffffffffff"
                                       "0400010074000000"
                                       "00000000"
                                       "28000000"
                                       "01000000"
                                       "20000000"
                                       "93000000"
                                       "00000400"
                                       "020001006c000000"
                                       "00000000"
                                       "20000000"
                                       "06000000"
                                       "34000000"
                                       "00000000"
                                       "04030201"
                                       "08070605"
                                       "05000000"
                                       "05000000"
                                       "6162636465000000"
                                       "0200040002000000"
                                       "00000000"
                                       "34000000"));
}

void tst_wirefiles::readsForeignCaptures_data()
{
    QTest::addColumn<QByteArray>("capture");
    QTest::addColumn<QByteArray>("lines");
    const QByteArray frame = gcu(7), other = host(9);
    const QByteArray line = "(1.000000) rx " + frame.toHex().toUpper() + '\n';
    const QByteArray head = section() + interface(1);
    QTest::newRow("TCP") << head + packet(tcp(frame)) << line;
    QTest::newRow("TCP in two segments")
        << head + packet(tcp(frame.left(30))) + packet(tcp(frame.mid(30), 30)) << line;
    const QByteArray first = packet(tcp(frame.left(30))),
                     second = packet(tcp(frame.mid(30, 30), 30)),
                     third = packet(tcp(frame.mid(60), 60));
    const QByteArray after = packet(tcp(other, 73));
    const QByteArray both = line + "(1.000000) tx " + other.toHex().toUpper() + '\n';
    QTest::newRow("segments that overtake") << head + first + third + after + second << both;
    QTest::newRow("segments again")
        << head + first + second + first + second + third + third + after << both;
    QTest::newRow("a segment of two again")
        << head + first + second + packet(tcp(frame.mid(10), 10)) + after << both;
    QTest::newRow("a lost segment") << head + first + third + after << both.mid(line.size());
    QTest::newRow("another connection")
        << head + first + packet(tcp("", 100, "02")) + packet(tcp(frame, 101)) << line;
    QTest::newRow("TCP between other bytes") << head + packet(tcp("GET " + frame + " /")) << line;
    QTest::newRow("UDP") << head + packet(udp(frame)) << line;
    QTest::newRow("a VLAN") << head + packet(tcp(frame).insert(12, QByteArray::fromHex("81000001")))
                            << line;
    QTest::newRow("raw IP") << section() + interface(101) + packet(tcp(frame).mid(14)) << line;
    QTest::newRow("times in milliseconds")
        << section() + interface(1, "0900010003000000") + packet(tcp(other))
        << "(1000.000000) tx " + other.toHex().toUpper() + '\n';
    QTest::newRow("no flags") << section() + interface(147) + packet(frame) << line;
    QTest::newRow("cut packet") << head + packet(tcp(frame).left(40)) << QByteArray();
    QTest::newRow("another protocol") << head + packet(ethernet(1, frame)) << QByteArray();
}

void tst_wirefiles::readsForeignCaptures()
{
    QFETCH(QByteArray, capture);
    QFETCH(QByteArray, lines);
    QCOMPARE(readingOf(capture).lines(), lines);
}

/// Wherever a recording ends, all whole packets before come back.
void tst_wirefiles::readsCutRecordings()
{
    const QByteArray whole = written(*pcapngFormat({"", "", ""}), sample());
    const int head = 28 + 4 + 20 + 4; // blocks of section and interface, their options' ends
    const int first = 32 + 76 + 12, second = first;
    for (int size = 12; size < whole.size(); ++size) {
        const Reading reading = readingOf(whole.left(size));
        const int expected = (size >= head + first) + (size >= head + first + second);
        QCOMPARE(reading.records.size(), expected);
        const bool isBetween =
            size == head || size == 32 || size == head + first || size == head + 2 * first;
        QCOMPARE(reading.trouble.isEmpty(), isBetween);
    }
}

void tst_wirefiles::refusesDamage_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("word");
    const QByteArray head = section() + interface(147);
    QTest::newRow("old pcap") << QByteArray::fromHex("D4C3B2A1020004000000000000000000")
                              << "editcap";
    QTest::newRow("another link type")
        << section() + interface(105) + packet(gcu(1)) << "link type 105";
    QTest::newRow("endless block")
        << section() + little(6) + little(0xFFFFFFF0) + little(0) << "4294967280 bytes";
    QTest::newRow("block of no size") << section() + little(6) + little(0) + little(0) << "0 bytes";
    const auto segment = [](int at, const QByteArray &bytes) { return packet(tcp(bytes, at)); };
    QTest::newRow("lost segments") << section() + interface(1) + segment(0, gcu(1)) +
                                          segment(80, gcu(2)) + segment(160, gcu(3))
                                   << "a TCP stream aren't in the capture (and 1 more)";
    QTest::newRow("no interface") << section() + packet(gcu(1)) << "any interface";
    QByteArray lying = packet(gcu(1));
    QTest::newRow("lying packet") << head + lying.replace(20, 4, little(5000))
                                  << "longer than its block";
    QTest::newRow("lying end") << head + packet(gcu(1)).chopped(4) + little(7) + packet(gcu(2))
                               << "a block of 108 bytes that ends with a length of 7 at byte 48";
    QTest::newRow("line form") << QByteArray("(1.0) rx A8E5\n(1.0) up A8E5\n(1.0 rx\n")
                               << "line 2 isn't a frame (and 1 more)";
    QTest::newRow("log") << QByteArray("[12:00:00:000]RX->\nA8E5\n[25:00:00:000]RX->\nA8E5\n")
                         << "line 3";
    QTest::newRow("hex") << QByteArray("A8E5\nA8E\n") << "line 2";
    const auto other = "neither line form, log text nor hexadecimal digits";
    QTest::newRow("no hex") << QByteArray("A8 E5 zz\nA8E5\n") << other;
    QTest::newRow("0x") << QByteArray("0xA8E5\n") << other;
    QTest::newRow("a long text") << "# frames\n" + QByteArray("吊舱 ").repeated(5000) << other;
    QTest::newRow("packed") << QByteArray("\x1F\x8B\x08\x00", 4) << "gunzip";
}

void tst_wirefiles::refusesDamage()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, word);
    const Reading reading = readingOf(bytes);
    QVERIFY2((reading.error + reading.trouble).contains(word),
             qPrintable(reading.error + reading.trouble));
}

/// Both languages in one text, and a night in which a day ends.
void tst_wirefiles::readsLogs()
{
    ReadOptions options;
    options.date = QDate(2025, 11, 21);
    const Reading reading = readingOf(
        "[23:59:59:999]发->\nA8E5\n\n[00:00:00:001]收->\n\n8A5E\n[00:00:00:000]RX->\n8A\n",
        options);
    QCOMPARE(reading.lines(),
             QByteArray("(1763769599.999000) tx A8E5\n(1763769600.001000) rx 8A5E\n"
                        "(1763769600.000000) rx 8A\n"));
    QCOMPARE(reading.trouble, QString());
}

void tst_wirefiles::findsFramesInStreams_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<QList<QByteArray>>("pieces");
    const QByteArray a = gcu(1), b = gcu(2), wrong = a.chopped(1) + char(a.back() ^ 1);
    QByteArray lying = a, shorter = a;
    lying[2] = 0x60;
    shorter[2] = 0x47;
    const QByteArray endless = QByteArray(a).replace(2, 2, "\xFF\x7F");
    const QByteArray noise = QByteArray(300, '\x11');
    QTest::newRow("frames") << a + b << QList<QByteArray>{a, b};
    QTest::newRow("noise around") << noise + a + noise << QList<QByteArray>{noise, a, noise};
    QTest::newRow("wrong checksum") << a + wrong + b << QList<QByteArray>{a, wrong, b};
    QTest::newRow("wrong checksums")
        << wrong + wrong + wrong << QList<QByteArray>{wrong, wrong, wrong};
    QTest::newRow("length too great") << lying + b + a << QList<QByteArray>{lying, b, a};
    QTest::newRow("length too small") << shorter + b << QList<QByteArray>{shorter, b};
    QTest::newRow("endless length") << endless + b << QList<QByteArray>{endless, b};
    QTest::newRow("cut frame") << a.left(40) + b << QList<QByteArray>{a.left(40), b};
    QTest::newRow("cut at the end") << b + a.left(40) << QList<QByteArray>{b, a.left(40)};
    QTest::newRow("header in noise")
        << QByteArray("\x8A\x5E..") + b << QList<QByteArray>{"\x8A\x5E..", b};
    QTest::newRow("half a header") << b + "\x8A" << QList<QByteArray>{b, "\x8A"};
    QTest::newRow("nothing") << QByteArray() << QList<QByteArray>{};
}

/// As a whole, and byte by byte as a link may bring it.
void tst_wirefiles::findsFramesInStreams()
{
    QFETCH(QByteArray, stream);
    QFETCH(QList<QByteArray>, pieces);
    for (const int size : {1, 7, 100000}) {
        FrameScanner scanner;
        QList<QByteArray> found;
        QByteArray piece;
        for (int at = 0; at < stream.size(); at += size) {
            const QByteArray part = stream.mid(at, size);
            scanner.push(part.constData(), part.size());
            while (scanner.take(piece, false))
                found << piece;
        }
        scanner.finish();
        while (scanner.take(piece, true))
            found << piece;
        QByteArray all;
        for (const QByteArray &each : qAsConst(found))
            all += each;
        QCOMPARE(all, stream);
        for (const QByteArray &each : qAsConst(pieces))
            if (kindOf(each) != FrameKind::Unknown && each.size() > 70)
                QVERIFY(found.contains(each));
        if (size > 1 && !stream.startsWith('\x11'))
            QCOMPARE(found, pieces);
    }
}

/// On a link nobody waits for the bytes that a lying length promises while a good frame is there.
void tst_wirefiles::givesGoodFramesAtOnce()
{
    QByteArray lying = gcu(1);
    lying[2] = char(0xF0);
    const QByteArray bytes = lying + gcu(2);
    FrameScanner scanner;
    scanner.push(bytes.constData(), bytes.size());
    QByteArray piece;
    QVERIFY(scanner.take(piece, true));
    QCOMPARE(piece, lying);
    QVERIFY(scanner.take(piece, true));
    QCOMPARE(piece, gcu(2));
    QVERIFY(!scanner.take(piece, true));
}

/// What a device says before its first frame is part of the stream, which has no chunks.
void tst_wirefiles::readsWordsInStreams()
{
    for (const QByteArray &words :
         {QByteArray("ready\r\n").repeated(100), QByteArray("[boot] v1\r\n")}) {
        const Reading reading = readingOf(words + gcu(5), {}, 7);
        QCOMPARE(reading.records.size(), 2);
        QCOMPARE(reading.records.at(0).bytes, words);
        QCOMPARE(reading.records.at(1).bytes, gcu(5));
    }
    ReadOptions options;
    options.cut = Cut::AsBench;
    for (const QByteArray &bytes : {gcu(5) + gcu(6), gcu(5).toHex()})
        QVERIFY(readingOf(bytes, options).error.contains("chunks"));
}

/// The bench takes one frame of a chunk, and drops what follows a frame that came in two.
void tst_wirefiles::cutsAsTheBench()
{
    ReadOptions options;
    options.cut = Cut::AsBench;
    const QByteArray capture = section() + interface(1) + packet(tcp(gcu(1) + gcu(2))) +
                               packet(tcp(gcu(3).left(20), 146)) + packet(tcp(gcu(3).mid(20), 166));
    const Reading reading = readingOf(capture, options);
    QCOMPARE(reading.records.size(), 2);
    QCOMPARE(reading.records.at(0).bytes, gcu(1));
    QCOMPARE(reading.records.at(1).bytes, gcu(3));
}

/// A megabyte of headers with plausible lengths, none of which begins a frame, isn't slow.
void tst_wirefiles::livesThroughNoise()
{
    const QByteArray noise = QByteArray::fromHex("8A5EFF00").repeated(250000);
    const Reading reading = readingOf(noise + gcu(5));
    QByteArray all;
    for (const Record &record : reading.records)
        all += record.bytes;
    QCOMPARE(all, noise + gcu(5));
    QCOMPARE(reading.records.last().bytes, gcu(5));
}

void tst_wirefiles::filters_data()
{
    QTest::addColumn<Filter>("filter");
    QTest::addColumn<QByteArray>("numbers");
    Filter filter;
    QTest::newRow("all") << filter << QByteArray("0123");
    filter.direction = Direction::Rx;
    QTest::newRow("direction") << filter << QByteArray("12");
    filter = Filter();
    filter.kind = FrameKind::Unknown;
    QTest::newRow("kind") << filter << QByteArray("2");
    filter = Filter();
    filter.command = 0x20;
    QTest::newRow("command") << filter << QByteArray("01");
    filter = Filter();
    filter.mode = 2;
    QTest::newRow("mode") << filter << QByteArray("1");
    filter = Filter();
    filter.verdict = Verdict::Bad;
    QTest::newRow("checksum") << filter << QByteArray("3");
    filter = Filter();
    filter.from = 500000;
    filter.to = 900000;
    QTest::newRow("from the first") << filter << QByteArray("12");
    filter.from = 1732190001000000;
    filter.to = std::numeric_limits<qint64>::max();
    filter.isRelative = false;
    QTest::newRow("by the clock") << filter << QByteArray("2");
}

void tst_wirefiles::filters()
{
    QFETCH(Filter, filter);
    QFETCH(QByteArray, numbers);
    QVector<Record> records = sample();
    QByteArray wrong = host(3);
    wrong[69] = 0x21;
    records.append({kNoTime, Direction::Tx, wrong});
    QByteArray taken;
    for (int i = 0; i < records.size(); ++i)
        if (filter.takes(records.at(i)))
            taken.append(QByteArray::number(i));
    QCOMPARE(taken, numbers);
    // The fourth has no time.
    const bool hasTimes = filter.from != kNoTime || filter.to != std::numeric_limits<qint64>::max();
    QCOMPARE(filter.remark().startsWith("1 frames"), hasTimes);
}

void tst_wirefiles::links_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("read");
    QTest::newRow("tcp") << "tcp://pod"
                         << "0 pod 2332 0";
    QTest::newRow("tcp port") << "tcp://10.0.0.1:99"
                              << "0 10.0.0.1 99 0";
    QTest::newRow("listening") << "tcp-listen://127.0.0.1:0"
                               << "1 127.0.0.1 0 0";
    QTest::newRow("udp") << "udp://pod"
                         << "2 pod 2337 2338";
    QTest::newRow("udp as pod") << "udp://pc:2338"
                                << "2 pc 2338 2337";
    QTest::newRow("udp local") << "udp://pod:1?local=2"
                               << "2 pod 1 2";
    QTest::newRow("serial") << "serial:///dev/ttyUSB0?baud=9600&parity=even&data=7"
                            << "3 /dev/ttyUSB0 9600 7e";
    QTest::newRow("serial of Windows") << "serial:///COM3"
                                       << "3 COM3 115200 8n";
    for (const char *text : {"", "pod", "http://pod", "tcp://", "tcp://pod:70000",
                             "tcp://pod?baud=1", "udp://pod?local=x", "serial://COM3",
                             "serial:///COM3?parity=nothing", "serial:///COM3?parity=",
                             "tcp://pod#x", "tcp://x@pod", "serial:///COM3?baud=0", "tcp://pod/x"})
        QTest::newRow(text) << text << "";
}

void tst_wirefiles::links()
{
    QFETCH(QString, text);
    QFETCH(QString, read);
    LinkAddress link;
    QString error, shown;
    const bool isRead = readLinkAddress(text, link, error);
    QCOMPARE(isRead, error.isEmpty());
    if (isRead && link.kind == LinkAddress::Serial)
        shown = QStringLiteral("3 %1 %2 %3").arg(link.host).arg(link.baud).arg(link.dataBits) +
                QLatin1Char(link.parity);
    else if (isRead)
        shown = QStringLiteral("%1 %2 %3 %4")
                    .arg(link.kind)
                    .arg(link.host)
                    .arg(link.port)
                    .arg(link.local);
    QCOMPARE(shown, read);
}

NACELLE_TEST_MAIN(tst_wirefiles)
#include "tst_wirefiles.moc"
