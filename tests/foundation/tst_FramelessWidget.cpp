#include "foundation/FramelessWidget.h"
#include "tests/support/realdesktop.h"
#include "tests/support/strictmain.h"

#include <QBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <memory>

namespace {

class DerivedButton : public QPushButton
{
    Q_OBJECT
    using QPushButton::QPushButton;
};

/// A window of 400 x 300: a title bar with a label, a button and a derived button of 100 x 40 each,
/// and an entry field that fills the rest to the very edges.
class TitledWindow : public FramelessWidget
{
    Q_OBJECT

public:
    TitledWindow()
    {
        auto *bar = new QWidget;
        auto *row = new QHBoxLayout(bar);
        row->setContentsMargins({});
        row->setSpacing(0);
        button = new QPushButton;
        derived = new DerivedButton;
        for (QWidget *part : {static_cast<QWidget *>(new QLabel), static_cast<QWidget *>(button),
                              static_cast<QWidget *>(derived)}) {
            part->setFixedSize(100, 40);
            row->addWidget(part);
        }
        row->addStretch();
        entry = new QLineEdit;
        entry->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        auto *column = new QVBoxLayout(this);
        column->setContentsMargins({});
        column->setSpacing(0);
        column->addWidget(bar);
        column->addWidget(entry);
        resize(400, 300);
        setTitleBar(bar);
    }

    QPushButton *button;
    DerivedButton *derived;
    QLineEdit *entry;
};

/// What starts a move, in pixels: more than the toolkit's own drag distance.
constexpr QPoint kDragStep(0, 12);
constexpr QPoint kOnLabel(50, 20);
constexpr QPoint kOnButton(150, 20);
constexpr QPoint kOnDerived(250, 20);
constexpr QPoint kOnStretch(350, 20);

} // namespace

/// A real mouse and a real window manager.
class tst_FramelessWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void resizesAtItsEdges_data();
    void resizesAtItsEdges();
    void titleBarMoves_data();
    void titleBarMoves();
    void buttonStaysAButton();
    void edgeIsMovedBySetPadding();
    void resizingSwitchedOff();
    void shapesAtTheEdges();
    void doubleClickMaximises();
    void stateSwitches();
    void childWithoutAWindow();

private:
    QPoint onScreen(const QPoint &point) const { return m_window->geometry().topLeft() + point; }
    QRect resized(const QPoint &from, const QPoint &by, const QRect &expected);
    QRect moved(const QPoint &from, const QPoint &by, const QRect &expected);

    std::unique_ptr<TitledWindow> m_window;
};

void tst_FramelessWidget::init()
{
    RealMouse::move({5, 5});
    m_window = std::make_unique<TitledWindow>();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QTRY_COMPARE(m_window->geometry(), QRect(760, 390, 400, 300));
}

/// The window after a drag by `by` that begins at its point `from`, which is to end as expected.
QRect tst_FramelessWidget::resized(const QPoint &from, const QPoint &by, const QRect &expected)
{
    return dragWindow(*m_window, onScreen(from), onScreen(from), by, expected);
}

QRect tst_FramelessWidget::moved(const QPoint &from, const QPoint &by, const QRect &expected)
{
    return dragWindow(*m_window, onScreen(from), onScreen(from) + kDragStep, by, expected);
}

void tst_FramelessWidget::resizesAtItsEdges_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<QRect>("expected");
    QTest::newRow("top left") << QPoint(3, 3) << QRect(720, 360, 440, 330);
    QTest::newRow("top, over a button") << QPoint(150, 3) << QRect(760, 360, 400, 330);
    QTest::newRow("left") << QPoint(3, 150) << QRect(720, 390, 440, 300);
    QTest::newRow("right") << QPoint(396, 150) << QRect(760, 390, 360, 300);
    QTest::newRow("bottom right") << QPoint(396, 296) << QRect(760, 390, 360, 270);
}

void tst_FramelessWidget::resizesAtItsEdges()
{
    QFETCH(QPoint, from);
    QFETCH(QRect, expected);
    QCOMPARE(resized(from, {-40, -30}, expected), expected);
}

