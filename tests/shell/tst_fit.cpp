#include "console/flowAnalysis.h"
#include "foundation/About.h"
#include "foundation/QGlobal.h"
#include "protocol/codec.h"
#include "protocol/commands.h"
#include "protocol/dataPacketAnalysis.h"
#include "tests/support/strictmain.h"
#include "tests/support/videobench.h"

#include <QAccessible>
#include <QCheckBox>
#include <QScreen>
#include <QSlider>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>
#include <QStyleOptionFrame>

namespace {

constexpr int kLineEditMargin = 2; ///< the toolkit's own, on either side of the text

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

template <typename Option>
Option optionOf(const QWidget *widget)
{
    Option option;
    option.initFrom(widget);
    return option;
}

/// Where a widget draws its text; empty for one that draws none.
QRect textArea(QWidget *widget)
{
    const QStyle *style = widget->style();
    if (qobject_cast<QLabel *>(widget))
        return widget->contentsRect();
    if (qobject_cast<QPushButton *>(widget)) {
        const auto option = optionOf<QStyleOptionButton>(widget);
        return style->subElementRect(QStyle::SE_PushButtonContents, &option, widget);
    }
    if (qobject_cast<QCheckBox *>(widget)) {
        const auto option = optionOf<QStyleOptionButton>(widget);
        return style->subElementRect(QStyle::SE_CheckBoxContents, &option, widget);
    }
    if (qobject_cast<QComboBox *>(widget)) {
        auto option = optionOf<QStyleOptionComboBox>(widget);
        return style->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField,
                                     widget);
    }
    if (qobject_cast<QLineEdit *>(widget)) {
        const auto option = optionOf<QStyleOptionFrame>(widget);
        return style->subElementRect(QStyle::SE_LineEditContents, &option, widget)
            .adjusted(kLineEditMargin, 0, -kLineEditMargin, 0);
    }
    return {};
}

/// All texts that a widget can show as it stands.
QStringList textsOf(const QWidget *widget)
{
    QStringList texts;
    if (const auto *list = qobject_cast<const QComboBox *>(widget)) {
        for (int i = 0; i < list->count(); ++i)
            texts << list->itemText(i);
        return texts;
    }
    return {widget->property("text").toString()};
}

QString cutTextOf(QWidget *widget)
{
    const QRect area = textArea(widget);
    const auto *label = qobject_cast<const QLabel *>(widget);
    const bool wraps = label && label->wordWrap();
    const QFontMetrics font = widget->fontMetrics();
    for (const QString &text : textsOf(widget)) {
        // Of a single line the space above and below the letters may be missing.
        const QSize needed =
            wraps
                ? font.boundingRect(QRect(0, 0, area.width(), 1000), Qt::TextWordWrap, text).size()
                : QSize(font.horizontalAdvance(text), font.tightBoundingRect(text).height());
        if (!text.isEmpty() && (needed.width() > area.width() || needed.height() > area.height()))
            return text;
    }
    return {};
}

bool isCovered(const QWidget *widget)
{
    for (const QWidget *other : widget->parentWidget()->findChildren<QPushButton *>(
             QString(), Qt::FindDirectChildrenOnly)) {
        if (other != widget && other->isVisible() && !isFolded(other) &&
            other->geometry().adjusted(1, 1, -1, -1).intersects(widget->geometry()))
            return true;
    }
    return false;
}

bool isHexadecimal(const QWidget *widget)
{
    return widget->property("column") == "hex" || qobject_cast<const QTextEdit *>(widget) ||
           qobject_cast<const QPlainTextEdit *>(widget);
}

/// Whether a screen reader has nothing to say of a field.
bool isNameless(QWidget *widget)
{
    static const QStringList readouts{"value", "hex", "readout"};
    const bool isReadout = readouts.contains(widget->property("column").toString()) ||
                           widget->objectName().contains(QRegularExpression("^label_[XY]"));
    const bool isField = qobject_cast<QLineEdit *>(widget) || qobject_cast<QComboBox *>(widget) ||
                         qobject_cast<QPlainTextEdit *>(widget) ||
                         qobject_cast<QTextEdit *>(widget) || qobject_cast<QSlider *>(widget);
    if (!isReadout && !isField)
        return false;
    const QAccessibleInterface *spoken = QAccessible::queryAccessibleInterface(widget);
    const QString name = spoken->text(QAccessible::Name);
    return name.isEmpty() ||
           (isReadout && spoken->text(QAccessible::Value) != widget->property("text").toString());
}

