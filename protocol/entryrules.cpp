#include "protocol/entryrules.h"

#include <QDoubleValidator>
#include <QIntValidator>
#include <QLineEdit>
#include <QRegExp>
#include <QRegExpValidator>

void setEntryRule(QLineEdit *edit, const Limit &limit)
{
    switch (limit.kind) {
    case Limit::None:
        break;
    case Limit::Integer:
        edit->setValidator(new QIntValidator(limit.low, limit.high, edit));
        break;
    case Limit::Real:
        edit->setValidator(new QDoubleValidator(limit.low, limit.high, limit.decimals, edit));
        break;
    case Limit::Pattern:
        edit->setValidator(new QRegExpValidator(QRegExp(QLatin1String(limit.pattern)), edit));
        break;
    }
}
