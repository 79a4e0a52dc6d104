#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <array>

// The frames that the video window sends: composed as hexadecimal text, without widgets.

/// What a console page gives to each of them, as hexadecimal text.
struct FrameTexts
{
    QString carrier;  ///< 57 bytes, offsets 12 to 68
    QString cameraKk; ///< one byte
    QString version;  ///< one byte
};

namespace video {

/// What a pick on the picture is for.
enum class Pick { Pointing, Cursor, Region, Tracking };

} // namespace video

/// A pick: two corners in 0 to 10000 from left to right and from top to bottom.
using PickCorners = std::array<quint16, 4>; // x0, y0, x1, y1

/// A position on a surface of `extent` pixels as a part of 10000, truncated toward zero, its low
/// 16 bits: there are more and less than that beyond the edges.
quint16 pickUnit(double position, int extent);

/// Whether the function can be ended. There is no frame that ends a pointing.
bool canEnd(video::Pick pick);

/// The frame that starts or ends a function: 77 to 82 bytes, the command at offset 69, the CRC
/// in the last two.
QByteArray pickFrame(video::Pick pick, bool start, const PickCorners &corners,
                     const FrameTexts &texts);

/// The frame of 73 bytes that takes picture-in-picture to `step`, 1 to 4.
QByteArray pictureInPictureFrame(int step, const FrameTexts &texts);
