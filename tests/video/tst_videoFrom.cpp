#include "foundation/QGlobal.h"
#include "tests/support/carrier.h"
#include "tests/support/strictmain.h"
#include "tests/support/videobench.h"

#include <QElapsedTimer>
#include <QImage>

/// An address where nobody listens.
static const QString kNobody = QStringLiteral("rtsp://127.0.0.1:1/pod");

class tst_videoFrom : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        m_bench.reset();
        QGlobal::instance()->languageChinese = true;
        QGlobal::instance()->ffmpegEngine = false;
    }
    void framesOfAPick_data();
    void framesOfAPick();
    void readoutsAreWhatIsSent();
    void picksBeyondTheEdges_data();
    void picksBeyondTheEdges();
    void pictureInPictureGoesRound();
    void pictureKeepsItsShape_data();
    void pictureKeepsItsShape();
    void playButton();
    void lifeOfTheWindow();
    void languageChanges();
    void rubberBand_data();
    void rubberBand();
    void picturesPassTheGate();
    void picturesFillTheSurface_data();
    void picturesFillTheSurface();
    void anEmptyPictureFreezes();

private:
    void open() { m_bench = std::make_unique<VideoBench>(); }
    void openPlaying()
    {
        open();
        m_bench->setArea(1600, 900);
        m_bench->play(kNobody);
    }
    /// Lengths as in the frame, version, and what follows offset 68, in upper-case hexadecimal.
    QString lastFrame()
    {
        const QList<QByteArray> &frames = (*m_bench)->sentFrames;
        if (frames.isEmpty())
            return {};
        const QByteArray frame = frames.first();
        if (!frame.startsWith(QByteArray::fromHex("A8E5")) ||
            frame.mid(5, 7) != QByteArray::fromHex("00000000000001") ||
            frame.mid(12, 57) != initialCarrier())
            return QStringLiteral("wrong head: ") + frame.toHex();
        return frame.mid(2, 3).toHex().toUpper() + ' ' + frame.mid(69).toHex().toUpper();
    }

    std::unique_ptr<VideoBench> m_bench;
};

void tst_videoFrom::framesOfAPick_data()
{
    QTest::addColumn<QString>("selection");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("kk");
    QTest::addColumn<QString>("readouts");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *selection, const char *command, const char *kk,
                        const char *readouts, const char *expected) {
        QTest::addRow("%s %s %s", selection, command, kk)
            << selection << command << kk << readouts << expected;
    };
    row("Pointing", "Send", "01", "2500 2500 - -", "4D0001 1A01C409C4092117");
    row("Pointing", "Quit", "01", "2500 2500 - -", ""); // a pointing has no end
    row("Cursor", "Send", "01", "2500 2500 - -", "4E0001 330101C409C4096A06");
    row("Cursor", "Quit", "01", "2500 2500 - -", "4E0001 330100C409C409C057");
    row("Cursor", "Send", "FE", "2500 2500 - -", "4E0001 33FE01C409C4093EB9");
    row("Region", "Send", "01", "2500 2500 7500 7500", "520001 300101C409C4094C1D4C1DFE4D");
    row("Region", "Quit", "01", "2500 2500 7500 7500", "520001 300100C409C4094C1D4C1D156E");
    row("Region", "Send", "FE", "2500 2500 7500 7500", "520001 30FE01C409C4094C1D4C1D9349");
    row("Tracking", "Send", "01", "2500 2500 7500 7500", "520001 170101C409C4094C1D4C1D7D8A");
    row("Tracking", "Quit", "FE", "2500 2500 7500 7500", "520001 170100C409C4094C1D4C1D96A9");
}

void tst_videoFrom::framesOfAPick()
{
    QFETCH(QString, selection);
    QFETCH(QString, command);
    QFETCH(QString, kk);
    openPlaying();
    m_bench->find<QLineEdit>("lineEdit_315")->setText(kk);
    m_bench->press(qPrintable("pushButton_" + selection));
    m_bench->drag({400, 225}, {1200, 675});
    QTEST(m_bench->readouts(), "readouts");
    QVERIFY((*m_bench)->sentFrames.isEmpty()); // a pick alone sends nothing
    m_bench->press(qPrintable("pushButton_" + command));
    QTEST(lastFrame(), "expected");
}

