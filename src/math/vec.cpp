#include "model3d/math.h"

#include <cmath>

void vec_add(const float a[3], const float b[3], float out[3]) {
    for (int i = 0; i < 3; ++i) {
        out[i] = a[i] + b[i];
    }
}

void vec_sub(const float a[3], const float b[3], float out[3]) {
    for (int i = 0; i < 3; ++i) {
        out[i] = a[i] - b[i];
    }
}

void vec_mul(const float a[3], float s, float out[3]) {
    for (int i = 0; i < 3; ++i) {
        out[i] = a[i] * s;
    }
}

float vec_dot(const float a[3], const float b[3]) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

void vec_cross(const float a[3], const float b[3], float out[3]) {
    out[0] = a[1] * b[2] - a[2] * b[1];
    out[1] = a[2] * b[0] - a[0] * b[2];
    out[2] = a[0] * b[1] - a[1] * b[0];
}

void vec_normalize(float v[3]) {
    const float length = sqrtf(vec_dot(v, v));
    const float k = length != 0.0f ? 1.0f / length : 0.0f;
    vec_mul(v, k, v);
}
