#include "tools/podsim/podscene.h"

#include <cmath>

namespace podsim {

Vector directionAt(const SceneObject &object, double seconds)
{
    const double turns = object.isMoving() ? seconds / object.period : 0;
    const double swing = std::sin(toRadians(360 * (turns - std::floor(turns))));
    const Angles angles{0, object.elevation + object.elevationSwing * swing,
                        object.azimuth + object.azimuthSwing * swing};
    return turned(rotationOf(angles), {1, 0, 0});
}

} // namespace podsim
