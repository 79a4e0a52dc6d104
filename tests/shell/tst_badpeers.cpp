#include "foundation/QGlobal.h"
#include "tests/support/farend.h"
#include "tests/support/strictmain.h"

#include <QTimer>
#include <QUdpSocket>

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

using Departure = void (FarEnd::*)();
Q_DECLARE_METATYPE(LinkType)
Q_DECLARE_METATYPE(Departure)

namespace {

using List = QList<QByteArray>;

QByteArray frameOf(char mode)
{
    return QByteArray::fromHex("8A5E490001") + mode + QByteArray(63, '\x2A') +
           QByteArray::fromHex("20001234");
}

const QByteArray kFrame = frameOf('\x11');
const QByteArray kOther = frameOf('\x10');

constexpr int kBurst = 100000;
constexpr int kFloodSize = 2 * 1000 * 1000; ///< some thirty reads of a TCP link
constexpr int kFlowingFrames = 3;           ///< before and after the operator's turn
constexpr int kFloodMs = 60000;             ///< to be through with a flood, also on a busy machine
constexpr int kRepeatMs = 20;

List singleBytes(const QByteArray &bytes)
{
    List list;
    for (const char byte : bytes)
        list << QByteArray(1, byte);
    return list;
}

/// What a frame gives whose bytes come singly. None of them finds a length in the cache: the first
/// gives an empty frame, and each other is a frame together with the one before, which the cache
/// still holds.
List pairsOf(const QByteArray &frame)
{
    List pairs{QByteArray()};
    for (int i = 1; i < frame.size(); ++i)
        pairs << frame.mid(i - 1, 2);
    return pairs;
}

/// Sends pieces as fast as the link takes them: datagrams from strangers, of whom there are many.
class Flood
{
public:
    Flood(const FarEnd &end, const List &pieces)
        : m_thread([this, &end, pieces] {
              if (end.nearPort() == 0)
                  stream(end, pieces);
              else
                  scatter(end.nearPort(), pieces);
              m_isOver = true;
          })
    {
    }
    ~Flood() { m_thread.join(); }
    bool isOver() const { return m_isOver; }

private:
    static void stream(const FarEnd &end, const List &pieces)
    {
        for (const QByteArray &piece : pieces) {
            if (!end.write(piece))
                return;
        }
    }
    static void scatter(quint16 port, const List &pieces)
    {
        std::array<QUdpSocket, 4> strangers;
        for (int i = 0; i < pieces.size(); ++i)
            strangers.at(size_t(i) % strangers.size())
                .writeDatagram(pieces.at(i), QHostAddress::LocalHost, port);
    }

    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

} // namespace

/// Links whose far end misbehaves.
class tst_badpeers : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void chunks_data();
    void chunks();
    void departures_data();
    void departures();
    void floods_data();
    void floods();

private:
    int received() { return (*m_bench)->receivedFrames.size(); }
    void answersOperator();
    void showsNext(const FarEnd &end);
    void connectsAgain(LinkType kind);

    std::unique_ptr<Bench> m_bench;
};

void tst_badpeers::init()
{
    QGlobal::instance()->languageChinese = true;
    m_bench = std::make_unique<Bench>();
}

void tst_badpeers::cleanup()
{
    m_bench.reset();
}

/// A click and a typed key have their effect.
void tst_badpeers::answersOperator()
{
    const int sent = (*m_bench)->sentFrames.size();
    m_bench->click("pushButton_Send_Null");
    QCOMPARE((*m_bench)->sentFrames.size(), sent + 1);
    QVERIFY(m_bench->log().contains(QStringLiteral("]发->\nA8E5480001")));
    auto *field = m_bench->find<QLineEdit>("lineEdit43");
    field->clear();
    QTest::keyClick(field, '7');
    QCOMPARE(field->text(), QStringLiteral("7"));
}

/// A frame that is alone in its chunk is taken as such, and is on screen.
void tst_badpeers::showsNext(const FarEnd &end)
{
    const QByteArray &frame = (*m_bench)->receivedFrames.value(0) == kFrame ? kOther : kFrame;
    // Repeated, as a pod does: one that comes amid what is left of a flood goes down in it.
    QTimer repeat;
    connect(&repeat, &QTimer::timeout, [&end, &frame] { end.offer(frame); });
    repeat.start(kRepeatMs);
    QTRY_COMPARE_WITH_TIMEOUT((*m_bench)->receivedFrames.value(0), frame, kFloodMs);
    QCOMPARE(m_bench->find<QLineEdit>("lineEdit53_2")->text(),
             frame == kFrame ? QStringLiteral("指向锁定模式") : QStringLiteral("角度控制模式"));
}

/// As the operator does it after a fault: disconnect, connect, and both sides are heard.
void tst_badpeers::connectsAgain(LinkType kind)
{
    QCOMPARE(Bench::takeNotices(), QStringList());
    m_bench->click("pushButton_Conn");
    QCOMPARE(m_bench->find<QPushButton>("pushButton_Conn")->text(), QStringLiteral("连接"));
    const FarEnd end(*m_bench, kind);
    m_bench->click("pushButton_Send_Null");
    QByteArray heard;
    QTRY_COMPARE(heard += end.read(), (*m_bench)->sentFrames.first());
    showsNext(end);
    m_bench->click("pushButton_Conn");
}

