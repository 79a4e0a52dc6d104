#pragma once

class QWidget;

/// Windows whose sizes are the same on every screen have text of one size too, whatever the desktop
/// says: a larger one would be cut.
void setBaseFont();

/// Gives a window, or the host of pages, the rules that all forms share, and a text to scale: in
/// the main window's own sheet a size that isn't whole is passed over.
void dressForm(QWidget *form);

/// Scales the text of a widget that has its own style sheet.
void scaleText(QWidget *widget);

/// Shows a widget's own style sheet in the colours of the palette.
void recolour(QWidget *widget);
