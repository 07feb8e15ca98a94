// Degrees as attributes, data bindings and scene files give them.
#ifndef MATH_ANGLE_H
#define MATH_ANGLE_H

#include <bit>
#include <cmath>
#include <cstdint>

// The short constant is part of the interface: everything that was tuned with it stays in place.
inline float radians_from_degrees(float degrees) {
    return (degrees / 180.0f) * 3.14159f;
}

// The degrees that radians_from_degrees turns into exactly these radians, where there are any; of several the
// roundest, so that 7 comes back as 7.
inline float degrees_from_radians(float radians) {
    if (radians == 0.0f) return radians; // with its sign
    const float near = (radians / 3.14159f) * 180.0f;
    float candidate = near;
    for (int i = 0; i < 4; ++i) {
        candidate = nextafterf(candidate, -INFINITY);
    }
    float best = near;
    int best_zeros = -1;
    for (int i = 0; i < 9; ++i) {
        const int zeros = __builtin_ctz(std::bit_cast<uint32_t>(candidate) | 0x800000u);
        if (zeros > best_zeros && radians_from_degrees(candidate) == radians) {
            best = candidate;
            best_zeros = zeros;
        }
        candidate = nextafterf(candidate, INFINITY);
    }
    return best;
}

#endif
