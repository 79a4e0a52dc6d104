#pragma once

#include "tools/podsim/podcamera.h"
#include "tools/podsim/podcodec.h"
#include "tools/podsim/podmotion.h"

#include <QString>
#include <QStringList>

#include <array>

namespace podsim {

/// A temperature area or, with both corners alike, a single point; corners in pick units.
struct TemperatureArea
{
    bool on = false;
    int camera = 0;
    int x0 = 0;
    int y0 = 0;
    int x1 = 0;
    int y1 = 0;
};

/// Limits of the temperature alarm or of the isotherm, in the unit of the wire; `type` 0 is off.
struct TemperatureLimits
{
    int type = 0;
    int camera = 0;
    int upper = 0;
    int lower = 0;
};

/// All that a simulated pod is at one moment. Plain data, without input or output, clock or
/// thread: its owner applies commands (`podcommands.h`), moves it on with `step`, and shows or
/// sends what it finds.
struct PodState
{
    PodMotion motion;
    /// Camera 1 (daylight, 60 degrees, zoom to 30) shows the picture that picks refer to; camera 2
    /// (thermal, 40 degrees, zoom to 8).
    std::array<PodCamera, 2> cameras{{{1.0, 30.0, 60.0, 0}, {1.0, 8.0, 40.0, 0}}};
    /// Miss distances told from outside, right and down of the centre in pick units.
    bool externalTracking = false;
    int externalRight = 0;
    int externalDown = 0;

    int calibrations = 0;
    int osdPosition = 0;
    int autoFlip = 0;
    int timeZone = 0;
    int photos = 0;
    int recording = 0;
    int focusings = 0;
    int palette = 0;
    int nightVision = 0;
    int osd = 1;
    int pictureInPicture = 1;
    int recognition = 0;
    int digitalZoom = 0;
    int light = 0;
    int ranging = 0;
    TemperatureArea temperatureArea;
    TemperatureArea temperatureSpot;
    TemperatureLimits temperatureAlarm;
    TemperatureLimits isotherm;

    /// What has changed since the last call of `takeEvents`, a line each.
    QStringList events;

    QStringList takeEvents();
    /// Takes the carrier's data and control inputs and moves on by `seconds`.
    void step(double seconds, const HostFrame &host);
    void enter(PodMode mode);
    void enter(PodMode mode, const GeoPoint &place);

    /// North, east and down of the point at x, y of camera 1's picture; its middle is the line of
    /// sight.
    Vector lineOfSight(double x = kPickCentre, double y = kPickCentre) const;
    /// Right and down from the picture's middle to what is tracked, in pick units; 0 when nothing
    /// is.
    std::array<int, 2> missDistances() const;
    /// The whole state in wire units. Flags, byte 0 from bit 0 up: recording, night view, ranging,
    /// tracking, OSD, target recognition, image flip, light. Byte 1: picture-in-picture in bits 0
    /// to 2, bit 3 camera 1 zooming, bit 4 camera 2 zooming.
    GcuReport report() const;

private:
    void noteMode(PodMode mode);
};

} // namespace podsim
