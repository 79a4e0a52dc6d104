#include "protocol/controlCmd.h"

#include "foundation/QGlobal.h"
#include "foundation/digitfont.h"
#include "foundation/formlook.h"
#include "foundation/readout.h"
#include "foundation/relabel.h"
#include "foundation/scale.h"
#include "protocol/codec.h"
#include "protocol/commands.h"
#include "protocol/dataPacketAnalysis.h"
#include "protocol/fields.h"

#include <algorithm>

namespace {

constexpr quint8 kFillLightCode = 0x80;

/// The items of the combo box. The external image tracking isn't offered, since its miss distances
/// come from a tracker and not from an operator. The fourteenth item is the name of no command, so
/// that it opens no row and gives no bytes; operators count the list's items.
constexpr const char *kItems[] = {
    "空命令",
    "吊舱校准",
    "回中",
    "OSD坐标",
    "图像自动翻转",
    "时区",
    "角度控制",
    "FPV",
    "锁定",
    "跟随",
    "俯拍",
    "欧拉角控制",
    "凝视(地理坐标引导)",
    "凝视(地理目标锁定)",
    "跟踪",
    "指点平移",
    "拍照",
    "录像开始/停止",
    "连续放大",
    "连续缩小",
    "停止变倍",
    "指定倍率",
    "聚焦",
    "调色盘",
    "夜视",
    "OSD",
    "画中画",
    "目标识别",
    "变焦相机数字变焦",
    "补光",
    "连续测距",
    "区域测温",
    "温度报警",
    "等温线",
    "指点测温",
};

/// Label and initial text of one input row: a word for the language lookup, then what is joined
/// to it.
struct Prompt
{
    const char *word = "";
    const char *rest = "";
    const char *initial = "0";
};

constexpr Prompt kKk{"", "KK:", "1"};
constexpr Prompt kTt{"", "TT:"};
constexpr Prompt kTtDecimal{"", "TT（DEC）:"};
constexpr Prompt kZoom{"", "ZZ ZZ（DEC）:"};
constexpr Prompt kX0{"", "XO X0（DEC）:"}; // the letter O: operators know the caption so
constexpr Prompt kY0{"", "Y0 Y0（DEC）:"};
constexpr Prompt kX1{"", "X1 X1（DEC）:"};
constexpr Prompt kY1{"", "Y1 Y1（DEC）:"};
constexpr Prompt kLongitude{"经度", ":"};
constexpr Prompt kLatitude{"纬度", ":"};
constexpr Prompt kHeight{"高度", "(m):"};
constexpr Prompt kUpper{"上限", "(DEC):"};
constexpr Prompt kLower{"下限", "(DEC):"};
constexpr Prompt kMissHorizontal{"水平脱靶量", ":"};
constexpr Prompt kMissVertical{"垂直脱靶量", ":"};

/// The input rows of a command, one for each of its parameters, in the same order.
struct Prompts
{
    quint8 code = 0;
    std::array<Prompt, kMaxParams> rows = {};
};

constexpr Prompts kPrompts[] = {
    {0x06, {kTt}},
    {0x07, {kTt}},
    {0x08, {kTt}},
    {0x15, {kLongitude, kLatitude, kHeight}},
    {0x17, {kTt, kX0, kY0, kX1, kY1}},
    {0x1A, {kX0, kY0}},
    {0x1B, {kKk, kMissHorizontal, kMissVertical, kTt}},
    {0x22, {kKk}},
    {0x23, {kKk}},
    {0x24, {kKk}},
    {0x25, {kKk, kZoom}},
    {0x2A, {kTtDecimal}},
    {0x2B, {kTt}},
    {0x30, {kKk, kTt, kX0, kY0, kX1, kY1}},
    {0x31, {kKk, kTt, kUpper, kLower}},
    {0x32, {kKk, kTt, kUpper, kLower}},
    {0x33, {kKk, kTt, kX0, kY0}},
    {0x73, {kTt}},
    {0x74, {kTt}},
    {0x75, {kTt}},
    {0x76, {kTt}},
    {0x80, {kTtDecimal}},
    {0x81, {kTt}},
};

constexpr int rowCount(const Prompts &prompts)
{
    int count = 0;
    for (const Prompt &prompt : prompts.rows)
        count += *prompt.rest != '\0';
    return count;
}

/// True when a command has as many labels as parameters; without parameters it has no row.
constexpr bool promptsFit(const CommandRow &command)
{
    for (const Prompts &prompts : kPrompts) {
        if (prompts.code == command.code)
            return rowCount(prompts) == paramCount(command);
    }
    return paramCount(command) == 0;
}

constexpr bool allPromptsFit()
{
    for (const CommandRow &command : kCommands) {
        if (!promptsFit(command))
            return false;
    }
    return true;
}
static_assert(allPromptsFit(), "a command's labels aren't as many as its parameters");

Prompt promptOf(quint8 code, std::size_t row)
{
    const auto prompts = std::find_if(std::begin(kPrompts), std::end(kPrompts),
                                      [code](const Prompts &p) { return p.code == code; });
    return prompts == std::end(kPrompts) ? Prompt() : prompts->rows[row];
}

QString labelText(const Prompt &prompt)
{
    const QString word = *prompt.word ? translated(prompt.word) : QString();
    return word + QString::fromUtf8(prompt.rest);
}

/// A parameter as its field shows it. Single bytes are signed, the fill light's alone isn't.
QString paramText(const CommandRow &command, ParamKind kind, const QByteArray &bytes)
{
    switch (kind) {
    case ParamKind::None:
        return {};
    case ParamKind::Byte:
        return QString::number(command.code == kFillLightCode ? int(byteAt(bytes, 0))
                                                              : int(qint8(byteAt(bytes, 0))));
    case ParamKind::U16:
        return QString::number(decodeU16(bytes));
    case ParamKind::I16:
    case ParamKind::Temperature:
        return QString::number(decodeI16(bytes));
    case ParamKind::GeoDegrees:
        return QString::number(decodeI32(bytes) * kGeoDegrees.factor, 'f', 7);
    case ParamKind::Metres:
        return QString::number(decodeI32(bytes) * kThousandths.factor, 'g', 6);
    }
    return {};
}

constexpr Caption kCaptions[] = {{"label", "连接设备"},
                                 {"label_2", "原始值"},
                                 {"label_3", "16进制"},
                                 {"pushButton_Cancel", "取消"},
                                 {"pushButton_Ok", "确定"}};

} // namespace

