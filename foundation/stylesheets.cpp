#include "foundation/stylesheets.h"

namespace {

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
    sheets["button"] = "QPushButton{background-color:" + c("control") +
                       "; border-radius:4px; color:" + c("bright") + "; font:" + font14 +
                       "px;}QPushButton:pressed{ border:2px solid  rgba(17,159,236,255);}";
    sheets["progressBar"] = "QProgressBar{border-radius: 0px;  background-color: #000000;}"
                            "QProgressBar::chunk{ background-color:" +
                            c("hover") + "; }";
    return sheets;
}