/// The read-outs keep their values when the selection changes, and are read as they stand.
void tst_videoFrom::readoutsAreWhatIsSent()
{
    openPlaying();
    m_bench->press("pushButton_Send");
    QCOMPARE(lastFrame(), QString("4D0001 1A01000000008D6A"));
    m_bench->press("pushButton_Cursor");
    m_bench->press("pushButton_Send");
    QCOMPARE(lastFrame(), QString("4E0001 33010100000000C67B"));

    m_bench->press("pushButton_Pointing");
    m_bench->drag({400, 225}, {400, 225});
    m_bench->press("pushButton_Tracking");
    m_bench->press("pushButton_Send");
    QCOMPARE(lastFrame(), QString("520001 170101C409C40900000000D62B"));

    m_bench->drag({400, 225}, {1200, 675});
    m_bench->press("pushButton_Pointing");
    QCOMPARE(m_bench->readouts(), QString("2500 2500 7500 7500"));
    m_bench->press("pushButton_Send");
    QCOMPARE(lastFrame(), QString("4D0001 1A01C409C4092117"));
}

void tst_videoFrom::picksBeyondTheEdges_data()
{
    QTest::addColumn<QPoint>("press");
    QTest::addColumn<QPoint>("release");
    QTest::addColumn<QString>("readouts");
    QTest::newRow("click in the middle")
        << QPoint(500, 281) << QPoint(500, 281) << "5000 4991 5000 4991";
    QTest::newRow("left") << QPoint(500, 281) << QPoint(-50, 0) << "5000 4991 65036 0";
    QTest::newRow("top") << QPoint(0, 281) << QPoint(999, -1) << "0 4991 9990 65519";
    QTest::newRow("right and bottom") << QPoint(1, 1) << QPoint(1200, 563) << "10 17 12000 10000";
    QTest::newRow("far away") << QPoint(0, 0) << QPoint(7000, 0) << "0 0 4464 0";
}

void tst_videoFrom::picksBeyondTheEdges()
{
    QFETCH(QPoint, press);
    QFETCH(QPoint, release);
    open();
    m_bench->play(kNobody);
    m_bench->surface()->setFixedSize(1000, 563);
    m_bench->press("pushButton_Tracking");
    m_bench->drag(press, release);
    QTEST(m_bench->readouts(), "readouts");
}

void tst_videoFrom::pictureInPictureGoesRound()
{
    open();
    for (const char *expected : {"74012ACE", "74021AAD", "74030A8C", "74047A6B", "74012ACE"}) {
        m_bench->press("pushButton_Switch");
        QCOMPARE(lastFrame(), QString("490001 ") + expected);
    }
}

void tst_videoFrom::pictureKeepsItsShape_data()
{
    QTest::addColumn<QSize>("area");
    QTest::addColumn<QRect>("picture");
    QTest::newRow("exact") << QSize(1600, 900) << QRect(0, 0, 1600, 900);
    QTest::newRow("tall") << QSize(1280, 800) << QRect(0, 40, 1280, 720);
    QTest::newRow("wide") << QSize(1800, 900) << QRect(100, 0, 1600, 900);
}

void tst_videoFrom::pictureKeepsItsShape()
{
    QFETCH(QSize, area);
    open();
    m_bench->play(kNobody);
    m_bench->setArea(area.width(), area.height());
    QTEST(m_bench->surface()->geometry(), "picture");
    m_bench->play(kNobody); // a new surface comes in the same place
    QTEST(m_bench->surface()->geometry(), "picture");
}