/// Collects what doesn't fit in the windows that it is shown.
class Look
{
public:
    void at(QWidget *window)
    {
        QVERIFY(QTest::qWaitForWindowExposed(window->window()));
        QCoreApplication::processEvents();
        if (window->isWindow() && window->windowIcon().pixmap(16).isNull())
            faults << "no icon";
        for (QWidget *widget : window->findChildren<QWidget *>()) {
            if (!widget->isVisible() || isFolded(widget))
                continue;
            if (widget->isEnabled() && isNameless(widget))
                faults << widget->objectName() + " has no name";
            if (isHexadecimal(widget) && !widget->fontInfo().fixedPitch())
                faults << widget->objectName() + " has digits of any width";
            if (textArea(widget).isNull())
                continue;
            ++seen;
            const QString text = cutTextOf(widget);
            if (!text.isEmpty() || isCovered(widget))
                faults << widget->objectName() + ": " + text;
        }
    }

    QStringList faults;
    int seen = 0;
};

/// What the pod answers to a command in a mode of the same code.
QByteArray answer(quint8 code)
{
    QByteArray frame(71, '\0');
    frame.replace(0, 6, QByteArray("\x8A\x5E\x49\x00\x01", 5) + char(code));
    frame.replace(69, 2, QByteArray(1, char(code)) + '\x02');
    appendCrc(frame);
    return frame;
}

void lookAtWorkbench(VideoBench &bench, Look &look)
{
    bench.click("pushButton_1");
    for (const char *box : {"textEdit_Send", "textEdit_Rev"}) {
        const QImage picture = bench.find<QWidget>(box)->grab().toImage();
        QVERIFY(picture.pixelColor(0, 9).lightness() > 2 * picture.pixelColor(9, 9).lightness());
    }
    for (const CommandRow &command : kCommands) {
        bench->receiveData(answer(command.code), {});
        look.at(bench.window());
    }
}

void lookAtDialog(VideoBench &bench, Look &look)
{
    bench.click("pushButton_1");
    bench.click("pushButton_Cmd");
    QWidget *dialog = QApplication::activeModalWidget();
    auto *list = dialog->findChild<QComboBox *>("comboBox_Cmd");
    for (int i = 0; i < list->count(); ++i) {
        list->setCurrentIndex(i);
        look.at(dialog);
        bench.find<dataPacketAnalysis>("CurrentPage")
            ->applyCommand(list->currentText(), {}, {}, {}, {}, {}, {});
        look.at(bench.find<QWidget>("label293")->parentWidget());
    }
    dialog->close();
}

void lookAtConsole(VideoBench &bench, Look &look)
{
    for (int mode : {0, 0x11, 0x14}) {
        bench.find<flowAnalysis>("CurrentPage")->setPodMode(qint8(mode));
        look.at(bench.window());
    }
    bench.find<QComboBox>("comboBox")->addItem("COM3");
    bench.find<QComboBox>("comboBox")->setCurrentText("COM3");
    look.at(bench.window());
}

void lookAtMessages(VideoBench &, Look &look)
{
    for (const QString &key : QGlobal::instance()->englishTexts->keys()) {
        if (!key.endsWith(QChar(0xFF01)))
            continue;
        showNotice(qPrintable(key));
        look.at(QApplication::activeModalWidget());
        Bench::takeNotices();
    }
}

int brightest(QWidget *widget)
{
    const QImage picture = widget->grab().toImage();
    int light = 0;
    for (int i = 0; i < picture.width() * picture.height(); ++i)
        light =
            qMax(light, picture.pixelColor(i % picture.width(), i / picture.width()).lightness());
    return light;
}

