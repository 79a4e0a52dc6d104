#include "protocol/dataPacketAnalysis.h"

#include "foundation/PopFrame.h"
#include "foundation/QGlobal.h"
#include "foundation/digitfont.h"
#include "foundation/formlook.h"
#include "foundation/readout.h"
#include "foundation/relabel.h"
#include "foundation/scale.h"
#include "protocol/codec.h"
#include "protocol/commands.h"
#include "protocol/controlCmd.h"
#include "protocol/entryrules.h"
#include "protocol/modes.h"
#include "shell/NacelleBench.h"
#include "shell/videolink.h"

#include <QKeyEvent>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextLayout>

namespace {

/// A frame text with this many digits or fewer is too short to be looked at.
constexpr int kTooFewDigits = 140;
constexpr int kSmallestHostFrame = 72;
constexpr int kSmallestGcuFrame = 71;
constexpr int kNameColumn = 162;
constexpr int kNameColumnGrowth = 20;
constexpr int kLongFrame = 4096; ///< bytes, whose text fills the frame's box many times over
constexpr int kLongWord = 1000;  ///< characters; a word that fits a line has far fewer

// The empty command as it stands: unlike a frame built from the form its byte 37 is zero.
const char *const kEmptyCommand =
    "A8 E5 48 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 28 B2";

/// What only this form needs of its look.
const char *const kRules =
    R"(QLabel[column="bytes"],QLabel[column="name"]{background-color:#283142;color:#A9A9A9;border:none;border-right:1px solid #323E52;border-bottom:1px solid #323E52;padding:0px;}
QLabel[column="value"],QLabel[column="hex"]{background-color:#202835;color:#FFFFFF;border:none;border-right:1px solid #323E52;border-bottom:1px solid #323E52;padding:0px 6px;}
QLabel[column="head"]{background-color:#323E52;color:#FFFFFF;border:none;padding:0px 4px;}
QLabel[column="title"]{background-color:#202835;color:#FFFFFF;border:none;border-bottom:1px solid #397AF7;padding:0.4em 0px;}
QWidget[column="cell"]{background-color:#202835;border:none;border-right:1px solid #323E52;border-bottom:1px solid #323E52;}
QWidget[column="plain"]{background-color:#202835;border:none;}
QLineEdit{border:1px solid #202835;border-right:1px solid #323E52;border-bottom:1px solid #323E52;padding:0px 5px;}
QLineEdit:hover{border-bottom:1px solid #397AF7;}
QLineEdit[readOnly="true"]:hover{border-bottom:1px solid #323E52;}
QLineEdit:focus{border:1px solid #397AF7;}
QScrollArea{background-color:#202835;border:none;}
QLabel[column="hex"]{padding:0px 2px 0px 4px;}
QTextEdit{border:1px solid #A9A9A9;}
QTextEdit:hover,QTextEdit:focus{border:1px solid #397AF7;})";

/// The fixed texts that belong to no field.
constexpr Caption kFixedTexts[] = {
    {"label_Host", "上位机发送数据"},
    {"label11", "字节"},
    {"label12", "内容"},
    {"label13", "原始值"},
    {"label14", "16进制"},
    {"checkBox_1", "控制量有效"},
    {"checkBox_2", "载机惯导数据有效"},
    {"pushButton_Send", "发送"},
    {"pushButton_Send_Null", "发送空指令"},
    {"pushButton_Create", "生成数据包"},
    {"pushButton_Analysis", "解析数据包"},
    {"label_Gcu", "GCU返回数据"},
    {"label11_2", "字节"},
    {"label12_2", "内容"},
    {"label13_2", "原始值"},
    {"label14_2", "16进制"},
    {"pushButton_AnalysisRev", "解析数据包"},
};

bool hasLongWord(const QString &text)
{
    const QChar *start = text.begin();
    for (const QChar *at = start; at != text.end() && at - start <= kLongWord; ++at) {
        if (at->isSpace())
            start = at + 1;
    }
    return text.end() - start > kLongWord;
}

/// Where lines end between words, each line looks for the end of its last word first, and pasted
/// digits without blanks are one word: 400,000 of them would hold the window for 16 s. Such a text
/// is wrapped anywhere, which has to be known before it is laid out: after this signal.
void keepLongWordsQuick(QTextEdit *box)
{
    QObject::connect(box->document(), &QTextDocument::contentsChange, box, [box] {
        const bool isLong =
            box->document()->characterCount() > kLongWord && hasLongWord(box->toPlainText());
        box->setWordWrapMode(isLong ? QTextOption::WrapAnywhere
                                    : QTextOption::WrapAtWordBoundaryOrAnywhere);
    });
}

/// The text that was there goes first, so that it isn't laid out for another width.
void setBar(QTextEdit *box, Qt::ScrollBarPolicy policy)
{
    if (policy == box->verticalScrollBarPolicy())
        return;
    box->clear();
    box->setVerticalScrollBarPolicy(policy);
}

void showShortText(QTextEdit *box, const QString &text)
{
    setBar(box, Qt::ScrollBarAsNeeded);
    box->setPlainText(text);
}

/// A text of up to 400,000 characters is laid out once: not again for a bar that comes by itself,
/// nor for the cursor and each painting, as the toolkit does with what it doesn't keep.
void showLongText(QTextEdit *box, const QString &text)
{
    setBar(box, Qt::ScrollBarAlwaysOn);
    QTextDocument *document = box->document();
    document->setUndoRedoEnabled(false);
    box->clear();
    document->firstBlock().layout()->setCacheEnabled(true);
    QTextCursor(document).insertText(text);
    box->moveCursor(QTextCursor::Start);
    document->setUndoRedoEnabled(true);
}

/// Why a pasted text is no frame with this header, or null. The length is tested last, after the
/// CRC.
const char *frameFault(const QString &digits, const protocol::Field &header)
{
    if (digits.size() % 2 != 0 || digits.size() <= kTooFewDigits)
        return "数据包长度异常！";
    const QByteArray frame = hexTextToBytes(digits);
    if (byteAt(frame, 0) != header.constant[0] || byteAt(frame, 1) != header.constant[1])
        return "协议头解析错误！";
    QByteArray expected = frame.left(frame.size() - kCrcSize);
    appendCrc(expected);
    if (expected != frame)
        return "CRC校验失败！";
    return saidLength(frame) == frame.size() ? nullptr : "包长度校验失败！";
}

} // namespace

dataPacketAnalysis::dataPacketAnalysis(QWidget *parent) : QWidget(parent)
{
    dressPage(this, kRules);
    ui.setupUi(this);
    m_hostForm = bindForm(kHostRows);
    m_gcuForm = bindForm(kGcuRows);
    connectSlots();
    retranslate();
    for (QTextEdit *box : {ui.textEdit_Send, ui.textEdit_Rev}) {
        setDigitFont(box);
        keepLongWordsQuick(box);
    }
    for (QLabel *label : findChildren<QLabel *>()) {
        if (label->property("column") == QLatin1String("hex"))
            setDigitFont(label);
    }
    // The rule of this field doesn't accept its initial "0", so that the field's own return signal
    // never fires for it.
    ui.lineEdit93->installEventFilter(this);
    // The style fills them all over, but doesn't say so: what lies below, window and host included,
    // would be painted before each field that has changed.
    for (QWidget *contents : {ui.scrollContents_Host, ui.scrollContents_Gcu})
        contents->setAttribute(Qt::WA_OpaquePaintEvent, contents->palette().window().isOpaque());
    setFixedSizes();
}

template <typename Rows>
dataPacketAnalysis::Form dataPacketAnalysis::bindForm(const Rows &rows)
{
    const QHash<QString, QWidget *> widgets = widgetsByName(this);
    const auto find = [&widgets](const char *name) {
        QWidget *widget = widgets.value(QLatin1String(name));
        Q_ASSERT_X(widget || !*name, "dataPacketAnalysis", name);
        return widget;
    };
    Form form;
    for (const auto &row : rows) {
        const protocol::Field &field = row.field;
        QWidget *name = find(field.nameObject);
        QLayoutItem *firstColumn = name->parentWidget()->layout()->itemAt(0);
        auto *bytes = qobject_cast<QLabel *>(firstColumn->widget());
        Q_ASSERT_X(bytes, "dataPacketAnalysis", field.nameObject);
        form.push_back({&field, bytes, name, find(field.valueObject), find(field.hexObject)});
    }
    return form;
}

void dataPacketAnalysis::connectSlots()
{
    connect(ui.pushButton_Cmd, &QPushButton::clicked, this, &dataPacketAnalysis::openCmd);
    connect(ui.pushButton_Send, &QPushButton::clicked, this, &dataPacketAnalysis::sendCmd);
    connect(ui.pushButton_Analysis, &QPushButton::clicked, this, &dataPacketAnalysis::analysisSend);
    connect(ui.pushButton_AnalysisRev, &QPushButton::clicked, this,
            &dataPacketAnalysis::analysisRev);
    connect(ui.pushButton_Create, &QPushButton::clicked, this, &dataPacketAnalysis::createData);
    connect(ui.pushButton_Send_Null, &QPushButton::clicked, this, &dataPacketAnalysis::sendNull);
    for (const FieldWidgets &row : m_hostForm) {
        if (auto *edit = qobject_cast<QLineEdit *>(row.value)) {
            connect(edit, &QLineEdit::returnPressed, this,
                    &dataPacketAnalysis::lineEditReturnPressed);
            setEntryRule(edit, row.field->limit);
        }
    }
    for (QCheckBox *box : {ui.checkBox_1, ui.checkBox_2})
        connect(box, &QCheckBox::clicked, this, &dataPacketAnalysis::lineEditReturnPressed);
}

void dataPacketAnalysis::setFixedSizes()
{
    const double scale = QGlobal::instance()->scaleFactor;
    const int nameWidth = scaled(int((scale - 1) * kNameColumnGrowth + kNameColumn));
    for (QWidget *row :
         findChildren<QWidget *>(QRegularExpression(QStringLiteral("^row(Host|Gcu)_\\d+$"))))
        row->setFixedHeight(scaled(40));
    for (QWidget *row : {ui.rowHost_2, ui.rowHost_8, ui.rowGcu_2})
        row->setFixedHeight(scaled(80));
    for (QWidget *row : {ui.widget_8, ui.widget_81})
        row->setFixedHeight(scaled(50));
    for (const Form *form : {&m_hostForm, &m_gcuForm}) {
        for (const FieldWidgets &row : *form)
            row.name->setFixedWidth(nameWidth);
    }
    for (QLabel *head : {ui.label12, ui.label12_2})
        head->setFixedWidth(nameWidth);
    for (QPushButton *button : {ui.pushButton_Send, ui.pushButton_Send_Null, ui.pushButton_Create,
                                ui.pushButton_Analysis, ui.pushButton_AnalysisRev})
        button->setFixedWidth(scaled(120));
}

void dataPacketAnalysis::setMainWindow(NacelleBench *window)
{
    m_window = window;
    disableVideoCommands(window);
}

void dataPacketAnalysis::setHistoryView(int view)
{
    if (view != kHistoryView)
        return;
    for (QWidget *part : {ui.widget_7, ui.widget_8, ui.widget_80, ui.widget_81})
        part->hide();
}

void dataPacketAnalysis::showReceivedFrame(const QByteArray &frame)
{
    if (frame.size() > kLongFrame)
        showLongText(ui.textEdit_Rev, toHexText(frame));
    else
        showShortText(ui.textEdit_Rev, toHexText(frame));
    showGcuFrame(frame);
}

void dataPacketAnalysis::showFields(const Form &form, const QByteArray &frame)
{
    for (const FieldWidgets &row : form) {
        setTextOf(row.value, fieldText(*row.field, frame));
        setTextOf(row.hex, toHexText(fieldSlice(*row.field, frame)));
    }
}

void dataPacketAnalysis::showVerdict(QLabel *label, const QByteArray &frame)
{
    label->setText(translated(crcMatches(frame) ? "通过" : "不通过"));
}

void dataPacketAnalysis::showHostFrame(const QByteArray &frame)
{
    showFields(m_hostForm, frame);
    const quint8 flags = byteAt(frame, kFlagsOffset);
    ui.checkBox_1->setChecked(flags & (1 << kControlValidBit));
    ui.checkBox_2->setChecked(flags & (1 << kInertialValidBit));
    ui.label293->setText(commandName(byteAt(frame, kFixedSize)));
    showVerdict(ui.label303, frame);
}

void dataPacketAnalysis::showGcuFrame(const QByteArray &frame)
{
    showFields(m_gcuForm, frame);
    ui.label303_2->setText(feedbackText(frame));
    showVerdict(ui.label313_2, frame);
}

QByteArray dataPacketAnalysis::buildHostFrame() const
{
    HostTexts texts;
    for (std::size_t i = 0; i < m_hostForm.size(); ++i)
        texts.values[i] = textOf(m_hostForm[i].value);
    texts.controlValid = ui.checkBox_1->isChecked();
    texts.inertialValid = ui.checkBox_2->isChecked();
    texts.command = ui.label294->text();
    return ::buildHostFrame(texts);
}

void dataPacketAnalysis::applyCommand(const QString &name, const QString &p1, const QString &p2,
                                      const QString &p3, const QString &p4, const QString &p5,
                                      const QString &p6)
{
    ui.label293->setText(name);
    const QByteArray bytes = commandBytes(name, p1, p2, p3, p4, p5, p6);
    const int length = bytes.size() + kFrameOverhead;
    ui.label33->setText(QString::number(length));
    ui.label34->setText(toHexText(encodeU16(quint16(length))));
    ui.label294->setText(toHexText(bytes));
    lineEditReturnPressed();
}

void dataPacketAnalysis::openCmd()
{
    auto *dialog = new controlCmd;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setDataPacketAnalysis(this);
    dialog->setCommandText(ui.label294->text());
    dialog->show();
}

void dataPacketAnalysis::sendCmd()
{
    m_window->sendData(hexTextToBytes(ui.textEdit_Send->toPlainText()));
}

void dataPacketAnalysis::sendNull()
{
    m_window->sendData(hexTextToBytes(QLatin1String(kEmptyCommand)));
}

void dataPacketAnalysis::analysisSend()
{
    const QString digits = ui.textEdit_Send->toPlainText().remove(QLatin1Char(' '));
    if (const char *fault = frameFault(digits, kHostRows[0].field))
        return showNotice(fault);
    const QByteArray frame = hexTextToBytes(digits);
    if (frame.size() >= kSmallestHostFrame)
        showHostFrame(frame);
}

void dataPacketAnalysis::analysisRev()
{
    const QString digits = ui.textEdit_Rev->toPlainText().remove(QLatin1Char(' '));
    if (const char *fault = frameFault(digits, kGcuRows[0].field))
        return showNotice(fault);
    const QByteArray frame = hexTextToBytes(digits);
    if (frame.size() >= kSmallestGcuFrame)
        showGcuFrame(frame);
}

void dataPacketAnalysis::createData()
{
    ui.textEdit_Send->setPlainText(toHexText(buildHostFrame()));
}

/// The form passes once through the wire format: every value becomes what the wire can carry.
void dataPacketAnalysis::lineEditReturnPressed()
{
    showHostFrame(buildHostFrame());
}

bool dataPacketAnalysis::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == ui.lineEdit93 && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            lineEditReturnPressed();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void dataPacketAnalysis::nameRow(const FieldWidgets &row)
{
    row.bytes->setText(QGlobal::instance()->translate(byteLabel(*row.field)));
    const QString name = translated(row.field->key);
    setTextOf(row.name, name);
    for (QLabel *label : row.name->parentWidget()->findChildren<QLabel *>()) {
        const QVariant column = label->property("column");
        if (column == QLatin1String("value"))
            nameReadout(label, name);
        else if (column == QLatin1String("hex"))
            nameReadout(label, name + QLatin1Char(' ') + translated("16进制"));
    }
}

void dataPacketAnalysis::retranslate()
{
    relabel(this, kFixedTexts);
    for (const Form *form : {&m_hostForm, &m_gcuForm}) {
        for (const FieldWidgets &row : *form)
            nameRow(row);
    }
    nameReadout(ui.textEdit_Send, ui.label_Host->text());
    nameReadout(ui.textEdit_Rev, ui.label_Gcu->text());
    for (QLabel *label : {ui.label293, ui.label303, ui.label303_2, ui.label313_2})
        label->setText(QGlobal::instance()->translate(label->text()));
    ui.label293->setText(commandName(byteAt(hexTextToBytes(ui.label294->text()), 0)));
    ui.lineEdit53_2->setText(modeName(byteAt(hexTextToBytes(ui.label54_2->text()), 0)));
    ui.label303_2->setText(renewedFeedbackText(hexTextToBytes(ui.label304_2->text())));
}
