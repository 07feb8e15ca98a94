// Matrix functions that pictures do not show.
#include "model3d/math.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <random>

namespace {

using vec3 = std::array<float, 3>;
using mat4 = std::array<float, 16>;

mat4 random_matrix(std::mt19937& random) {
    std::uniform_real_distribution<float> element(-2.0f, 2.0f);
    mat4 m;
    for (float& e : m) {
        e = element(random);
    }
    return m;
}

vec3 moved(const mat4& m, const vec3& v) {
    vec3 out;
    mat_pointvecmul(m.data(), v.data(), out.data());
    return out;
}

template <size_t n>
void expect_near(const std::array<float, n>& actual, const std::array<float, n>& expected, float tolerance) {
    for (size_t i = 0; i < n; ++i) {
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "element " << i;
    }
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

TEST(math, transpose_swaps_rows_and_columns) {
    mat4 m, transposed;
    for (size_t i = 0; i < 16; ++i) {
        m[i] = static_cast<float>(i);
    }
    mat_transpose(m.data(), transposed.data());
    for (size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(transposed[i], m[i % 4 * 4 + i / 4]);
    }
}

TEST(math, inverse_undoes_and_refuses_the_singular) {
    std::mt19937 random(2);
    for (int i = 0; i < 20; ++i) {
        const mat4 m = random_matrix(random);
        mat4 inverse, product, identity;
        ASSERT_EQ(mat_inverse(m.data(), inverse.data()), 1);
        mat_mul(m.data(), inverse.data(), product.data());
        mat_identity(identity.data());
        expect_near(product, identity, 2e-3f);
    }
    mat4 singular = random_matrix(random);
    singular[4] = singular[5] = singular[6] = singular[7] = 0;
    mat4 untouched;
    untouched.fill(42);
    EXPECT_EQ(mat_inverse(singular.data(), untouched.data()), 0);
    EXPECT_EQ(untouched[7], 42);
}

TEST(math, normalize_keeps_zero) {
    vec3 zero = {0, 0, 0}, v = {3, 0, 4};
    vec_normalize(zero.data());
    vec_normalize(v.data());
    EXPECT_EQ(zero, (vec3{0, 0, 0}));
    expect_near(v, {0.6f, 0, 0.8f}, 1e-7f);
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
