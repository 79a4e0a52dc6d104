#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

// Host frames composed as hexadecimal text, as the console and the video window do. Raw texts of a
// form stand in it unfilled and untested: an empty one leaves the frame a byte short, an odd number
// of digits moves everything in front by half a byte. The bench sends what the form says.

/// Number of bytes in a text of blanks and pairs of digits.
constexpr int hexTextSize(const char *text)
{
    int digits = 0;
    for (; *text; ++text)
        digits += *text != ' ';
    return digits / 2;
}

/// The parts of a frame after its length, as hexadecimal text.
struct FrameParts
{
    QString version;  ///< one byte
    QString controls; ///< six bytes
    QString flags;    ///< one byte
    QString carrier;  ///< 57 bytes, offsets 12 to 68
    QString command;  ///< from offset 69 to the CRC
};

/// The whole frame, CRC included. Its length field is `size`, whatever the texts come to.
QByteArray frameFromText(quint16 size, const FrameParts &parts);
