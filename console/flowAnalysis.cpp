#include "console/flowAnalysis.h"

#include "console/carrierblock.h"
#include "console/sendflags.h"
#include "foundation/QGlobal.h"
#include "foundation/formlook.h"
#include "foundation/poolsleep.h"
#include "foundation/readout.h"
#include "foundation/relabel.h"
#include "foundation/scale.h"
#include "protocol/codec.h"
#include "protocol/entryrules.h"
#include "shell/NacelleBench.h"
#include "shell/videolink.h"

#include <QButtonGroup>
#include <QRegExp>
#include <QRegExpValidator>
#include <QSlider>
#include <QtConcurrent>

namespace {

constexpr unsigned long kPeriodMs = 30;
constexpr int kFullRate = 1500;

constexpr protocol::Limit kHexByteLimit = matching("[0-9A-Fa-f]{1,2}");

/// What only this form needs of its look. Its host has a name that a widget of the form has too.
const char *const kRules =
    R"(flowAnalysis QWidget#widget_1,flowAnalysis QWidget#widget_2,flowAnalysis QWidget#widget_3,flowAnalysis QWidget#widget_14{background-color:#283142;}
QLabel{border:none;}
QLabel[column="title"]{background-color:#323E52;color:#FFFFFF;padding:0px 8px;}
QLabel[column="readout"]{background-color:#202835;color:#FFFFFF;}
QLineEdit{padding:0px 5px;}
QLineEdit[column="param"]{background-color:#283142;}
QLineEdit[column="limit"]{background-color:#202835;padding:0px;}
QPushButton{background-color:#202835;color:#FFFFFF;border:1px solid #323E52;padding:0px 3px;}
QPushButton#pushButton_alarm,QPushButton#pushButton_alarmStart,QPushButton#pushButton_alarmEnd,QPushButton#pushButton_Isothermy{padding:0px;}
QPushButton:hover{color:#397AF7;border:1px solid #323E52;}
QPushButton:focus{border:1px dashed #A9A9A9;}
QPushButton:pressed{background-color:#283142;}
QPushButton:checked{border:1px solid #397AF7;}
QPushButton:disabled{background-color:#283142;color:#A9A9A9;border:1px solid #323E52;})";

/// Labels and buttons that have no command, and the keys of their texts.
constexpr Caption kCaptions[] = {
    {"pushButton_video", "视频"},
    {"label_103", "模拟载机数据"},
    {"label_104", "命令"},
    {"pushButton_alarm", "温度报警"},
    {"label_141", "上限"},
    {"label_138", "上限"},
    {"label_142", "下限"},
    {"label_140", "下限"},
    {"label_315", "相机KK值"},
    {"label_9", "版本号"},
    {"label_control", "控制量"},
    {"label_312", "偏航"},
    {"label_316", "偏航"},
    {"label_313", "俯仰"},
    {"label_317", "俯仰"},
    {"label_314", "滚转"},
    {"label_control_3", "角速率控制"},
    {"label_3", "输入量"},
    {"label_4", "输入量"},
    {"label_5", "百分比"},
    {"label_6", "百分比"},
};

/// A base size in pixels, multiplied by the interface scale; 0 leaves a dimension free.
struct BaseSize
{
    const char *object;
    int width;
    int height;
    int extra = 0; ///< pixels added after the scaling
};
constexpr BaseSize kSizes[] = {
    {"widget_0", 0, 50},
    {"pushButton_video", 120, 30},
    {"comboBox", 120, 30},
    {"widget_1", 0, 180, 2},
    {"widget_51", 0, 30},
    {"widget_52", 0, 30},
    {"widget_53", 0, 30},
    {"widget_54", 0, 30},
    {"widget_55", 0, 30},
    {"widget_2", 0, 380, 2},
    {"widget_56", 0, 80},
    {"widget_57", 0, 80},
    {"widget_58", 0, 80},
    {"widget_59", 0, 80},
    {"widget_316", 0, 30},
    {"lineEdit_alarm_1", 0, 20},
    {"lineEdit_alarm_2", 0, 20},
    {"lineEdit_Isothermy_1", 0, 20},
    {"lineEdit_Isothermy_2", 0, 20},
    {"lineEdit_Isothermy_3", 0, 20},
    {"label_control", 0, 30},
    {"label_control_3", 0, 30},
    {"widget_4", 0, 50},
    {"pushButton_start", 120, 40},
    {"label_316", 80, 0},
    {"label_317", 80, 0},
    {"label_3", 80, 0},
    {"label_4", 80, 0},
    {"label_5", 80, 0},
    {"label_6", 80, 0},
    {"label", 100, 0},
    {"label_2", 100, 0},
    {"label_7", 100, 0},
    {"label_8", 100, 0},
};

/// Read-outs and fields whose caption isn't a separate label: caption of the row, and of the
/// column where there is one.
constexpr struct
{
    const char *object;
    const char *row;
    const char *column;
} kNamed[] = {
    {"comboBox", "运行模式", ""},     {"lineEdit_ratio", "指定倍率", ""},
    {"lineEdit_color", "调色盘", ""}, {"lineEdit_addlight", "补光", ""},
    {"label", "偏航", "输入量"},      {"label_2", "俯仰", "输入量"},
    {"label_7", "偏航", "百分比"},    {"label_8", "俯仰", "百分比"},
};

/// Height of a control panel: a scaled title above rows of a fixed size.
int panelHeight(int base)
{
    return int(30 * QGlobal::instance()->scaleFactor + base - 30);
}

QString sliderStyle()
{
    constexpr int kGroove = 4;
    constexpr int kHandle = 16;
    constexpr int kMargin = 6;
    const QString handle =
        QStringLiteral("image:url(:/NacelleBench/Resources/handle.png);width:%1px;height:%1px;"
                       "margin-left:0px;margin-right:0px;margin-top:-%2px;margin-bottom:-%2px;")
            .arg(kHandle)
            .arg(kMargin);
    return QStringLiteral("QSlider {background-color:#00000000; border:0px solid #00000000; }"
                          "QSlider::groove:horizontal{background-color:#9ca0a2;height:%1px;}"
                          "QSlider::handle:horizontal{%2}"
                          "QSlider::handle:horizontal:hover{%2}"
                          "QSlider::sub-page:horizontal{background-color:#00000000;}")
        .arg(QString::number(kGroove), handle);
}

/// What has no height must not take the keyboard: what is typed there would go out as a control
/// input. It isn't disabled, since a slider that is held would never be let go of then, and keep
/// its rate.
void setKeyboard(std::initializer_list<QWidget *> fields, bool takes)
{
    for (QWidget *field : fields) {
        field->setFocusPolicy(takes ? Qt::StrongFocus : Qt::NoFocus);
        if (!takes)
            field->clearFocus();
    }
}

void showRate(int value, QLabel *readout, QLabel *percent)
{
    readout->setText(QString::number(value));
    percent->setText(QString::number(value * 100 / kFullRate) + QLatin1Char('%'));
}

} // namespace

flowAnalysis::flowAnalysis(QWidget *parent)
    : QWidget(parent), m_flags(std::make_shared<SendFlags>())
{
    dressPage(this, kRules);
    ui.setupUi(this);
    m_objects = widgetsByName(this);
    connectSlots();
    showPanel(ControlPanel::None);
    setEntryRules();
    groupButtons();
    setUpSliders();
    setFixedSizes();
    retranslate();
}

flowAnalysis::~flowAnalysis()
{
    giveUp();
}

void flowAnalysis::connectSlots()
{
    connect(ui.pushButton_video, &QPushButton::clicked, this, &flowAnalysis::openVideo);
    connect(ui.pushButton_start, &QPushButton::clicked, this, &flowAnalysis::start);
    connect(this, &flowAnalysis::signals_sendCmd, this, &flowAnalysis::slotsSendCmd);
    connect(ui.horizontalSlider, &QSlider::valueChanged, this,
            &flowAnalysis::horizontalSliderValueChanged);
    connect(ui.horizontalSlider_2, &QSlider::valueChanged, this,
            &flowAnalysis::horizontalSlider2ValueChanged);
    connect(ui.horizontalSlider, &QSlider::sliderReleased, this,
            [this] { releaseSlider(QStringLiteral("horizontalSlider1")); });
    connect(ui.horizontalSlider_2, &QSlider::sliderReleased, this,
            [this] { releaseSlider(QStringLiteral("horizontalSlider2")); });
}

void flowAnalysis::setEntryRules()
{
    for (QLineEdit *edit : {ui.lineEdit_312, ui.lineEdit_313, ui.lineEdit_314})
        setEntryRule(edit, kControlLimit);
    for (QLineEdit *edit : {ui.lineEdit_315, ui.lineEdit})
        setEntryRule(edit, kHexByteLimit);
    for (const CarrierField &field : kCarrierFields)
        setEntryRule(lineEdit(field.edit), field.limit);
    new QRegExpValidator(QRegExp(QLatin1String(kLatitudePattern)), this);
}

/// Both groups are exclusive; an invisible button in each clears the visible selection.
void flowAnalysis::groupButtons()
{
    commandGroup = new QButtonGroup(this);
    modeGroup = new QButtonGroup(this);
    for (std::size_t i = 0; i < kConsoleCommands.size(); ++i) {
        const ConsoleCommand &row = kConsoleCommands[i];
        m_buttons[i] = qobject_cast<QAbstractButton *>(object(row.button));
        Q_ASSERT_X(m_buttons[i], "flowAnalysis", row.button);
        (row.mode == kNoMode ? commandGroup : modeGroup)->addButton(m_buttons[i]);
    }
    commandGroup->addButton(ui.pushButton_null);
    modeGroup->addButton(ui.pushButton_null_2);
}

void flowAnalysis::setUpSliders()
{
    ui.horizontalSlider->setObjectName(QStringLiteral("horizontalSlider1"));
    ui.horizontalSlider_2->setObjectName(QStringLiteral("horizontalSlider2"));
    for (QSlider *slider : {ui.horizontalSlider, ui.horizontalSlider_2}) {
        slider->setRange(-kFullRate, kFullRate);
        slider->setValue(0);
        slider->setStyleSheet(sliderStyle());
    }
}

void flowAnalysis::setFixedSizes()
{
    const double scale = QGlobal::instance()->scaleFactor;
    for (const BaseSize &size : kSizes) {
        QWidget *widget = object(size.object);
        if (size.width)
            widget->setFixedWidth(int(size.width * scale + size.extra));
        if (size.height)
            widget->setFixedHeight(int(size.height * scale + size.extra));
    }
}

void flowAnalysis::setMainWindow(NacelleBench *window)
{
    mainWindow = window;
    takeVideoWindowOver(window, this);
}

void flowAnalysis::openVideo()
{
    openVideoWindow(mainWindow, this);
}

QWidget *flowAnalysis::object(const char *name) const
{
    QWidget *widget = m_objects.value(QLatin1String(name));
    Q_ASSERT_X(widget, "flowAnalysis", name);
    return widget;
}

QLineEdit *flowAnalysis::lineEdit(const char *name) const
{
    auto *edit = qobject_cast<QLineEdit *>(object(name));
    Q_ASSERT_X(edit, "flowAnalysis", name);
    return edit;
}

QByteArray flowAnalysis::buildCommandFrame(bool idle) const
{
    ConsoleState state;
    state.podMode = podMode;
    state.carrier = carrierBlockText();
    for (std::size_t i = 0; i < m_buttons.size(); ++i)
        state.selected[i] = m_buttons[i]->isChecked();
    state.textOf = [this](const char *name) { return textOf(object(name)); };
    return consoleFrame(state, idle);
}

QString flowAnalysis::carrierBlockText() const
{
    CarrierTexts texts;
    for (std::size_t i = 0; i < kCarrierFields.size(); ++i)
        texts[i] = lineEdit(kCarrierFields[i].edit)->text();
    return toHexText(carrierBlock(texts));
}

QString flowAnalysis::cameraKkText() const
{
    return ui.lineEdit_315->text();
}

QString flowAnalysis::versionText() const
{
    return ui.lineEdit->text();
}

void flowAnalysis::setPodMode(qint8 mode)
{
    podMode = mode;
    const ConsoleCommand *row = modeCommand(mode);
    const ControlPanel panel = row ? row->panel : ControlPanel::None;
    showPanel(panel);
    const std::size_t index = row ? std::size_t(row - kConsoleCommands.data()) : 0;
    QAbstractButton *button = row ? m_buttons[index] : ui.pushButton_null_2;
    button->setChecked(true);
}

void flowAnalysis::showPanel(ControlPanel panel)
{
    const bool angles = panel == ControlPanel::Angles;
    const bool rates = panel == ControlPanel::Rates;
    ui.widget_3->setFixedHeight(angles ? panelHeight(182) : 0);
    ui.widget_14->setFixedHeight(rates ? panelHeight(152) : 0);
    setKeyboard({ui.lineEdit_312, ui.lineEdit_313, ui.lineEdit_314}, angles);
    setKeyboard({ui.horizontalSlider, ui.horizontalSlider_2}, rates);
}

void flowAnalysis::clearPendingCommand()
{
    ui.pushButton_null->setChecked(true);
}

void flowAnalysis::stopRunning()
{
    m_flags->running = false;
}

void flowAnalysis::giveUp()
{
    m_flags->running = false;
    m_flags->gate.close(); // an emission under way still needs the page
}

void flowAnalysis::start()
{
    if (m_flags->running) {
        stopRunning();
        ui.pushButton_start->setText(translated("启动"));
        return;
    }
    if (ui.comboBox->currentIndex() == kLearningRun)
        mainWindow->clearLog();
    m_flags->running = true;
    mainWindow->emptyHistory();
    ui.pushButton_start->setText(translated("停止"));
    sendFrame(true);
    mainWindow->flowRunMode = ui.comboBox->currentIndex();
    startWorker();
}

/// `running` is tested before the sleep and not after it: the emission that follows the end of a
/// run lets the page know. A stop and a new start within one sleep leave the old worker
/// running beside the new one until the next stop; that isn't guarded.
void flowAnalysis::startWorker()
{
    QtConcurrent::run([page = this, flags = m_flags] {
        while (flags->running) {
            sleepInPool(kPeriodMs);
            flags->gate.pass([page] { emit page->signals_sendCmd(); });
        }
    });
}

/// The closing frame goes by the selector as it stands now, the pod's answer by the one at the
/// start of the run.
void flowAnalysis::slotsSendCmd()
{
    // An emission may still be queued when the page is given up, and then it is void.
    if (m_flags->gate.isClosed())
        return;
    if (m_flags->running) {
        sendFrame(false);
        return;
    }
    ui.pushButton_start->setText(translated("启动"));
    if (ui.comboBox->currentIndex() == kLearningRun)
        sendFrame(true);
}

void flowAnalysis::sendFrame(bool idle)
{
    lastSentText = toHexText(buildCommandFrame(idle));
    lastSentText.remove(QLatin1Char(' '));
    mainWindow->sendData(hexTextToBytes(lastSentText));
}

void flowAnalysis::horizontalSliderValueChanged(int value)
{
    showRate(value, ui.label, ui.label_7);
}

void flowAnalysis::horizontalSlider2ValueChanged(int value)
{
    showRate(value, ui.label_2, ui.label_8);
}

/// A slider springs back to the centre when its handle is let go.
void flowAnalysis::releaseSlider(const QString &name)
{
    for (QSlider *slider : findChildren<QSlider *>(name))
        slider->setValue(0);
    showRate(ui.horizontalSlider->value(), ui.label, ui.label_7);
    showRate(ui.horizontalSlider_2->value(), ui.label_2, ui.label_8);
}

void flowAnalysis::retranslate()
{
    relabelItems(ui.comboBox, {"默认模式", "学习模式"}); // in the order of RunMode
    for (const ConsoleCommand &row : kConsoleCommands)
        setTextOf(object(row.button), translated(row.key));
    for (const Caption &caption : kCaptions)
        setTextOf(object(caption.object), translated(caption.key));
    for (const CarrierField &field : kCarrierFields)
        setTextOf(object(field.label), translated(carrierKey(field)));
    for (const auto &named : kNamed) {
        const QString column =
            *named.column ? QLatin1Char(' ') + translated(named.column) : QString();
        nameReadout(object(named.object), translated(named.row) + column);
    }
    ui.pushButton_start->setText(translated(m_flags->running ? "停止" : "启动"));
}
