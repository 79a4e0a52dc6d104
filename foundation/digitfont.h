#pragma once

#include "foundation/QGlobal.h"
#include "foundation/stylesheets.h"

#include <QFont>
#include <QWidget>

/// For a display of hexadecimal text. Digits of one width stand below each other, so that two
/// frames can be compared by eye; the families are those of Windows and of Debian. Blanks are made
/// narrower by a quarter of the text's height, so that a line holds as many bytes as with any other
/// font. On a bad line the text is one line of up to 64 KB: digits are laid out as they stand,
/// without shaping and kerning, which takes half the time.
inline void setDigitFont(QWidget *display)
{
    QFont font = display->font();
    font.setFamilies({QStringLiteral("Consolas"), QStringLiteral("DejaVu Sans Mono")});
    font.setStyleHint(QFont::Monospace, QFont::PreferNoShaping);
    font.setFixedPitch(true);
    font.setKerning(false);
    font.setWordSpacing(-textHeight(QGlobal::instance()->scaleFactor) / 4.0);
    display->setFont(font);
}
