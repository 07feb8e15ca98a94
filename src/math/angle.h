// Degrees as attributes, data bindings and scene files give them.
#ifndef MATH_ANGLE_H
#define MATH_ANGLE_H

#include <cmath>

// The short constant is part of the interface: everything that was tuned with it stays in place.
inline float radians_from_degrees(float degrees) {
    return (degrees / 180.0f) * 3.14159f;
}

// The degrees that radians_from_degrees turns into exactly these radians, where there are any.
inline float degrees_from_radians(float radians) {
    const float near = (radians / 3.14159f) * 180.0f;
    float below = near;
    float above = near;
    for (int i = 0; i < 4; i++) {
        if (radians_from_degrees(below) == radians) return below;
        if (radians_from_degrees(above) == radians) return above;
        below = nextafterf(below, -INFINITY);
        above = nextafterf(above, INFINITY);
    }
    return near;
}

#endif
