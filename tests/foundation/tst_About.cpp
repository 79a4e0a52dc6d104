#include "foundation/About.h"
#include "foundation/QGlobal.h"
#include "tests/support/realdesktop.h"
#include "tests/support/strictmain.h"

#include <QPointer>
#include <QScreen>

/// Runs on screens of 1080 and of 2160 lines, with a real mouse and a window manager.
class tst_About : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void sizeAndPlace();
    void looks();
    void everyTextFits_data();
    void everyTextFits();
    void titleBarDrags();
    void buttonClosesForGood();

private:
    /// A size of the form at the screen's scale, which is whole here.
    int sized(int base) const { return base * m_scale; }

    template <typename T>
    T *find(const char *name)
    {
        T *found = m_about->findChild<T *>(QLatin1String(name));
        if (!found)
            qFatal("no widget %s", name);
        return found;
    }

    int m_scale = 1;
    QPointer<About> m_about;
};

void tst_About::initTestCase()
{
    m_scale = QGuiApplication::primaryScreen()->size().height() / 1080;
    QGlobal::instance()->scaleFactor = m_scale;
}

void tst_About::init()
{
    RealMouse::move({5, 5});
    m_about = new About(nullptr);
    m_about->show();
    QVERIFY(QTest::qWaitForWindowActive(m_about));
}

void tst_About::cleanup()
{
    QGlobal::instance()->languageChinese = true;
    if (m_about)
        m_about->close();
    QTRY_VERIFY(!m_about);
}

void tst_About::sizeAndPlace()
{
    const QRect expected = m_scale == 1 ? QRect(690, 360, 540, 360) : QRect(1380, 720, 1080, 720);
    QCOMPARE(m_about->geometry(), expected);
    QCOMPARE(About(nullptr).geometry(), expected); // before a window manager has had its say
    QCOMPARE(find<QWidget>("widgetTop")->geometry(), QRect(0, 0, sized(540), sized(40)));
    QCOMPARE(find<QPushButton>("pushButton_Close")->geometry(),
             QRect(sized(500), 0, sized(40), sized(40)));
    for (const char *line : {"lineEdit", "lineEdit_2", "lineEdit_4"})
        QVERIFY(find<QLineEdit>(line)->height() >= sized(32));
}

void tst_About::looks()
{
    QVERIFY(m_about->windowFlags().testFlag(Qt::FramelessWindowHint));
    QVERIFY(!m_about->windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    QCOMPARE(m_about->windowTitle(), QStringLiteral("关于"));
    QVERIFY(!m_about->windowIcon().isNull());
    QCOMPARE(QApplication::activeModalWidget(), m_about.data());
    QVERIFY(find<QLabel>("label")->text().isEmpty());
    QCOMPARE(find<QLineEdit>("lineEdit")->fontInfo().pixelSize(), m_scale == 1 ? 16 : 31);
    QCOMPARE(find<QLineEdit>("lineEdit_4")->fontInfo().pixelSize(), m_scale == 1 ? 15 : 29);
    QCOMPARE(find<QLineEdit>("lineEdit_2")->styleSheet(),
             QStringLiteral("QLineEdit{ background-color:#202835; color:#FFFFFF;border:0px "
                            "solid#323E52;font:%1px}QLineEdit:disabled{color: gray;}")
                 .arg(m_scale == 1 ? 15 : 29));
    const QImage picture = m_about->grab().toImage();
    QCOMPARE(picture.pixelColor(sized(20), sized(20)), QColor("#283142"));
    QCOMPARE(picture.pixelColor(sized(20), sized(60)), QColor("#202835"));
    QCOMPARE(picture.pixelColor(sized(520), sized(20)), QColor(Qt::white)); // the cross
}

void tst_About::everyTextFits_data()
{
    QTest::addColumn<bool>("chinese");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("Chinese") << true
                             << QStringList{"云台报文工作台项目组 " NACELLE_VERSION,
                                            "nacellebench.example",
                                            "仅供台架测试使用，不得用于飞行操作。"};
    QTest::newRow("English") << false
                             << QStringList{"The Gimbal Frame Workbench project " NACELLE_VERSION,
                                            "nacellebench.example",
                                            "For bench testing only. Not for flight use."};
}

void tst_About::everyTextFits()
{
    QFETCH(bool, chinese);
    QFETCH(QStringList, texts);
    m_about->close();
    QGlobal::instance()->languageChinese = chinese;
    m_about = new About(nullptr);
    m_about->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_about));
    QStringList shown;
    for (const char *name : {"lineEdit", "lineEdit_2", "lineEdit_4"}) {
        const auto *line = find<QLineEdit>(name);
        QVERIFY(line->isReadOnly());
        QVERIFY(line->fontMetrics().horizontalAdvance(line->text()) < line->width());
        shown << line->text();
    }
    QCOMPARE(shown, texts);
}

void tst_About::titleBarDrags()
{
    const QPoint onLabel = m_about->geometry().topLeft() + QPoint(sized(100), sized(20));
    const QRect expected = m_about->geometry().translated(90, -70);
    QCOMPARE(dragWindow(*m_about, onLabel, onLabel + QPoint(0, 12), {90, -70}, expected), expected);
}

void tst_About::buttonClosesForGood()
{
    RealMouse().click(m_about->geometry().topLeft() + QPoint(sized(520), sized(20)));
    QTRY_VERIFY(!m_about);
}

NACELLE_TEST_MAIN(tst_About)
#include "tst_About.moc"
