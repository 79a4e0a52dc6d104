#include "foundation/stylesheets.h"

#include <QRegularExpression>

namespace {

constexpr int kSmallestText = 10; ///< in pixels; below, Chinese can't be read any more
constexpr int kThinnestBar = 10;

/// What all forms share; a bar with another sheet takes from it what it doesn't set, so that
/// the log's narrow handle would have no width left between margins. %1 is the side of an arrow, %2
/// the width of its box, %3 the side of a check box, %4 the width of a scroll bar.
const char *const kCommonRules = R"(QLabel{background-color:#283142;color:#A9A9A9;}
QLineEdit{background-color:#202835;color:#FFFFFF;border:1px solid #323E52;padding:0px 6px;selection-background-color:#397AF7;selection-color:#FFFFFF;}
QLineEdit:hover{border-bottom:1px solid #397AF7;}
QLineEdit:focus{border:1px solid #397AF7;}
QLineEdit[readOnly="true"]:hover{border-bottom:1px solid #323E52;}
QLineEdit:disabled{background-color:#283142;color:#777777;}
QComboBox{combobox-popup:0;background-color:#202835;color:#FFFFFF;border:1px solid #323E52;padding:0px 6px;}
QComboBox:hover,QComboBox:focus,QComboBox:on{border:1px solid #397AF7;}
QComboBox:disabled{background-color:#283142;color:#777777;}
QComboBox::drop-down{subcontrol-origin:padding;subcontrol-position:center right;width:%2px;border:none;}
QComboBox::down-arrow{image:url(:/NacelleDesk/Resources/down_2.png);width:%1px;height:%1px;}
QComboBox::down-arrow:on{image:url(:/NacelleDesk/Resources/up_2.png);}
QComboBox QAbstractItemView{background-color:#283142;color:#FFFFFF;border:1px solid #323E52;outline:0px;selection-background-color:#397AF7;selection-color:#FFFFFF;}
QPushButton{background-color:#283142;color:#FFFFFF;border:1px solid #323E52;padding:0px 4px;}
QPushButton:hover,QPushButton:focus,QPushButton:checked{border:1px solid #397AF7;}
QPushButton:pressed{background-color:#202835;}
QPushButton:disabled{color:#777777;border:1px solid #323E52;}
QPlainTextEdit,QTextEdit{background-color:#202835;color:#FFFFFF;border:1px solid #323E52;selection-background-color:#397AF7;selection-color:#FFFFFF;}
QPlainTextEdit:hover,QTextEdit:hover,QPlainTextEdit:focus,QTextEdit:focus{border:1px solid #397AF7;}
QScrollBar:vertical{background-color:#202835;width:%4px;margin:0px;border:none;}
QScrollBar:horizontal{background-color:#202835;height:%4px;margin:0px;border:none;}
QScrollBar::handle{background-color:#4A5A76;border-radius:3px;}
QScrollArea QScrollBar::handle,QTextEdit QScrollBar::handle,QAbstractItemView QScrollBar::handle{margin:2px;}
QScrollBar::handle:vertical{min-height:24px;}
QScrollBar::handle:horizontal{min-width:24px;}
QScrollBar::handle:hover,QScrollBar::handle:pressed{background-color:#397AF7;}
QScrollBar::add-line,QScrollBar::sub-line{width:0px;height:0px;border:none;}
QScrollBar::add-page,QScrollBar::sub-page{background:none;}
QAbstractScrollArea::corner{background-color:#202835;border:none;}
QMenu{background-color:#283142;color:#FFFFFF;border:1px solid #323E52;}
QMenu::item:selected{background-color:#397AF7;}
QMenu::item:disabled{color:#777777;}
QMenu::separator{height:1px;background-color:#323E52;}
QCheckBox{background-color:transparent;color:#FFFFFF;spacing:6px;}
QCheckBox:disabled{color:#777777;}
QCheckBox::indicator{width:%3px;height:%3px;image:url(:/NacelleDesk/Resources/cbx_unselect2.png);border:1px solid transparent;}
QCheckBox::indicator:checked{image:url(:/NacelleDesk/Resources/cbx_selected2.png);}
QCheckBox::indicator:hover,QCheckBox::indicator:focus{border:1px solid #397AF7;}
)";

/// The colours in which the forms are drawn, and their names in the palette.
constexpr struct
{
    const char *drawn;
    const char *key;
} kDrawnColours[] = {{"#202835", "main"},   {"#283142", "control"}, {"#323E52", "monitor"},
                     {"#FFFFFF", "bright"}, {"#397AF7", "hover"},   {"#A9A9A9", "dark"}};

QString paletteColour(const QString &drawn, const QMap<QString, QString> &palette)
{
    for (const auto &colour : kDrawnColours) {
        if (drawn != QLatin1String(colour.drawn))
            continue;
        const QString chosen = palette.value(QLatin1String(colour.key));
        return chosen.isEmpty() ? drawn : chosen;
    }
    return drawn;
}

QString comboBoxSheet(const QString &background, const QString &text, const QString &popup,
                      const QString &size, const QString &font)
{
    return QStringLiteral(
               "QComboBox{background-color:%1; color:%2; border:0px; padding-left:%4px; font:%5px}"
               "QComboBox QAbstractItemView{background-color:%3; color:%2; font:%5px}"
               "QComboBox::drop-down{border:0px; width:%4px}"
               "QComboBox::down-arrow{image: url(:/NacelleDesk/Resources/down_2.png); width:%4px; "
               "height:%4px}"
               "QComboBox::down-arrow:on{image: url(:/NacelleDesk/Resources/up_2.png);}")
        .arg(background, text, popup, size, font);
}

QString sliderSheet(double scale)
{
    return QStringLiteral(
               "QSlider {background-color:#00000000; }"
               "QSlider::groove:horizontal{height:%1px; border-radius:%2px; background:#9ca0a2;}"
               "QSlider::handle:horizontal{width:%3px; height:%3px; margin:-%2px 0px; "
               "border-image: url(:/NacelleDesk/Resources/handle.png);}")
        .arg(int(4 * scale + 1))
        .arg(int(2 * scale))
        .arg(int(12 * scale));
}

QString buttonSheet(const QString &background, const QString &text, const QString &font)
{
    return "QPushButton{background-color:" + background + "; border-radius:4px; color:" + text +
           "; font:" + font + "px;}QPushButton:pressed{ border:2px solid  rgba(17,159,236,255);}";
}

} // namespace

QMap<QString, QString> buildStyleSheets(const QMap<QString, QString> &palette, double scale)
{
    const auto c = [&palette](const char *key) {
        return palette.value(QLatin1String(key), QLatin1String(""));
    };
    const auto general = [scale](double base) { return QString::number(base * scale, 'g', 6); };
    const QString font14 = QString::number(int(14 * scale));

    QMap<QString, QString> sheets;
    sheets["alternation"] = "background-color:" + c("alternation");
    sheets["sbus"] =
        "QLabel{background-color:#00000000; color:" + c("dark") + ";font:" + general(12) + "px}";
    sheets["sbus_comboBox"] = comboBoxSheet(QStringLiteral("#00000000"), c("bright"), c("control"),
                                            general(12), general(12));
    sheets["sbus_cbx"] =
        QLatin1String("QPushButton{border-image: url(:/NacelleDesk/Resources/cbx_unselect2.png)}"
                      "QPushButton:checked{border-image: "
                      "url(:/NacelleDesk/Resources/cbx_selected2.png);}");
    sheets["comboBox"] = comboBoxSheet(c("main"), c("bright"), c("control"), general(16), font14);
    sheets["slider"] = sliderSheet(scale);
    sheets["button"] = buttonSheet(c("control"), c("bright"), font14);
    sheets["progressBar"] = "QProgressBar{border-radius: 0px;  background-color: #000000;}"
                            "QProgressBar::chunk{ background-color:" +
                            c("hover") + "; }";
    return sheets;
}

int textHeight(double scale)
{
    return qMax(kSmallestText, int(kBaseText * scale));
}

QString textRule(double scale)
{
    return QStringLiteral("QWidget{font-size:%1px;}\n").arg(textHeight(scale));
}

QString recoloured(const QString &sheet, const QMap<QString, QString> &palette)
{
    static const QRegularExpression colour(QStringLiteral("#[0-9A-F]{6}(?![0-9A-F])"));
    QString result;
    int end = 0;
    for (auto found = colour.globalMatch(sheet); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        result += sheet.midRef(end, match.capturedStart() - end);
        result += paletteColour(match.captured(), palette);
        end = match.capturedEnd();
    }
    return result + sheet.midRef(end);
}

QString formSheet(const QString &own, const QMap<QString, QString> &palette, double scale)
{
    const QString common = QString::fromLatin1(kCommonRules)
                               .arg(int(12 * scale))
                               .arg(int(20 * scale))
                               .arg(int(16 * scale))
                               .arg(qMax(kThinnestBar, int(10 * scale)));
    return recoloured(textRule(scale) + common + own, palette);
}
