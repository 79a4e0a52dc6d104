#pragma once

class QWidget;

/// Windows whose sizes are the same on every screen have text of one size too, whatever the desktop
/// says: a larger one would be cut.
void setBaseFont();

/// Gives a window, or the host of pages, the rules that all forms share, and a text to scale: in
/// the main window's own sheet a size that isn't whole is passed over.
void dressForm(QWidget *form);

/// Gives the host of a page, or the page where it has none, the rules of its form, in the colours
/// of the palette; before the page has widgets. In a sheet of the page itself they would be applied
/// to each of its widgets once more, twice, when the page leaves its host to be deleted: three
/// times the work of making the next one.
void dressPage(QWidget *page, const char *rules);

/// Scales the text of a widget that has its own style sheet.
void scaleText(QWidget *widget);

/// Shows a widget's own style sheet in the colours of the palette.
void recolour(QWidget *widget);
