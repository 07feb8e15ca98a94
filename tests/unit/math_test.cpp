// Matrix functions that pictures do not show.
#include "model3d/math.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

namespace {

using vec3 = std::array<float, 3>;
using mat4 = std::array<float, 16>;

vec3 moved(const mat4& m, const vec3& v) {
    vec3 out;
    mat_pointvecmul(m.data(), v.data(), out.data());
    return out;
}

template <size_t n>
void expect_near(const std::array<float, n>& actual, const std::array<float, n>& expected, float tolerance) {
    for (size_t i = 0; i < n; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "element " << i;
}

} // namespace

TEST(math, directions_are_not_translated_but_show_a_broken_translation) {
    mat4 m;
    mat_translate(m.data(), 5, 5, 5);
    vec3 v = {0, -1, 0};
    mat_dirvecmul(m.data(), v.data(), v.data());
    EXPECT_EQ(v, (vec3{0, -1, 0}));
    mat_pointvecmul(m.data(), v.data(), v.data());
    EXPECT_EQ(v, (vec3{5, 4, 5}));
    m[12] = INFINITY;
    mat_dirvecmul(m.data(), v.data(), v.data());
    EXPECT_TRUE(std::isnan(v[0]));
}

TEST(math, ortho_maps_the_box_to_the_unit_cube) {
    mat4 m;
    mat_ortho(m.data(), 4, 2, 1, 9);
    expect_near(moved(m, {2, 1, -1}), {1, 1, -1}, 1e-6f);
    expect_near(moved(m, {-2, -1, -9}), {-1, -1, 1}, 1e-6f);
}

TEST(math, look2_stands_at_the_eye) {
    const vec3 eye = {1, 2, 3};
    vec3 dir = {0, 0, -2}, up = {0, 3, 0};
    mat4 look;
    mat_look2(look.data(), eye.data(), dir.data(), up.data());
    EXPECT_EQ(dir, (vec3{0, 0, -1}));
    EXPECT_EQ(up, (vec3{0, 1, 0}));
    expect_near(moved(look, {2, 4, 0}), {1, -2, -3}, 1e-6f); // second row is dir x s: y turned round
}

TEST(math, inverse_undoes_and_refuses_the_singular_and_transpose_swaps) {
    std::mt19937 random(2);
    for (int i = 0; i < 20; ++i) {
        mat4 m, inverse, product, identity, transposed;
        for (float& e : m)
            e = static_cast<float>(random() % 65536) / 16384 - 2;
        ASSERT_EQ(mat_inverse(m.data(), inverse.data()), 1);
        mat_mul(m.data(), inverse.data(), product.data());
        mat_identity(identity.data());
        expect_near(product, identity, 2e-3f);

        mat_transpose(m.data(), transposed.data());
        for (size_t k = 0; k < 16; ++k)
            EXPECT_EQ(transposed[k], m[k % 4 * 4 + k / 4]);

        m[4] = m[5] = m[6] = m[7] = 0;
        const mat4 untouched = inverse;
        EXPECT_EQ(mat_inverse(m.data(), inverse.data()), 0);
        EXPECT_EQ(inverse, untouched);
    }
}

TEST(math, normalize_keeps_zero) {
    vec3 zero = {0, 0, 0};
    vec_normalize(zero.data());
    EXPECT_EQ(zero, (vec3{0, 0, 0}));
}

TEST(math, print_writes_rows) {
    mat4 m;
    mat_translate(m.data(), 1, -2, 0.5f);
    testing::internal::CaptureStderr();
    mat_print(m.data());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), " 1.000  0.000  0.000  1.000 \n"
                                                      " 0.000  1.000  0.000  -2.000 \n"
                                                      " 0.000  0.000  1.000  0.500 \n"
                                                      " 0.000  0.000  0.000  1.000 \n");
}