void tst_videoFrom::playButton()
{
    open();
    auto *namesake = new QWidget(m_bench->part<QWidget>("widget"));
    namesake->setObjectName("second vlc");
    m_bench->play(kNobody);
    QPointer<VLCWidget> first = m_bench->surface();
    QVERIFY(first);
    QCOMPARE(namesake->geometry(), first->geometry());

    m_bench->part<QLineEdit>("lineEdit")->setText("  \t ");
    m_bench->press("pushButton_Refresh");
    QCOMPARE(Bench::takeNotices(), QStringList("URL不能为空！"));
    QCOMPARE(m_bench->surface(), first.data());

    m_bench->play(' ' + kNobody + ' ');
    QVERIFY(!first);
    QCOMPARE(m_bench->video()->findChildren<VLCWidget *>().size(), 1);
    QVERIFY(m_bench->part<QWidget>("second vlc"));
}

void tst_videoFrom::lifeOfTheWindow()
{
    open();
    QPointer<videoFrom> first = m_bench->video();
    QCOMPARE(first->windowTitle(), QString("视频"));
    QCOMPARE(first->size(), QSize(1165, 587));
    m_bench->press("pushButton_Switch");
    m_bench->window()->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_bench->window()));
    m_bench->click("pushButton_video");
    QVERIFY(QTest::qWaitForWindowActive(first));
    QCOMPARE(m_bench->video(), first.data());

    const auto enabled = [&](const char *name) { return m_bench->part(name)->isEnabled(); };
    m_bench->click("pushButton_1");
    for (const char *name :
         {"pushButton_Send", "pushButton_Quit", "pushButton_Switch", "pushButton_Refresh"})
        QVERIFY2(!enabled(name), name);
    QVERIFY(enabled("pushButton_Cursor"));

    m_bench->click("pushButton_2");
    m_bench->find<QLineEdit>("lineEdit")->setText("05"); // the new page's version field
    m_bench->press("pushButton_Switch");
    QVERIFY(lastFrame().startsWith("490005 7402"));

    first->close();
    QVERIFY(!m_bench->video());
    m_bench->openVideo();
    QVERIFY(first); // the old one is kept
    QVERIFY(m_bench->video() != first.data());
    QCOMPARE(m_bench->readouts(), QString("   "));
    m_bench->press("pushButton_Switch");
    QVERIFY(lastFrame().startsWith("490005 7401"));
    delete first.data();
}

void tst_videoFrom::languageChanges()
{
    open();
    QGlobal::instance()->languageChinese = false;
    (*m_bench)->retranslate();
    QCOMPARE(m_bench->video()->windowTitle(), QString("Video"));
    QCOMPARE(m_bench->part("pushButton_Send")->text(), QString("Send"));
    QCOMPARE(m_bench->part<QLabel>("label_1")->text(), QString("XO X0（DEC）"));
}

void tst_videoFrom::rubberBand_data()
{
    QTest::addColumn<bool>("ffmpeg");
    QTest::addColumn<QString>("selection");
    QTest::addColumn<bool>("shown");
    QTest::newRow("tracking") << true << "Tracking" << true;
    QTest::newRow("region") << true << "Region" << true;
    QTest::newRow("pointing") << true << "Pointing" << false;
    QTest::newRow("libVLC has the picture") << false << "Tracking" << false;
}

void tst_videoFrom::rubberBand()
{
    QFETCH(bool, ffmpeg);
    QFETCH(QString, selection);
    QFETCH(bool, shown);
    QGlobal::instance()->ffmpegEngine = ffmpeg;
    openPlaying();
    m_bench->press("pushButton_Tracking");
    m_bench->press(qPrintable("pushButton_" + selection));
    m_bench->mouse(QEvent::MouseButtonPress, {800, 500});
    m_bench->mouse(QEvent::MouseMove, {200, 100});
    const auto colourAt = [&](int x, int y) {
        return m_bench->surface()->grab().toImage().pixelColor(x, y);
    };
    QCOMPARE(colourAt(200, 300) == Qt::red, shown);
    QCOMPARE(colourAt(500, 500) == Qt::red, shown);
    QVERIFY(colourAt(500, 300) != Qt::red); // the band is empty inside
    m_bench->mouse(QEvent::MouseButtonRelease, {200, 100});
    QVERIFY(colourAt(200, 300) != Qt::red);
}