void lookAtVideo(VideoBench &bench, Look &look)
{
    bench.press("pushButton_Region");
    bench.video()->showCoordinates(65535, 65535, 65535, 65535);
    look.at(bench.video());
    const int enabled = brightest(bench.part("pushButton_Send"));
    bench.click("pushButton_1");
    QVERIFY(enabled > 2 * brightest(bench.part("pushButton_Send")));
}

void lookAtAbout(VideoBench &bench, Look &look)
{
    QMetaObject::invokeMethod(bench.window(), "about");
    look.at(QApplication::activeModalWidget());
    QTest::mouseClick(QApplication::activeModalWidget()->findChild<QPushButton *>(),
                      Qt::LeftButton);
}

const struct
{
    const char *name;
    void (*look)(VideoBench &, Look &);
    int seen;
} kWindows[] = {
    {"workbench", lookAtWorkbench, 5000}, {"dialog", lookAtDialog, 600},
    {"console", lookAtConsole, 400},      {"messages", lookAtMessages, 14 * 3},
    {"video", lookAtVideo, 17},           {"about", lookAtAbout, 5},
};

} // namespace

/// Looks at the real windows on the whole of a screen.
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
    Bench bench;
    bench->setGeometry(QRect(QPoint(), screenSize()));
    QCoreApplication::processEvents();
    const double scale = screenSize().height() / 1080.0;
    QCOMPARE(QGlobal::instance()->scaleFactor, scale);
    QCOMPARE(bench->styleSheet(), QStringLiteral("font:%1px ").arg(12 * scale));
    const auto *host = bench.find<QWidget>("widget_1");
    const auto *pageHost = bench.find<QWidget>("widget_2");
    // The workbench takes more on a screen that is nearly square.
    QCOMPARE(qAbs(2 * host->width() - pageHost->width()) <= 2, screenSize().height() != 1024);
    QCOMPARE(bench.find<QWidget>("CurrentPage")->size(), pageHost->size());
    const struct
    {
        const char *widget;
        int width;
        int height;
    } sizes[] = {{"pushButton_1", 240, 50}, {"menuButton", 32, 32},        {"widget_10", 80, 0},
                 {"widget_3", 0, 50},       {"pushButton_Create", 120, 0}, {"rowHost_5", 0, 40}};
    for (const auto &size : sizes) {
        const auto *widget = bench.find<QWidget>(size.widget);
        if (size.width)
            QCOMPARE(widget->width(), int(size.width * scale));
        if (size.height)
            QCOMPARE(widget->height(), int(size.height * scale));
    }
    const auto *box = bench.find<QCheckBox>("checkBox_1");
    const auto option = optionOf<QStyleOptionButton>(box);
    const QRect mark = box->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, box);
    QCOMPARE(mark.width(), int(16 * scale) + 2); // and its edge
    QCOMPARE(bench.find<QWidget>("label52")->width(), int(int((scale - 1) * 20 + 162) * scale));
    // A fractional size in the window's sheet is passed over; this one holds, and is legible.
    for (const char *text : {"label52", "pushButton_1", "label_5"})
        QCOMPARE(bench.find<QWidget>(text)->fontInfo().pixelSize(), qMax(10, int(12 * scale)));
}

void tst_fit::everyTextFits_data()
{
    QTest::addColumn<bool>("chinese");
    QTest::addColumn<int>("window");
    for (int i = 0; i < int(std::size(kWindows)); ++i) {
        QTest::addRow("%s, Chinese", kWindows[i].name) << true << i;
        QTest::addRow("%s, English", kWindows[i].name) << false << i;
    }
}

/// No widget of any window may cut its text off, or cover another one.
void tst_fit::everyTextFits()
{
    QFETCH(bool, chinese);
    QFETCH(int, window);
    QGlobal::instance()->languageChinese = chinese;
    VideoBench bench;
    bench->setGeometry(QRect(QPoint(), screenSize()));
    Look look;
    kWindows[window].look(bench, look);
    look.faults.removeDuplicates();
    QVERIFY2(look.faults.isEmpty(), qPrintable(look.faults.join("; ")));
    QVERIFY2(look.seen >= kWindows[window].seen, qPrintable(QString::number(look.seen)));
}

NACELLE_TEST_MAIN(tst_fit)
#include "tst_fit.moc"
