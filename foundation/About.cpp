#include "foundation/About.h"

#include "foundation/QGlobal.h"
#include "foundation/readout.h"
#include "foundation/scale.h"

#include <QScreen>

namespace {

constexpr double kWidth = 540;
constexpr double kHeight = 360;
constexpr double kTitleHeight = 40;
constexpr double kLineHeight = 32;
constexpr double kCompanyFont = 15;
constexpr double kLineFont = 14;

/// Text and looks of one of the read-only lines; the font size grows with the screen.
void fillLine(QLineEdit *line, const char *name, const char *key, double fontSize)
{
    const int pixels = int(fontSize * QGlobal::instance()->scaleFactor + 1.5);
    nameReadout(line, translated(name));
    line->setText(translated(key));
    line->setMinimumHeight(scaled(kLineHeight));
    line->setStyleSheet("QLineEdit{ background-color:" + colourOf("main") + "; color:" +
                        colourOf("bright") + ";border:0px solid" + colourOf("monitor") +
                        ";font:" + QString::number(pixels) + "px}QLineEdit:disabled{color: gray;}");
}

} // namespace

About::About(QWidget *parent) : FramelessWidget(parent)
{
    ui.setupUi(this);
    setWindowTitle(translated("关于"));
    setWindowFlags(windowFlags() & ~Qt::WindowMaximizeButtonHint);
    styleChildren();
    setAttribute(Qt::WA_DeleteOnClose, true);
    setWindowModality(Qt::ApplicationModal);
    setWindowIcon(QIcon(QStringLiteral(":/NacelleDesk/Resources/Skylark.ico")));
    setStyleSheet("background-color:" + colourOf("main"));
    placeOnScreen();
}

void About::styleChildren()
{
    ui.widgetTop->setMaximumHeight(scaled(kTitleHeight));
    ui.widgetTop->setStyleSheet("background-color:" + colourOf("control"));
    setTitleBar(ui.widgetTop);

    fillLine(ui.lineEdit, "单位名称", "云台报文工作台项目组", kCompanyFont);
    ui.lineEdit->setText(ui.lineEdit->text() + QLatin1String(" " NACELLE_VERSION));
    fillLine(ui.lineEdit_2, "网址", "nacellebench.example", kLineFont);
    fillLine(ui.lineEdit_4, "声明", "仅供台架测试使用，不得用于飞行操作。", kLineFont);

    ui.pushButton_Close->setFixedSize(scaled(kTitleHeight), scaled(kTitleHeight));
    ui.pushButton_Close->setStyleSheet(
        QStringLiteral("QPushButton{border-image: url(:/NacelleBench/Resources/close.png)}"
                       "QPushButton:pressed{background-color:rgba(50,62,82,255);"
                       "border-image: url(:/NacelleBench/Resources/close.png);}"));
    connect(ui.pushButton_Close, &QPushButton::clicked, this, &About::close);
}

/// Size by the scale, place in the middle of the screen that holds the window.
void About::placeOnScreen()
{
    const double width = kWidth * QGlobal::instance()->scaleFactor;
    const double height = kHeight * QGlobal::instance()->scaleFactor;
    const QRect area = screen()->geometry();
    resize(int(width), int(height));
    move(int(area.left() + (area.width() - width) / 2),
         int(area.top() + (area.height() - height) / 2));
}
