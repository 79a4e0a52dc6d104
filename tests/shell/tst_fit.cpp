#include "foundation/QGlobal.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"

#include <QScreen>

namespace {

QSize screenSize()
{
    return QGuiApplication::primaryScreen()->size();
}

/// The console's control panels have no height until the pod reports a mode.
bool isFolded(const QWidget *widget)
{
    for (; widget; widget = widget->parentWidget()) {
        if (widget->height() == 0 || widget->width() == 0)
            return true;
    }
    return false;
}

} // namespace

/// Looks at the real window on the whole of a screen.
class tst_fit : public QObject
{
    Q_OBJECT

private slots:
    void sizesFollowTheScreen();
    void everyTextFits_data();
    void everyTextFits();
};

/// Every size is a base value times screen height / 1080, truncated.
void tst_fit::sizesFollowTheScreen()
{
    const bool fullHd = screenSize().height() == 1080;
    Bench bench;
    bench->setGeometry(QRect(QPoint(), screenSize()));
    QCoreApplication::processEvents();
    QCOMPARE(QGlobal::instance()->scaleFactor, fullHd ? 1.0 : 768 / 1080.0);
    QCOMPARE(bench->styleSheet(), fullHd ? "font:12px " : "font:8.53333px ");
    const auto *host = bench.find<QWidget>("widget_1");
    const auto *pageHost = bench.find<QWidget>("widget_2");
    QVERIFY(qAbs(2 * host->width() - pageHost->width()) <= 2);
    QCOMPARE(bench.find<QWidget>("CurrentPage")->size(), pageHost->size());
    QCOMPARE(bench.find<QWidget>("menuButton")->width(), fullHd ? 32 : 22);
    QCOMPARE(bench.find<QWidget>("widget_10")->width(), fullHd ? 80 : 56);
    QCOMPARE(bench.find<QWidget>("label52")->width(), fullHd ? 162 : 110);
    QCOMPARE(bench.find<QWidget>("lineEdit53")->parentWidget()->height(), fullHd ? 40 : 28);
    QCOMPARE(bench.find<QWidget>("pushButton_Create")->width(), fullHd ? 120 : 85);
    // A fractional size in the sheet is passed over; a whole and legible one holds.
    QCOMPARE(bench.find<QLabel>("label52")->fontInfo().pixelSize(), fullHd ? 12 : 10);
}

void tst_fit::everyTextFits_data()
{
    QTest::addColumn<bool>("chinese");
    QTest::addColumn<QString>("pageButton");
    QTest::newRow("workbench, Chinese") << true << "pushButton_1";
    QTest::newRow("workbench, English") << false << "pushButton_1";
    QTest::newRow("console, Chinese") << true << "pushButton_2";
    QTest::newRow("console, English") << false << "pushButton_2";
}

/// No label or button of window, panel and page may cut its text off.
void tst_fit::everyTextFits()
{
    QFETCH(bool, chinese);
    QFETCH(QString, pageButton);
    QGlobal::instance()->languageChinese = chinese;
    Bench bench;
    bench->setGeometry(QRect(QPoint(), screenSize()));
    bench.click(qPrintable(pageButton));
    QCoreApplication::processEvents();
    int seen = 0;
    for (QWidget *widget : bench->findChildren<QWidget *>()) {
        const QString text = widget->property("text").toString();
        const bool shows = qobject_cast<QLabel *>(widget) || qobject_cast<QPushButton *>(widget);
        if (!shows || !widget->isVisible() || text.isEmpty() || isFolded(widget))
            continue;
        const auto *label = qobject_cast<QLabel *>(widget);
        const int wrap = label && label->wordWrap() ? Qt::TextWordWrap : 0;
        const QRect needed =
            widget->fontMetrics().boundingRect(QRect(0, 0, widget->width(), 1000), wrap, text);
        QVERIFY2(needed.width() <= widget->width() && needed.height() <= widget->height(),
                 qPrintable(widget->objectName() + ": " + text));
        ++seen;
    }
    QVERIFY(seen > 60);
}

NACELLE_TEST_MAIN(tst_fit)
#include "tst_fit.moc"
