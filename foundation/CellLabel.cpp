#include "foundation/CellLabel.h"

#include <QEvent>

/// A label that isn't shown either isn't polished yet, so that the style would work out all of its
/// rules for the width of a frame, and forget them again at polishing; or it's being given up.
bool CellLabel::event(QEvent *event)
{
    return (event->type() == QEvent::StyleChange && !isVisible()) || QLabel::event(event);
}