static QImage plain(Qt::GlobalColor colour)
{
    QImage image(64, 36, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

void tst_videoFrom::picturesPassTheGate()
{
    QGlobal::instance()->ffmpegEngine = true;
    openPlaying();
    VLCWidget *surface = m_bench->surface();
    const auto colour = [&] { return surface->grab().toImage().pixelColor(799, 450); };
    QCOMPARE(colour(), QColor(Qt::black));
    QElapsedTimer sinceFirst;
    do { // as often as it takes to get two of them in within the gate's time
        QTest::qWait(60);
        sinceFirst.start();
        surface->slotGetOneFrame(plain(Qt::green));
        QTest::qWait(20);
        surface->slotGetOneFrame(plain(Qt::blue));
    } while (sinceFirst.elapsed() > 40);
    QCOMPARE(colour(), QColor(Qt::green));
    QTest::qWait(60);
    surface->slotGetOneFrame(plain(Qt::blue));
    QCOMPARE(colour(), QColor(Qt::blue));
}

/// A picture whose left and right half have the colours.
static QImage halves(const QSize &size, QImage::Format format, QRgb left, QRgb right)
{
    QImage image(size, format);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, x < size.width() / 2 ? left : right);
    return image;
}

void tst_videoFrom::picturesFillTheSurface_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<QString>("colours"); // at 0, 799, 800 and 1599 of the surface's 1600 pixels
    constexpr QImage::Format kOpaque = QImage::Format_RGB32;
    const QString whole = "#ff0000 #ff0000 #0000ff #0000ff";
    QTest::newRow("larger") << halves({2000, 1200}, kOpaque, 0xffff0000, 0xff0000ff) << whole;
    QTest::newRow("smaller, another shape")
        << halves({2, 8}, kOpaque, 0xffff0000, 0xff0000ff) << whole;
    QTest::newRow("the surface's size")
        << halves({1600, 900}, kOpaque, 0xffff0000, 0xff0000ff) << whole;
    QTest::newRow("seen through") << halves({4, 2}, QImage::Format_ARGB32, 0, 0xffffffff)
                                  << "#000000 #000000 #ffffff #ffffff";
}

/// Each after a green one, of which nothing stays; until the next, one that the surface has
/// outgrown stands on black.
void tst_videoFrom::picturesFillTheSurface()
{
    QFETCH(QImage, picture);
    QGlobal::instance()->ffmpegEngine = true;
    openPlaying();
    VLCWidget *surface = m_bench->surface();
    const auto colours = [&](std::initializer_list<int> places) {
        QImage seen(surface->size(), QImage::Format_RGB32);
        seen.fill(Qt::magenta); // shows through where nothing is painted
        surface->render(&seen);
        QStringList names;
        for (const int x : places)
            names << seen.pixelColor(x, 450).name();
        return names.join(' ');
    };
    const QImage original = picture.copy();
    for (const QImage &next : {plain(Qt::green), picture}) {
        QTest::qWait(60);
        surface->slotGetOneFrame(next);
    }
    QTEST(colours({0, 799, 800, 1599}), "colours");
    m_bench->setArea(1760, 990);
    QTEST(colours({80, 879, 880, 1679}), "colours");
    QCOMPARE(colours({0, 79, 1680, 1759}), QString("#000000 #000000 #000000 #000000"));
    QTest::qWait(60);
    surface->slotGetOneFrame(plain(Qt::green));
    QCOMPARE(colours({0, 1759}), QString("#00ff00 #00ff00"));
    QCOMPARE(picture, original); // its pixels are the decoder's
}

void tst_videoFrom::anEmptyPictureFreezes()
{
    QGlobal::instance()->ffmpegEngine = true;
    openPlaying();
    VLCWidget *surface = m_bench->surface();
    surface->slotGetOneFrame(plain(Qt::green));
    surface->slotGetOneFrame(QImage());
    QTest::qWait(60);
    surface->slotGetOneFrame(plain(Qt::blue));
    QCOMPARE(surface->grab().toImage().pixelColor(799, 450), QColor(Qt::green));
}

NACELLE_TEST_MAIN(tst_videoFrom)
#include "tst_videoFrom.moc"
