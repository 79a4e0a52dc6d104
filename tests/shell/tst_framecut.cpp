#include "shell/framecut.h"
#include "tests/support/strictmain.h"

namespace {

/// A frame of 73 bytes that doesn't hold its own header a second time.
QByteArray frameOf(char mark)
{
    return QByteArray::fromHex("8A5E490001") + QByteArray(66, mark) + QByteArray::fromHex("1234");
}

const QByteArray kA = frameOf('a');
const QByteArray kB = frameOf('b');

} // namespace

class tst_framecut : public QObject
{
    Q_OBJECT

private slots:
    void splitAtEveryPosition();
    void chunks_data();
    void chunks();
    void modes();
};

void tst_framecut::splitAtEveryPosition()
{
    for (int at = 1; at < kA.size(); ++at) {
        QByteArray cache;
        QList<QByteArray> frames;
        const auto record = [&frames](const QByteArray &frame, quint8) { frames << frame; };
        cutChunk(cache, kA.left(at), record);
        cutChunk(cache, kA.mid(at), record);
        // Cut inside its header's length the frame comes out whole after an empty one.
        const QList<QByteArray> expected =
            at <= 2 ? QList<QByteArray>{QByteArray(), kA} : QList<QByteArray>{kA};
        QCOMPARE(frames, expected);
        QCOMPARE(cache, at <= 2 ? kA.mid(at) : QByteArray());
    }
}

void tst_framecut::chunks_data()
{
    using List = QList<QByteArray>;
    QTest::addColumn<List>("chunks");
    QTest::addColumn<List>("frames");
    QTest::addColumn<QByteArray>("kept");

    const QByteArray tail = QByteArray("tail");
    QTest::newRow("whole") << List{kA} << List{kA} << QByteArray();
    QTest::newRow("two in one chunk") << List{kA + kB} << List{kA} << kB;
    QTest::newRow("two in one chunk, then a header")
        << List{kA + kB, kA} << List{kA, kA} << QByteArray();
    // The cached frame comes out at once, and of the new chunk only what follows S is kept.
    QTest::newRow("two in one chunk, then a tail")
        << List{kA + kB, tail} << List{kA, kB} << QByteArray();
    QTest::newRow("two in one chunk, then a long tail")
        << List{kA + kB, QByteArray(73, 'x') + tail} << List{kA, kB} << tail;
    QTest::newRow("three in one chunk, then a tail")
        << List{kA + kB + kA, tail} << List{kA, kB + kA + tail} << QByteArray();
    QTest::newRow("a frame and half of the next")
        << List{kA + kB.left(40), kB.mid(40)} << List{kA, kB} << QByteArray();
    // After the completed frame the rest is cut at S = 73, not at S - 40: 40 of its bytes go.
    QTest::newRow("asymmetry") << List{kA.left(40), kA.mid(40) + QByteArray(40, 'y') + tail}
                               << List{kA} << tail;
    QTest::newRow("asymmetry, rest shorter than S")
        << List{kA.left(40), kA.mid(40) + tail} << List{kA} << QByteArray();
    QTest::newRow("a header starts anew") << List{kA.left(40), kB} << List{kB} << QByteArray();
    QTest::newRow("tail of a frame that begins like one")
        << List{kA.left(40), QByteArray::fromHex("8A5E4900") + "z"} << List{}
        << QByteArray::fromHex("8A5E4900") + "z";
    QTest::newRow("noise") << List{tail} << List{QByteArray()} << tail;
    QTest::newRow("noise, then a frame")
        << List{tail, kA} << List{QByteArray(), kA} << QByteArray();
    QTest::newRow("one byte at a time")
        << List{kA.mid(0, 1), kA.mid(1, 1), kA.mid(2, 1)}
        // The third byte meets a cache without a length: all there is counts as a frame.
        << List{QByteArray(), QByteArray::fromHex("8A5E"), QByteArray::fromHex("5E49")}
        << QByteArray::fromHex("49");
    QTest::newRow("length 0") << List{QByteArray::fromHex("8A5E0000AA")} << List{QByteArray()}
                              << QByteArray::fromHex("8A5E0000AA");
    QTest::newRow("length below the header")
        << List{QByteArray::fromHex("8A5E0300AA")} << List{QByteArray::fromHex("8A5E03")}
        << QByteArray::fromHex("00AA");
    QTest::newRow("negative length")
        << List{QByteArray::fromHex("8A5EFFFFAA")} << List{QByteArray::fromHex("8A5EFFFFAA")}
        << QByteArray::fromHex("8A5EFFFFAA");
    QTest::newRow("negative length in the cache")
        << List{QByteArray::fromHex("8A5EFFFFAA"), tail}
        << List{QByteArray::fromHex("8A5EFFFFAA"), QByteArray::fromHex("8A5EFFFFAA") + tail}
        << tail;
    QTest::newRow("empty chunk") << List{QByteArray()} << List{QByteArray()} << QByteArray();
}

void tst_framecut::chunks()
{
    QFETCH(QList<QByteArray>, chunks);
    QFETCH(QList<QByteArray>, frames);
    QFETCH(QByteArray, kept);
    QByteArray cache;
    QList<QByteArray> recorded;
    for (const QByteArray &chunk : chunks)
        cutChunk(cache, chunk, [&](const QByteArray &frame, quint8) { recorded << frame; });
    QCOMPARE(recorded, frames);
    QCOMPARE(cache, kept);
}

/// A pod's mode stands in the chunk with a header, even after the end of a short frame.
void tst_framecut::modes()
{
    const struct
    {
        QList<QByteArray> chunks;
        int mode;
    } rows[] = {{{kA}, 'a'},
                {{QByteArray::fromHex("8A5E04000110AABB")}, 0x10},
                {{QByteArray::fromHex("8A5E0000AA")}, 0},
                {{QByteArray("noise!")}, 0},
                {{kA.left(40), kA.mid(40) + "tail"}, 'a'}};
    for (const auto &row : rows) {
        QByteArray cache;
        int last = -1;
        for (const QByteArray &chunk : row.chunks)
            cutChunk(cache, chunk, [&last](const QByteArray &, quint8 mode) { last = mode; });
        QCOMPARE(last, row.mode);
    }
}

NACELLE_TEST_MAIN(tst_framecut)
#include "tst_framecut.moc"
