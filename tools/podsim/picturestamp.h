#pragma once

#include <QImage>

#include <optional>

namespace podsim {

/// What a picture shows of itself: when it was sent and which one it is.
struct PictureStamp
{
    quint32 milliseconds = 0; ///< low 32 bits of the system clock's milliseconds since 1970
    quint32 number = 0;
};

/// The system clock as a stamp holds it. A difference of two is right across its overflow too.
quint32 stampClock();

/// Writes the stamp as two rows of 40 black and white blocks along the lower edge: 32 bits of time,
/// 32 of number and 16 of check, highest first. A block is a 40th of the picture's width and a
/// 45th of its height, which is 32 by 16 pixels at 1280 by 720. The picture has 32 bits a pixel.
void writeStamp(QImage &picture, const PictureStamp &stamp);

/// Reads the stamp of a whole picture of any format, compressed and scaled as it may be down to
/// about 320 by 180; nothing if there is none that can be read.
std::optional<PictureStamp> readStamp(const QImage &picture);

} // namespace podsim
