#include "shell/FrameHistory.h"
#include "tests/support/strictmain.h"

#include <limits>

namespace {

const QByteArray kFrame = QByteArray(73, 'f');

} // namespace

/// Positions and steps, without a window.
class tst_FrameHistory : public QObject
{
    Q_OBJECT

private slots:
    void positions();
    void groups();
    void steps();
    void storedFramesAreTight();
    void positionsBeginAnew();
    void empties();
};

void tst_FrameHistory::positions()
{
    FrameHistory history;
    QCOMPARE(history.logEnd(), 0);
    history.recordSent("a", 163);
    history.recordReceived("b", 165);
    history.recordReceived("c", 17);
    history.recordSent("d", 20);
    QCOMPARE(history.sentFrames, (QList<QByteArray>{"d", "a"}));
    QCOMPARE(history.sentStarts, (QList<int>{348, 0}));
    QCOMPARE(history.sentEnds, (QList<int>{369, 164}));
    QCOMPARE(history.receivedFrames, (QList<QByteArray>{"c", "b"}));
    QCOMPARE(history.receivedStarts, (QList<int>{330, 164}));
    QCOMPARE(history.receivedEnds, (QList<int>{348, 330}));
    QCOMPARE(history.logEnd(), 369);
}

/// An answer is selected with its command where it follows at once.
void tst_FrameHistory::groups()
{
    FrameHistory history;
    const auto range = [&history](int index) {
        const FrameHistory::Range r = history.groupRange(index);
        return QList<int>{r.start, r.end};
    };
    history.recordSent(kFrame, 9);
    QCOMPARE(range(0), (QList<int>{1, 10}));
    history.recordReceived(kFrame, 9);
    QCOMPARE(range(0), (QList<int>{1, 20}));
    history.recordSent(kFrame, 9);
    QCOMPARE(range(0), (QList<int>{21, 30}));
    QCOMPARE(range(1), (QList<int>{1, 10}));
}

void tst_FrameHistory::steps()
{
    FrameHistory history;
    const auto walk = [&history](bool newer) {
        return history.historyIndex = history.nextGroup(newer);
    };
    QCOMPARE(walk(false), 0);
    history.recordReceived(kFrame, 9);
    history.recordReceived(kFrame, 9);
    history.recordSent(kFrame, 9);
    QCOMPARE(walk(false), 1);
    QCOMPARE(walk(false), 0); // past the oldest
    QCOMPARE(walk(true), 0);
    QCOMPARE(walk(false), 1);
    QCOMPARE(walk(true), 0);
}

/// An hour's run stores some 100,000 frames: none may keep a link's buffer alive.
void tst_FrameHistory::storedFramesAreTight()
{
    FrameHistory history;
    QByteArray frame = kFrame;
    frame.reserve(16384);
    history.recordSent(frame, 9);
    history.recordReceived(frame, 9);
    QCOMPARE(history.sentFrames[0].capacity(), 73);
    QCOMPARE(history.receivedFrames[0].capacity(), 73);
}

void tst_FrameHistory::positionsBeginAnew()
{
    FrameHistory history;
    const int last = std::numeric_limits<int>::max();
    history.recordSent(kFrame, last - 1);
    QCOMPARE(history.logEnd(), last);
    history.recordSent(kFrame, 9);
    QCOMPARE(history.sentEnds[0], std::numeric_limits<int>::min() + 9);
}

void tst_FrameHistory::empties()
{
    FrameHistory history;
    history.recordSent(kFrame, 9);
    history.recordReceived(kFrame, 9);
    history.historyIndex = 1;
    history.emptyHistory();
    QCOMPARE(history.sentFrames.size() + history.sentStarts.size() + history.sentEnds.size() +
                 history.receivedFrames.size() + history.receivedStarts.size() +
                 history.receivedEnds.size(),
             0);
    QCOMPARE(history.historyIndex, 0);
}

NACELLE_TEST_MAIN(tst_FrameHistory)
#include "tst_FrameHistory.moc"
