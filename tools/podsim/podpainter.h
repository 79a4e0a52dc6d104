#pragma once

#include <QImage>

namespace podsim {

struct PodState;

/// Draws the picture that the pod shows: what its cameras see, laid out as picture-in-picture
/// wants it, the temperatures that are measured in it, and, where that is on, the display over it
/// with crosshair, mode, zoom, angles, time and the picture's number. The picture is 16:9 with 32
/// bits a pixel; in any thread.
void paintPicture(QImage &picture, const PodState &state, quint32 number);

} // namespace podsim
