#pragma once

#include "protocol/fields.h"

class QLineEdit;

/// Gives a line edit the validator that a limit describes; the edit owns it. No limit, no rule.
void setEntryRule(QLineEdit *edit, const protocol::Limit &limit);
