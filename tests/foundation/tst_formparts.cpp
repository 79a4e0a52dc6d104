#include "foundation/CellLabel.h"
#include "foundation/FormPanel.h"
#include "foundation/FormRow.h"
#include "tests/support/strictmain.h"

#include <QBoxLayout>

/// Each part looks as a plain widget does, wherever its look comes from.
class tst_formparts : public QObject
{
    Q_OBJECT

private slots:
    void looksPlain_data();
    void looksPlain();
    void leavesTheSizeToItsForm();
    void aPanelIsPaintedAlone();
};

namespace {

/// When the row comes into the window that has the sheet, and when the sheet comes.
enum Order { Inside, PutInside, SheetLast };

template <typename Label, typename Row>
QImage picture(const QString &sheet, Order order)
{
    QWidget window;
    if (order != SheetLast)
        window.setStyleSheet(sheet);
    auto *row = order == PutInside ? new Row : new Row(&window);
    auto *label = new Label(row);
    label->setText(QStringLiteral("载机滚转角 carrier roll angle"));
    label->setWordWrap(true);
    label->setGeometry(5, 5, 110, 60);
    row->setParent(&window);
    row->setGeometry(0, 0, 120, 70);
    window.resize(120, 70);
    window.show();
    if (order == SheetLast)
        window.setStyleSheet(sheet);
    return window.grab().toImage();
}

class PaintedWindow : public QWidget
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent *) override { ++paints; }
};

template <typename Panel>
QImage panelPicture(int &paintsOfTheWindow)
{
    PaintedWindow window;
    window.setStyleSheet("QWidget#panel{background-color:#283142;border-left:3px solid red;}");
    auto *panel = new Panel(&window);
    panel->setObjectName("panel");
    panel->setGeometry(0, 0, 100, 40);
    auto *label = new QLabel(panel);
    label->setGeometry(10, 10, 80, 20);
    window.setFixedSize(100, 50);
    window.show();
    if (!QTest::qWaitFor([&window] { return window.paints > 0; }))
        return {};
    QTest::qWait(100);
    window.paints = 0;
    label->setText("changed");
    QTest::qWait(100);
    paintsOfTheWindow = window.paints;
    return window.grab().toImage();
}

} // namespace

void tst_formparts::looksPlain_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::newRow("no sheet") << QString();
    QTest::newRow("borders and padding")
        << "QLabel{background:#202835;color:white;border-right:7px solid red;"
           "border-bottom:9px solid lime;padding:0px 6px;}";
    QTest::newRow("another font") << "QWidget{font-size:17px;} QLabel{margin:4px;}";
}

void tst_formparts::looksPlain()
{
    QFETCH(QString, sheet);
    for (const Order order : {Inside, PutInside, SheetLast}) {
        const QImage plain = picture<QLabel, QWidget>(sheet, order);
        const QImage own = picture<CellLabel, FormRow>(sheet, order);
        QVERIFY2(own == plain, qPrintable(QString::number(order)));
    }
}

void tst_formparts::leavesTheSizeToItsForm()
{
    QWidget row;
    QHBoxLayout layout(&row);
    layout.setContentsMargins(0, 0, 0, 0);
    CellLabel label(QStringLiteral("a text that is longer than its cell is wide"));
    label.setWordWrap(true);
    layout.addWidget(&label);
    row.setFixedSize(40, 20);
    row.show();
    QCOMPARE(label.size(), QSize(40, 20));
    QCOMPARE(layout.minimumSize(), QSize(0, 0));
    QVERIFY(!layout.hasHeightForWidth());
}

void tst_formparts::aPanelIsPaintedAlone()
{
    int plainPaints = 0, panelPaints = 0;
    const QImage plain = panelPicture<QWidget>(plainPaints);
    QCOMPARE(panelPicture<FormPanel>(panelPaints), plain);
    QCOMPARE(plainPaints, 1);
    QCOMPARE(panelPaints, 0);
}

NACELLE_TEST_MAIN(tst_formparts)
#include "tst_formparts.moc"
