#pragma once

#include "tools/podsim/podcamera.h"
#include "tools/podsim/podcodec.h"
#include "tools/podsim/podmotion.h"
#include "tools/podsim/podscene.h"

#include <QString>
#include <QStringList>

#include <array>
#include <optional>
#include <vector>

namespace podsim {

/// A box in the picture or, with both corners alike, a point; corners in pick units.
struct PickBox
{
    int x0 = 0;
    int y0 = 0;
    int x1 = 0;
    int y1 = 0;
};

/// Where a temperature is measured.
struct TemperatureArea
{
    bool isOn = false;
    int camera = 0;
    PickBox box;
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
    double seconds = 0; ///< that have passed; the scene moves by them
    /// Camera 1: daylight, 60 degrees, zoom to 30. Camera 2: thermal, 40 degrees, zoom to 8.
    std::array<PodCamera, 2> cameras{{{1.0, 30.0, 60.0, 0}, {1.0, 8.0, 40.0, 0}}};
    std::optional<std::size_t> target; ///< the object of the scene that tracking follows
    /// Miss distances given from outside, right and down of the centre in pick units.
    bool isTrackedFromOutside = false;
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
    int pictureInPicture = 1; ///< 1 daylight, 2 thermal, 3 and 4 the same with the other inset
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
    /// Tracks the moving object that a box of the picture touches, the one next to its middle if
    /// there are several; where there is none, the place behind the middle.
    void track(const PickBox &box);

    /// Index of the camera that fills the picture. Picks refer to it.
    std::size_t mainCamera() const;
    /// North, east and down of the point at x, y of the picture; its middle is the line of sight.
    Vector lineOfSight(double x = kPickCentre, double y = kPickCentre) const;
    /// Where a direction in ground axes is seen by a camera, as `PodCamera::pointOf` gives it.
    std::optional<std::array<double, 2>> seenAt(const Vector &direction, std::size_t camera) const;
    /// Degrees Celsius of the hottest object that a box of the picture touches, or of sky or ground
    /// behind its middle.
    double temperatureIn(const PickBox &box) const;
    /// Right and down from the picture's middle to what is tracked, in pick units; 0 when nothing
    /// is.
    std::array<int, 2> missDistances() const;
    /// The whole state in wire units. Flags, byte 0 from bit 0 up: recording, night view, ranging,
    /// tracking, OSD, target recognition, image flip, light. Byte 1: picture-in-picture in bits 0
    /// to 2, bit 3 camera 1 zooming, bit 4 camera 2 zooming.
    GcuReport report() const;

private:
    void noteMode(PodMode mode);
    std::optional<std::size_t> targetIn(const PickBox &box) const;
    /// Indexes of the objects that a box touches, the one next to its middle first.
    std::vector<std::size_t> objectsIn(const PickBox &box) const;
};

} // namespace podsim
