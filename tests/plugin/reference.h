/* Matrices in double precision, from the textbook, to compare single-precision results with. */
#ifndef TESTS_PLUGIN_REFERENCE_H
#define TESTS_PLUGIN_REFERENCE_H

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace reference {

using matrix = std::array<double, 16>; // row r, column c at c * 4 + r

inline double radians(double degrees) {
    return degrees / 180 * 3.14159;
} // the system's own pi

inline matrix scale(double x, double y, double z) {
    return {x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1};
}
inline matrix translate(double x, double y, double z) {
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1};
}

// Right-handed, about axis 0, 1 or 2.
inline matrix rotate(int axis, double angle) {
    matrix m = scale(1, 1, 1);
    const int a = (axis + 1) % 3, b = (axis + 2) % 3;
    m[a * 4 + a] = m[b * 4 + b] = std::cos(angle);
    m[a * 4 + b] = std::sin(angle);
    m[b * 4 + a] = -std::sin(angle);
    return m;
}

inline matrix operator*(const matrix& a, const matrix& b) {
    matrix m{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            for (int k = 0; k < 4; ++k)
                m[c * 4 + r] += a[k * 4 + r] * b[c * 4 + k];
    return m;
}

// A frustum from its planes at the near distance.
inline matrix perspective(double fovy_deg, double aspect, double near, double far) {
    const double top = near * std::tan(fovy_deg * M_PI / 360), right = top * aspect;
    matrix m{};
    m[0] = near / right;
    m[5] = near / top;
    m[10] = -(far + near) / (far - near);
    m[11] = -1;
    m[14] = -2 * far * near / (far - near);
    return m;
}

inline std::vector<double> upper3x3(const matrix& m) {
    return {m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10]};
}

template <class A, class B> void expect_near(const A& got, const B& expected, const char* what) {
    ASSERT_EQ(got.size(), expected.size()) << what;
    for (size_t i = 0; i < got.size(); ++i)
        EXPECT_NEAR(got[i], expected[i], 2e-5 * (1 + std::abs(expected[i]))) << what << "[" << i << "]";
}

} // namespace reference

#endif
