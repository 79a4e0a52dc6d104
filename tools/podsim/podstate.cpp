#include "tools/podsim/podstate.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>

namespace podsim {

namespace {

constexpr double kPerDegree = 100;
constexpr double kPerGeoDegree = 1e7;
constexpr double kPerMetre = 1000;
constexpr double kTenths = 10;

template <typename Wire>
Wire onWire(double value)
{
    const double least = std::numeric_limits<Wire>::min();
    const double most = std::numeric_limits<Wire>::max();
    return Wire(std::lround(std::clamp(value, least, most)));
}

quint16 yawOnWire(double degrees)
{
    const int hundredths = onWire<qint16>(wrapped(degrees) * kPerDegree);
    return quint16((hundredths + 36000) % 36000);
}

quint8 bits(std::initializer_list<bool> flags)
{
    int value = 0;
    int bit = 1;
    for (const bool flag : flags) {
        value |= flag ? bit : 0;
        bit <<= 1;
    }
    return quint8(value);
}

void putAngles(GcuReport &report, const PodMotion &motion)
{
    report.relativeX = onWire<qint16>(motion.relative().roll * kPerDegree);
    report.relativeY = onWire<qint16>(motion.relative().pitch * kPerDegree);
    report.relativeZ = onWire<qint16>(motion.relative().yaw * kPerDegree);
    report.absoluteRoll = onWire<qint16>(motion.absolute().roll * kPerDegree);
    report.absolutePitch = onWire<qint16>(motion.absolute().pitch * kPerDegree);
    report.absoluteYaw = yawOnWire(motion.absolute().yaw);
    report.rateX = onWire<qint16>(motion.rates().roll * kTenths);
    report.rateY = onWire<qint16>(motion.rates().pitch * kTenths);
    report.rateZ = onWire<qint16>(motion.rates().yaw * kTenths);
}

void putTarget(GcuReport &report, const PodMotion &motion, const Vector &sight)
{
    const std::optional<double> distance = motion.groundDistance(sight);
    const GeoPoint target = distance ? motion.placeAlong(sight) : motion.carrierPosition();
    report.targetDistance = onWire<qint32>(distance.value_or(0) * kTenths);
    report.targetLongitude = onWire<qint32>(target.longitude * kPerGeoDegree);
    report.targetLatitude = onWire<qint32>(target.latitude * kPerGeoDegree);
    report.targetAltitude = onWire<qint32>(target.altitude * kPerMetre);
}

} // namespace

QStringList PodState::takeEvents()
{
    return std::exchange(events, {});
}

void PodState::step(double span, const HostFrame &host)
{
    seconds += span;
    motion.setCarrier(host);
    if (target)
        motion.movePlace(motion.placeAlong(directionAt(kScene[*target], seconds)));
    motion.step(span, host.control);
    for (std::size_t i = 0; i < cameras.size(); ++i)
        if (cameras[i].step(span))
            events.append(QStringLiteral("camera %1 zoom at its limit of %2")
                              .arg(i + 1)
                              .arg(cameras[i].zoom, 0, 'f', 1));
}

void PodState::enter(PodMode mode)
{
    isTrackedFromOutside = false;
    target.reset();
    noteMode(mode);
    motion.enter(mode);
}

void PodState::enter(PodMode mode, const GeoPoint &place)
{
    enter(mode);
    motion.enter(mode, place);
}

void PodState::track(const PickBox &box)
{
    const std::optional<std::size_t> found = targetIn(box);
    const Vector sight = found ? directionAt(kScene[*found], seconds)
                               : lineOfSight((box.x0 + box.x1) / 2.0, (box.y0 + box.y1) / 2.0);
    enter(PodMode::Tracking, motion.placeAlong(sight));
    target = found;
    if (found)
        events.append(QStringLiteral("tracking the %1").arg(QLatin1String(kScene[*found].name)));
}

std::optional<std::size_t> PodState::targetIn(const PickBox &box) const
{
    for (const std::size_t index : objectsIn(box))
        if (kScene[index].isMoving())
            return index;
    return {};
}

std::vector<std::size_t> PodState::objectsIn(const PickBox &box) const
{
    const PodCamera &camera = cameras[mainCamera()];
    std::vector<std::pair<double, std::size_t>> found; // with the distance from the middle
    for (std::size_t i = 0; i < kScene.size(); ++i) {
        const auto point = seenAt(directionAt(kScene[i], seconds), mainCamera());
        if (!point)
            continue;
        const double size = std::tan(toRadians(kScene[i].radius)) * kPickCentre;
        const double right = std::abs((*point)[0] - (box.x0 + box.x1) / 2.0);
        const double down = std::abs((*point)[1] - (box.y0 + box.y1) / 2.0);
        if (right <= std::abs(box.x1 - box.x0) / 2.0 + size / camera.halfWidth() &&
            down <= std::abs(box.y1 - box.y0) / 2.0 + size / camera.halfHeight())
            found.emplace_back(std::hypot(right, down), i);
    }
    std::sort(found.begin(), found.end());
    std::vector<std::size_t> indexes;
    indexes.reserve(found.size());
    for (const auto &entry : found)
        indexes.push_back(entry.second);
    return indexes;
}

double PodState::temperatureIn(const PickBox &box) const
{
    const std::vector<std::size_t> objects = objectsIn(box);
    const Vector sight = lineOfSight((box.x0 + box.x1) / 2.0, (box.y0 + box.y1) / 2.0);
    if (objects.empty())
        return sight[2] > 0 ? kGroundTemperature : kSkyTemperature;
    double hottest = kScene[objects.front()].temperature;
    for (const std::size_t index : objects)
        hottest = std::max(hottest, kScene[index].temperature);
    return hottest;
}

void PodState::noteMode(PodMode mode)
{
    const int code = int(mode);
    if (motion.mode() != mode)
        events.append(QStringLiteral("mode 0x%1 %2")
                          .arg(QString::number(code, 16).toUpper(), QLatin1String(modeName(code))));
}

std::size_t PodState::mainCamera() const
{
    return pictureInPicture == 2 || pictureInPicture == 4 ? 1 : 0;
}

Vector PodState::lineOfSight(double x, double y) const
{
    return turned(motion.cameraRotation(), cameras[mainCamera()].rayThrough(x, y));
}

std::optional<std::array<double, 2>> PodState::seenAt(const Vector &direction,
                                                      std::size_t camera) const
{
    return cameras[camera].pointOf(turned(transposed(motion.cameraRotation()), direction));
}

std::array<int, 2> PodState::missDistances() const
{
    if (isTrackedFromOutside)
        return {externalRight, externalDown};
    if (motion.mode() != PodMode::Tracking || !motion.place())
        return {0, 0};
    const Vector offset = offsetBetween(motion.carrierPosition(), *motion.place());
    const auto point = seenAt(offset, mainCamera());
    if (!point)
        return {0, 0};
    return {onWire<qint16>((*point)[0] - kPickCentre), onWire<qint16>((*point)[1] - kPickCentre)};
}

GcuReport PodState::report() const
{
    GcuReport report;
    report.mode = quint8(motion.mode());
    report.flags[0] =
        bits({recording != 0, nightVision != 0, ranging != 0, motion.mode() == PodMode::Tracking,
              osd != 0, recognition != 0, autoFlip != 0, light != 0});
    report.flags[1] =
        quint8((pictureInPicture & 0x07) |
               bits({false, false, false, cameras[0].zooming != 0, cameras[1].zooming != 0}));
    const std::array<int, 2> miss = missDistances();
    report.missHorizontal = qint16(miss[0]);
    report.missVertical = qint16(miss[1]);
    putAngles(report, motion);
    putTarget(report, motion, lineOfSight());
    report.zoom1 = onWire<quint16>(cameras[0].zoom * kTenths);
    report.zoom2 = onWire<quint16>(cameras[1].zoom * kTenths);
    return report;
}

} // namespace podsim
