#include "protocol/entryrules.h"

#include <QDoubleValidator>
#include <QIntValidator>
#include <QLineEdit>
#include <QLocale>
#include <QRegExp>
#include <QRegExpValidator>

namespace {

/// Numbers as the frame's fields parse them, whatever the system's locale: a point, no groups.
template <typename Validator>
Validator *plainNumbers(Validator *validator)
{
    QLocale locale = QLocale::c();
    locale.setNumberOptions(QLocale::RejectGroupSeparator);
    validator->setLocale(locale);
    return validator;
}

} // namespace

void setEntryRule(QLineEdit *edit, const protocol::Limit &limit)
{
    switch (limit.kind) {
    case protocol::Limit::None:
        break;
    case protocol::Limit::Integer:
        edit->setValidator(plainNumbers(new QIntValidator(limit.low, limit.high, edit)));
        break;
    case protocol::Limit::Real:
        edit->setValidator(
            plainNumbers(new QDoubleValidator(limit.low, limit.high, limit.decimals, edit)));
        break;
    case protocol::Limit::Pattern:
        edit->setValidator(new QRegExpValidator(QRegExp(QLatin1String(limit.pattern)), edit));
        break;
    }
}
