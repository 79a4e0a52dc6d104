#include "bench/plainform.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QTextEdit>

namespace {

template <typename T>
QWidget *makeOne(QWidget *parent)
{
    return new T(parent);
}

QWidget *makeSlider(QWidget *parent)
{
    return new QSlider(Qt::Horizontal, parent);
}

template <typename T>
void setText(QWidget *widget, const QString &text)
{
    static_cast<T *>(widget)->setText(text);
}

void setEntry(QWidget *widget, const QString &text)
{
    auto *list = static_cast<QComboBox *>(widget);
    list->clear();
    list->addItem(text);
}

void setNoText(QWidget *, const QString &) {}

/// What a widget of the noted form shows as its text.
QString shownText(const QWidget *widget)
{
    const auto *list = qobject_cast<const QComboBox *>(widget);
    return list ? list->currentText() : widget->property("text").toString();
}

} // namespace

/// The first that fits: a label that is more than one is a label.
const PlainForm::Kind PlainForm::kKinds[] = {
    {&QLabel::staticMetaObject, makeOne<QLabel>, setText<QLabel>},
    {&QLineEdit::staticMetaObject, makeOne<QLineEdit>, setText<QLineEdit>},
    {&QPushButton::staticMetaObject, makeOne<QPushButton>, setText<QPushButton>},
    {&QCheckBox::staticMetaObject, makeOne<QCheckBox>, setText<QCheckBox>},
    {&QComboBox::staticMetaObject, makeOne<QComboBox>, setEntry},
    {&QSlider::staticMetaObject, makeSlider, setNoText},
    {&QTextEdit::staticMetaObject, makeOne<QTextEdit>, setNoText},
    {&QPlainTextEdit::staticMetaObject, makeOne<QPlainTextEdit>, setNoText},
    {&QScrollArea::staticMetaObject, makeOne<QScrollArea>, setNoText},
    {&QWidget::staticMetaObject, makeOne<QWidget>, setNoText},
};

const PlainForm::Kind *PlainForm::kindOf(const QWidget *widget)
{
    const Kind *kind = kKinds;
    while (!kind->type->cast(widget))
        ++kind;
    return kind;
}

PlainForm::PlainForm(QWidget *like)
{
    note(like, -1);
}

/// Of what a widget of the toolkit is made of itself nothing is noted.
void PlainForm::note(const QWidget *widget, int parent)
{
    const Kind *kind = kindOf(widget);
    const int place = int(m_parts.size());
    m_parts.push_back({kind, parent, widget->geometry(), shownText(widget), widget->isHidden()});
    if (const auto *area = qobject_cast<const QScrollArea *>(widget))
        return note(area->widget(), place);
    if (kind->type != &QWidget::staticMetaObject)
        return;
    for (const QWidget *child :
         widget->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        note(child, place);
}

PlainForm::Widgets PlainForm::make(QWidget *host) const
{
    Widgets made;
    for (const Part &part : m_parts) {
        QWidget *parent = part.parent < 0 ? host : made[std::size_t(part.parent)];
        QWidget *widget = part.kind->make(parent);
        if (auto *area = qobject_cast<QScrollArea *>(parent))
            area->setWidget(widget);
        widget->setGeometry(part.geometry);
        widget->setVisible(!part.isHidden);
        part.kind->setText(widget, part.text);
        made.push_back(widget);
    }
    return made;
}

void PlainForm::setTexts(const Widgets &widgets) const
{
    for (std::size_t i = 0; i < widgets.size(); ++i)
        m_parts[i].kind->setText(widgets[i], m_parts[i].text);
}
