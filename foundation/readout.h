#pragma once

class QString;
class QWidget;

/// Names a read-out or text box for a screen reader. A label that is named so is read as a field
/// that can't be edited, with its text as the value: as a plain label it would be its name alone.
void nameReadout(QWidget *widget, const QString &name);
