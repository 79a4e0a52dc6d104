#pragma once

#include <QRect>
#include <QString>
#include <QWidget>

#include <vector>

/// What plain Qt gives who only wants such a form: as many widgets of the same kinds at the same
/// places with the same texts, without style sheets, rules of entry and layouts.
class PlainForm
{
public:
    using Widgets = std::vector<QWidget *>; ///< the form itself first

    /// Notes what `like` is made of, which isn't needed any more then.
    explicit PlainForm(QWidget *like);

    /// Makes the form in its host, which owns it; it isn't shown yet.
    Widgets make(QWidget *host) const;

    /// Gives the widgets of a form that was made so the texts of this one.
    void setTexts(const Widgets &widgets) const;

private:
    struct Kind
    {
        const QMetaObject *type;
        QWidget *(*make)(QWidget *parent);
        void (*setText)(QWidget *widget, const QString &text);
    };
    struct Part
    {
        const Kind *kind;
        int parent; ///< place in the list, -1 for the host
        QRect geometry;
        QString text;
        bool isHidden;
    };

    static const Kind kKinds[];
    static const Kind *kindOf(const QWidget *widget);
    void note(const QWidget *widget, int parent);

    std::vector<Part> m_parts;
};