void tst_FramelessWidget::titleBarMoves_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::newRow("bare") << kOnStretch;
    QTest::newRow("label") << kOnLabel;
    QTest::newRow("class derived from a button") << kOnDerived;
}

void tst_FramelessWidget::titleBarMoves()
{
    QFETCH(QPoint, from);
    const QSignalSpy clicks(m_window->derived, &QPushButton::clicked);
    const QRect expected(700, 490, 400, 300);
    QCOMPARE(moved(from, {-60, 100}, expected), expected);
    QVERIFY(clicks.isEmpty());
}

void tst_FramelessWidget::buttonStaysAButton()
{
    const QSignalSpy clicks(m_window->button, &QPushButton::clicked);
    RealMouse().click(onScreen(kOnButton));
    QTRY_COMPARE(clicks.size(), 1);
    QCOMPARE(m_window->geometry(), QRect(760, 390, 400, 300));
}

void tst_FramelessWidget::edgeIsMovedBySetPadding()
{
    m_window->setPadding(30);
    const QRect expected(720, 390, 440, 300);
    QCOMPARE(resized({29, 150}, {-40, 0}, expected), expected);
}

void tst_FramelessWidget::resizingSwitchedOff()
{
    m_window->setResizeEnable(false);
    const QRect expected(720, 360, 400, 300);
    QCOMPARE(moved({3, 3}, {-40, -30}, expected), expected);
}

/// Also over a child that has another shape, which comes back past the edge.
void tst_FramelessWidget::shapesAtTheEdges()
{
    const auto shapeAt = [this](const QPoint &point, Qt::CursorShape expected) {
        RealMouse::move(onScreen(point));
        return QTest::qWaitFor(
            [&] { return m_window->windowHandle()->cursor().shape() == expected; });
    };
    QVERIFY(shapeAt({200, 150}, Qt::IBeamCursor));
    QVERIFY(shapeAt({3, 150}, Qt::SizeHorCursor));
    QVERIFY(shapeAt({3, 3}, Qt::SizeFDiagCursor));
    QVERIFY(shapeAt({200, 150}, Qt::IBeamCursor));
    QVERIFY(shapeAt({200, 297}, Qt::SizeVerCursor));
    QVERIFY(shapeAt({396, 3}, Qt::SizeBDiagCursor));
    QVERIFY(shapeAt(kOnStretch, Qt::ArrowCursor));
}

void tst_FramelessWidget::doubleClickMaximises()
{
    const QSignalSpy never(m_window.get(), &FramelessWidget::titleDblClick);
    RealMouse::doubleClick(onScreen(kOnLabel));
    QTRY_VERIFY(m_window->isMaximized());
    QTRY_COMPARE(m_window->size(), QSize(1920, 1080));
    RealMouse::doubleClick(onScreen(kOnLabel));
    QTRY_VERIFY(!m_window->isMaximized());
    QTRY_COMPARE(m_window->size(), QSize(400, 300));
    QVERIFY(never.isEmpty());
}

/// Maximised, the window doesn't resize, but its title bar is one to its very corner.
void tst_FramelessWidget::stateSwitches()
{
    QSignalSpy states(m_window.get(), &FramelessWidget::windowStateChange);
    m_window->showMaximized();
    QTRY_COMPARE(m_window->size(), QSize(1920, 1080));
    QCOMPARE(states.takeLast().first().toBool(), true);
    RealMouse::doubleClick({3, 3});
    QTRY_COMPARE(m_window->size(), QSize(400, 300));
    QCOMPARE(states.takeLast().first().toBool(), false);
    const QRect before = m_window->geometry();
    const QRect expected = before.adjusted(-40, 0, 0, 0);
    QCOMPARE(resized({3, 150}, {-40, 0}, expected), expected);
}

void tst_FramelessWidget::childWithoutAWindow()
{
    QWidget parent;
    auto *child = new FramelessWidget(&parent);
    child->resize(50, 50);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    QVERIFY(child->isVisible());
}

NACELLE_TEST_MAIN(tst_FramelessWidget)
#include "tst_FramelessWidget.moc"