controlCmd::controlCmd(QWidget *parent) : QWidget(parent)
{
    ui.setupUi(this);
    dressForm(this);
    setDigitFont(ui.textEdit_16);
    m_labels = {ui.label_4, ui.label_5, ui.label_6, ui.label_7, ui.label_10, ui.label_11};
    m_edits = {ui.lineEdit_4, ui.lineEdit_5,  ui.lineEdit_6,
               ui.lineEdit_7, ui.lineEdit_10, ui.lineEdit_11};
    setWindowTitle(translated("命令"));
    relabel(this, kCaptions);
    nameReadout(ui.comboBox_Cmd, windowTitle());
    nameReadout(ui.textEdit_16, ui.label_3->text());
    for (QLabel *label : m_labels)
        label->setFixedWidth(scaled(90));
    ui.comboBox_Cmd->clear();
    for (const char *item : kItems)
        ui.comboBox_Cmd->addItem(translated(item));
    blankRows();
    connectSlots();
}

void controlCmd::connectSlots()
{
    connect(ui.pushButton_Ok, &QPushButton::clicked, this, &controlCmd::ok);
    connect(ui.pushButton_Cancel, &QPushButton::clicked, this, &controlCmd::close);
    connect(ui.comboBox_Cmd, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &controlCmd::indexChange);
    for (QLineEdit *edit : m_edits)
        connect(edit, &QLineEdit::textChanged, this, &controlCmd::onText4Changed);
}

void controlCmd::setDataPacketAnalysis(dataPacketAnalysis *page)
{
    m_page = page;
}

void controlCmd::blankRows()
{
    for (QLabel *label : m_labels)
        label->clear();
    for (QLineEdit *edit : m_edits) {
        edit->setEnabled(false);
        edit->clear();
    }
}

void controlCmd::indexChange(int)
{
    blankRows();
    if (const CommandRow *command = findCommand(ui.comboBox_Cmd->currentText())) {
        for (std::size_t i = 0; i < m_edits.size(); ++i) {
            if (command->params[i].kind == ParamKind::None)
                continue;
            const Prompt prompt = promptOf(command->code, i);
            m_labels[i]->setText(labelText(prompt));
            m_edits[i]->setText(QLatin1String(prompt.initial));
            m_edits[i]->setEnabled(true);
        }
    }
    showPreview();
}

void controlCmd::setCommandText(const QString &text)
{
    const QByteArray bytes = hexTextToBytes(text);
    const QString name = commandName(byteAt(bytes, 0));
    ui.comboBox_Cmd->setCurrentIndex(ui.comboBox_Cmd->findText(name));
    if (const CommandRow *command = findCommand(name)) {
        int offset = command->fixedByte == kNoFixedByte ? 1 : 2;
        for (std::size_t i = 0; i < m_edits.size(); ++i) {
            const ParamKind kind = command->params[i].kind;
            if (kind == ParamKind::None)
                continue;
            m_edits[i]->setText(paramText(*command, kind, bytes.mid(offset, paramSize(kind))));
            offset += paramSize(kind);
        }
    }
    ui.textEdit_16->setText(toHexText(bytes));
}

QByteArray controlCmd::currentBytes() const
{
    return commandBytes(ui.comboBox_Cmd->currentText(), m_edits[0]->text(), m_edits[1]->text(),
                        m_edits[2]->text(), m_edits[3]->text(), m_edits[4]->text(),
                        m_edits[5]->text());
}

void controlCmd::showPreview()
{
    ui.textEdit_16->setText(toHexText(currentBytes()));
}

void controlCmd::onText4Changed(QString)
{
    showPreview();
}

void controlCmd::onText5Changed(QString)
{
    showPreview();
}

void controlCmd::onText6Changed(QString)
{
    showPreview();
}

void controlCmd::ok()
{
    m_page->applyCommand(ui.comboBox_Cmd->currentText(), m_edits[0]->text(), m_edits[1]->text(),
                         m_edits[2]->text(), m_edits[3]->text(), m_edits[4]->text(),
                         m_edits[5]->text());
    close();
}
