#include "foundation/CellLabel.h"
#include "foundation/FormRow.h"
#include "tests/support/strictmain.h"

#include <QBoxLayout>

/// In a row it looks as a plain label does in a plain widget, wherever its look comes from.
class tst_CellLabel : public QObject
{
    Q_OBJECT

private slots:
    void looksPlain_data();
    void looksPlain();
    void leavesTheSizeToItsForm();
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

} // namespace

void tst_CellLabel::looksPlain_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::newRow("no sheet") << QString();
    QTest::newRow("borders and padding")
        << "QLabel{background:#202835;color:white;border-right:7px solid red;"
           "border-bottom:9px solid lime;padding:0px 6px;}";
    QTest::newRow("another font") << "QWidget{font-size:17px;} QLabel{margin:4px;}";
}

void tst_CellLabel::looksPlain()
{
    QFETCH(QString, sheet);
    for (const Order order : {Inside, PutInside, SheetLast}) {
        const QImage plain = picture<QLabel, QWidget>(sheet, order);
        const QImage own = picture<CellLabel, FormRow>(sheet, order);
        QVERIFY2(own == plain, qPrintable(QString::number(order)));
    }
}

void tst_CellLabel::leavesTheSizeToItsForm()
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

NACELLE_TEST_MAIN(tst_CellLabel)
#include "tst_CellLabel.moc"
