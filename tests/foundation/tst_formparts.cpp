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
    void aPanelIsPaintedAlone_data();
    void aPanelIsPaintedAlone();
};

namespace {

/// The row is made inside the styled window, is put into it later, or is there before the sheet.
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

template <typename Base>
class Painted : public Base
{
public:
    using Base::Base;
    int paints = 0;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        ++paints;
        Base::paintEvent(event);
    }
};

struct Seen
{
    QImage picture;
    int paintsBelow = -1; ///< of the window, at a change of one label on the panel
};

template <typename Panel>
Seen seenOf(const QString &rule)
{
    Painted<QWidget> window;
    window.setStyleSheet("#panel{" + rule + "}");
    auto *panel = new Panel(&window);
    panel->setObjectName("panel");
    panel->setGeometry(0, 0, 100, 40);
    auto *label = new Painted<QLabel>(panel);
    label->setGeometry(10, 10, 80, 20);
    window.setFixedSize(100, 50);
    window.show();
    if (!QTest::qWaitFor([&] { return window.paints > 0 && label->paints > 0; }))
        return {};
    window.paints = label->paints = 0;
    label->setText("changed");
    if (!QTest::qWaitFor([label] { return label->paints > 0; }))
        return {};
    const int paintsBelow = window.paints;
    return {window.grab().toImage(), paintsBelow};
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
    QWidget window;
    window.resize(400, 100);
    QWidget row(&window);
    QHBoxLayout layout(&row);
    layout.setContentsMargins(0, 0, 0, 0);
    CellLabel label(QStringLiteral("a text that is longer than its cell is wide"));
    label.setWordWrap(true);
    layout.addWidget(&label);
    row.setFixedSize(40, 20);
    window.show();
    QCOMPARE(label.size(), QSize(40, 20));
    QCOMPARE(layout.minimumSize(), QSize(0, 0));
    QVERIFY(!layout.hasHeightForWidth());
}

void tst_formparts::aPanelIsPaintedAlone_data()
{
    QTest::addColumn<QString>("rule");
    QTest::addColumn<int>("paintsBelow");
    QTest::newRow("filled") << "background-color:#283142;border-left:3px solid red;" << 0;
    QTest::newRow("half seen through") << "background-color:rgba(40,49,66,128);" << 1;
    QTest::newRow("none") << "" << 1;
}

void tst_formparts::aPanelIsPaintedAlone()
{
    QFETCH(QString, rule);
    const Seen plain = seenOf<QWidget>(rule);
    const Seen panel = seenOf<FormPanel>(rule);
    QCOMPARE(panel.picture, plain.picture);
    QCOMPARE(plain.paintsBelow, 1);
    QTEST(panel.paintsBelow, "paintsBelow");
}

NACELLE_TEST_MAIN(tst_formparts)
#include "tst_formparts.moc"
