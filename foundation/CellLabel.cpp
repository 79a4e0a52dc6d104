#include "foundation/CellLabel.h"

#include <QEvent>

/// A hidden label isn't polished yet, or is being given up. In the first case the style would work
/// out all its rules for the width of a frame and forget them at polishing. So no sheet must change
/// while its form is hidden.
bool CellLabel::event(QEvent *event)
{
    return (event->type() == QEvent::StyleChange && !isVisible()) || QLabel::event(event);
}
