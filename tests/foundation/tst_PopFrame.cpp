#include "foundation/PopFrame.h"
#include "foundation/QGlobal.h"
#include "tests/support/strictmain.h"

#include <QPushButton>

class tst_PopFrame : public QObject
{
    Q_OBJECT

private slots:
    void looks();
    void bothButtonsClose_data();
    void bothButtonsClose();
    void blocksOtherWindows();
};

void tst_PopFrame::looks()
{
    QGlobal *global = QGlobal::instance();
    global->languageChinese = false;
    global->palette->insert(QStringLiteral("bright"), QStringLiteral("#ABCDEF"));
    global->palette->remove(QStringLiteral("monitor"));
    PopFrame box(nullptr);
    global->languageChinese = true;
    QCOMPARE(box.size(), QSize(401, 192));
    QVERIFY(box.windowFlags() & Qt::FramelessWindowHint);
    QCOMPARE(box.windowModality(), Qt::ApplicationModal);
    QCOMPARE(box.windowTitle(), QStringLiteral("Notice"));
    const auto *label = box.findChild<QLabel *>(QStringLiteral("label_1"));
    QCOMPARE(label->geometry(), QRect(20, 50, 361, 40));
    QVERIFY(label->wordWrap());
    QCOMPARE(label->styleSheet(), QStringLiteral("color:#ABCDEF"));
    QCOMPARE(label->alignment(), Qt::AlignCenter);
    const auto *ok = box.findChild<QPushButton *>(QStringLiteral("pushButtonOK"));
    QCOMPARE(ok->geometry(), QRect(0, 140, 201, 52));
    QCOMPARE(ok->text(), QStringLiteral("OK"));
    const auto *cancel = box.findChild<QPushButton *>(QStringLiteral("pushButtonCancel"));
    QCOMPARE(cancel->geometry(), QRect(200, 140, 201, 52));
    QCOMPARE(cancel->text(), QStringLiteral("Cancel"));
    QCOMPARE(cancel->styleSheet(), QStringLiteral("QPushButton{background-color:; color:#ABCDEF; "
                                                  "border:1px solid; }"));
}

void tst_PopFrame::bothButtonsClose_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("ok") << "pushButtonOK";
    QTest::newRow("cancel") << "pushButtonCancel";
}

void tst_PopFrame::bothButtonsClose()
{
    QFETCH(QString, button);
    PopFrame box(nullptr);
    box.setMessage(QStringLiteral("message"));
    QCOMPARE(box.findChild<QLabel *>(QStringLiteral("label_1"))->text(), QStringLiteral("message"));
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QTest::mouseClick(box.findChild<QPushButton *>(button), Qt::LeftButton);
    QVERIFY(!box.isVisible());
    // It stays and can be shown again; its window on the screen doesn't wait for that.
    QTRY_VERIFY(!box.windowHandle());
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
}

void tst_PopFrame::blocksOtherWindows()
{
    QPushButton other(QStringLiteral("other"));
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    int clicks = 0;
    connect(&other, &QPushButton::clicked, this, [&clicks] { ++clicks; });
    showNotice("TCP连接失败！");
    QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    QCOMPARE(clicks, 0);
    auto *box = qobject_cast<PopFrame *>(QApplication::activeModalWidget());
    QVERIFY(box);
    box->ok();
    QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    QCOMPARE(clicks, 1);
}

NACELLE_TEST_MAIN(tst_PopFrame)
#include "tst_PopFrame.moc"
