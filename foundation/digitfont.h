#pragma once

#include <QFont>
#include <QWidget>

/// For a display of hexadecimal text, which on a bad line is one line of up to 64 KB: digits are
/// laid out as they stand, without shaping and kerning. They look the same and take half the time.
inline void setDigitFont(QWidget *display)
{
    QFont font = display->font();
    font.setStyleStrategy(QFont::PreferNoShaping);
    font.setKerning(false);
    display->setFont(font);
}