void tst_badpeers::chunks_data()
{
    QTest::addColumn<LinkType>("kind");
    QTest::addColumn<List>("chunks");
    QTest::addColumn<List>("frames");
    const struct
    {
        const char *name;
        LinkType kind;
    } links[] = {{"TCP", kTcpLink}, {"UDP", kUdpLink}, {"serial", kSerialLink}};
    for (const auto &link : links) {
        QTest::addRow("%s, single bytes", link.name)
            << link.kind << singleBytes(kFrame) << pairsOf(kFrame);
        // Three bytes are a header whose length reads short, but right.
        QTest::addRow("%s, single bytes after a header", link.name)
            << link.kind << List{kFrame.left(3)} + singleBytes(kFrame.mid(3)) << List{kFrame};
    }
    // All that waits is one chunk, of which one frame is taken; the rest stands in the cache.
    const QByteArray late = kFrame.repeated(280);
    QTest::newRow("TCP, 20,440 bytes at once")
        << kTcpLink << List{late, "tail"} << List{kFrame, late.mid(73) + "tail"};
    QTest::newRow("UDP, empty") << kUdpLink << List{"", kFrame, ""} << List{"", kFrame, ""};
    QTest::newRow("UDP, largest") << kUdpLink << List{wholeChunk(kLargestDatagram)}
                                  << List{wholeChunk(kLargestDatagram)};
}

void tst_badpeers::chunks()
{
    QFETCH(LinkType, kind);
    QFETCH(List, chunks);
    QFETCH(List, frames);
    const FarEnd end(*m_bench, kind);
    for (int sent = 1; sent <= chunks.size(); ++sent) {
        QVERIFY(end.write(chunks.at(sent - 1)));
        // Where chunks come to fewer frames it doesn't matter how many are taken at once.
        if (frames.size() == chunks.size())
            QTRY_COMPARE(received(), sent);
        else
            QCoreApplication::processEvents();
    }
    QTRY_COMPARE(received(), frames.size());
    QVERIFY(m_bench->log().endsWith(QStringLiteral("]收->\n") + frames.last().toHex().toUpper()));
    std::reverse(frames.begin(), frames.end()); // the newest stands first
    QCOMPARE((*m_bench)->receivedFrames, frames);
    showsNext(end);
}

void tst_badpeers::departures_data()
{
    QTest::addColumn<LinkType>("kind");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<Departure>("depart");
    const QByteArray idle;
    const QByteArray inMidFrame = kFrame + kOther.left(30);
    QTest::newRow("TCP, reset while idle") << kTcpLink << idle << &FarEnd::reset;
    QTest::newRow("TCP, reset in mid-frame") << kTcpLink << inMidFrame << &FarEnd::reset;
    QTest::newRow("TCP, half-closed while idle") << kTcpLink << idle << &FarEnd::halfClose;
    QTest::newRow("TCP, half-closed in mid-frame") << kTcpLink << inMidFrame << &FarEnd::halfClose;
    QTest::newRow("UDP, closed in mid-frame") << kUdpLink << inMidFrame << &FarEnd::hangUp;
    QTest::newRow("serial, hung up while idle") << kSerialLink << idle << &FarEnd::hangUp;
    QTest::newRow("serial, hung up in mid-frame") << kSerialLink << inMidFrame << &FarEnd::hangUp;
}

void tst_badpeers::departures()
{
    QFETCH(LinkType, kind);
    QFETCH(QByteArray, before);
    QFETCH(Departure, depart);
    const List frames = before.isEmpty() ? List{} : List{kFrame};
    FarEnd end(*m_bench, kind);
    if (!before.isEmpty())
        QVERIFY(end.write(before));
    // All that stands before the end of a stream is taken even later; else it may be lost.
    if (depart != &FarEnd::halfClose)
        QTRY_COMPARE((*m_bench)->receivedFrames, frames);
    (end.*depart)();
    if (kind == kTcpLink) {
        // A peer that only sends no more counts as gone as well: nothing is sent to it, as is
        // meant.
        QTRY_VERIFY(!end.isHeld());
        Bench::expectWarning("QIODevice::write .QTcpSocket.: device not open");
    }
    answersOperator();
    QTRY_COMPARE((*m_bench)->receivedFrames, frames);
    if (depart == &FarEnd::halfClose)
        QCOMPARE(end.read(), QByteArray());
    QCOMPARE(m_bench->find<QPushButton>("pushButton_Conn")->text(), QStringLiteral("断开"));
    connectsAgain(kind);
}

void tst_badpeers::floods_data()
{
    QTest::addColumn<LinkType>("kind");
    QTest::addColumn<List>("pieces");
    const List frames{kFrame.repeated(kFloodSize / kFrame.size())};
    const List garbage{noise(kFloodSize)};
    List odd{QByteArray(), wholeChunk(kLargestDatagram)};
    while (odd.size() < 1000)
        odd << kFrame;
    List datagrams;
    while (datagrams.size() < kBurst)
        datagrams += odd;
    QTest::newRow("TCP, frames") << kTcpLink << frames;
    QTest::newRow("TCP, garbage") << kTcpLink << garbage;
    QTest::newRow("UDP, from strangers") << kUdpLink << datagrams;
    QTest::newRow("serial, garbage") << kSerialLink << garbage;
}

void tst_badpeers::floods()
{
    QFETCH(LinkType, kind);
    QFETCH(List, pieces);
    const FarEnd end(*m_bench, kind);
    const Flood flood(end, pieces);
    QTRY_VERIFY_WITH_TIMEOUT(received() >= kFlowingFrames, kFloodMs);
    answersOperator();
    // What was answered came between, not at the end.
    const int answered = received();
    QTRY_VERIFY_WITH_TIMEOUT(received() >= answered + kFlowingFrames, kFloodMs);
    QTRY_VERIFY_WITH_TIMEOUT(flood.isOver(), kFloodMs);
    showsNext(end);
    connectsAgain(kind);
}

NACELLE_TEST_MAIN(tst_badpeers)
#include "tst_badpeers.moc"
