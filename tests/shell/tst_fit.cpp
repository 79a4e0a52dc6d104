#include "foundation/QGlobal.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"

namespace {

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

/// Looks at the real window on a screen of 1920 by 1080.
class tst_fit : public QObject
{
    Q_OBJECT

private slots:
    void sizesFollowTheScreen();
    void everyTextFits_data();
    void everyTextFits();
};

void tst_fit::sizesFollowTheScreen()
{
    Bench bench;
    bench->setGeometry(0, 0, 1920, 1080);
    QCoreApplication::processEvents();
    QCOMPARE(QGlobal::instance()->scaleFactor, 1.0);
    QCOMPARE(bench->styleSheet(), QStringLiteral("font:12px "));
    const auto *host = bench.find<QWidget>("widget_1");
    const auto *pageHost = bench.find<QWidget>("widget_2");
    QVERIFY(qAbs(2 * host->width() - pageHost->width()) <= 2);
    QCOMPARE(bench.find<QWidget>("CurrentPage")->size(), pageHost->size());
    QCOMPARE(bench.find<QWidget>("widget_10")->width(), 80);
    QCOMPARE(bench.find<QWidget>("label52")->width(), 162);
    QCOMPARE(bench.find<QWidget>("lineEdit53")->parentWidget()->height(), 40);
    QCOMPARE(bench.find<QWidget>("pushButton_Create")->width(), 120);
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
    bench->setGeometry(0, 0, 1920, 1080);
    bench.click(qPrintable(pageButton));
    QCoreApplication::processEvents();
    int seen = 0;
    for (QWidget *widget : bench->findChildren<QWidget *>()) {
        const QString text = widget->property("text").toString();
        const bool shows = qobject_cast<QLabel *>(widget) || qobject_cast<QPushButton *>(widget);
        if (!shows || !widget->isVisible() || text.isEmpty() || isFolded(widget))
            continue;
        const QRect needed = widget->fontMetrics().boundingRect(
            QRect(0, 0, widget->width(), 1000), Qt::TextWordWrap, text);
        QVERIFY2(needed.width() <= widget->width() && needed.height() <= widget->height(),
                 qPrintable(widget->objectName() + ": " + text));
        ++seen;
    }
    QVERIFY(seen > 60);
}

NACELLE_TEST_MAIN(tst_fit)
#include "tst_fit.moc"
