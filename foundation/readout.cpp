#include "foundation/readout.h"

#include <QAccessibleWidget>
#include <QLabel>

namespace {

class Readout : public QAccessibleWidget
{
public:
    explicit Readout(QLabel *label) : QAccessibleWidget(label, QAccessible::EditableText) {}

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? static_cast<QLabel *>(object())->text()
                                          : QAccessibleWidget::text(kind);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.readOnly = true;
        return state;
    }
};

QAccessibleInterface *readoutOf(const QString &, QObject *object)
{
    auto *label = qobject_cast<QLabel *>(object);
    return label && !label->accessibleName().isEmpty() ? new Readout(label) : nullptr;
}

} // namespace

void nameReadout(QWidget *widget, const QString &name)
{
    static const bool installed = (QAccessible::installFactory(readoutOf), true);
    Q_UNUSED(installed)
    // The one that the toolkit made at the widget's first text would stay.
    if (widget->accessibleName().isEmpty())
        QAccessible::deleteAccessibleInterface(
            QAccessible::uniqueId(QAccessible::queryAccessibleInterface(widget)));
    widget->setAccessibleName(name);
}
