#include "model3d/math.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <random>

namespace {

using vec3 = std::array<float, 3>;
using mat4 = std::array<float, 16>;

constexpr float pi = 3.14159265f;

mat4 random_matrix(std::mt19937& random) {
    std::uniform_real_distribution<float> element(-2.0f, 2.0f);
    mat4 m;
    for (float& e : m) {
        e = element(random);
    }
    return m;
}

// m * (v, 1) in double precision, divided by w.
vec3 project(const mat4& m, const vec3& v) {
    double out[4];
    for (size_t r = 0; r < 4; r++) {
        out[r] = double{m[r]} * double{v[0]} + double{m[4 + r]} * double{v[1]} +
                 double{m[8 + r]} * double{v[2]} + double{m[12 + r]};
    }
    return {static_cast<float>(out[0] / out[3]), static_cast<float>(out[1] / out[3]),
            static_cast<float>(out[2] / out[3])};
}

template <size_t n>
void expect_near(const std::array<float, n>& actual, const std::array<float, n>& expected, float tolerance) {
    for (size_t i = 0; i < n; i++) {
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "element " << i;
    }
}

} // namespace

TEST(math, rotations_turn_each_axis_into_the_next) {
    const struct {
        void (*rotate)(float*, float);
        vec3 from, to;
    } cases[] = {
        {mat_rotate_x, {0, 1, 0}, {0, 0, 1}},
        {mat_rotate_y, {0, 0, 1}, {1, 0, 0}},
        {mat_rotate_z, {1, 0, 0}, {0, 1, 0}},
    };
    for (const auto& c : cases) {
        mat4 m;
        c.rotate(m.data(), pi / 2);
        vec3 turned;
        mat_dirvecmul(m.data(), c.from.data(), turned.data());
        expect_near(turned, c.to, 1e-6f);
    }
}

TEST(math, a_product_applies_its_right_factor_first) {
    std::mt19937 random(1);
    for (int i = 0; i < 20; i++) {
        const mat4 a = random_matrix(random);
        mat4 b = random_matrix(random);
        b[3] = b[7] = b[11] = 0; // affine, so that points need no division
        b[15] = 1;
        const vec3 v = {0.5f, -1.5f, 2.0f};
        mat4 product;
        mat_mul(a.data(), b.data(), product.data());
        vec3 moved, expected, actual;
        mat_pointvecmul(b.data(), v.data(), moved.data());
        mat_pointvecmul(a.data(), moved.data(), expected.data());
        mat_pointvecmul(product.data(), v.data(), actual.data());
        expect_near(actual, expected, 1e-4f);
    }
}

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

TEST(math, perspective_maps_the_frustum_to_the_unit_cube) {
    for (const auto& [fovy, aspect, near, far] : {std::array{90.0f, 1.0f, 1.0f, 3.0f},
                                                  std::array{60.0f, 1.5f, 0.1f, 100.0f},
                                                  {25.0f, 0.5f, 2.0f, 5.0f}}) {
        mat4 m;
        mat_persp(m.data(), fovy, aspect, near, far);
        const float top = near * std::tan(fovy * pi / 360);
        expect_near(project(m, {aspect * top, top, -near}), {1, 1, -1}, 1e-3f);
        expect_near(project(m, {0, 0, -far}), {0, 0, 1}, 1e-3f);
    }
    mat4 m;
    mat_ortho(m.data(), 4, 2, 1, 9);
    expect_near(project(m, {2, 1, -1}), {1, 1, -1}, 1e-6f);
    expect_near(project(m, {-2, -1, -9}), {-1, -1, 1}, 1e-6f);
}

TEST(math, inverse_undoes_and_refuses_the_singular) {
    std::mt19937 random(2);
    for (int i = 0; i < 20; i++) {
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

TEST(math, views_stand_at_the_eye_or_orbit_the_origin) {
    const vec3 eye = {1, 2, 3};
    mat4 look, orbit;
    mat_look(look.data(), eye.data(), 0.3f, -0.7f);
    mat_look_orbit(orbit.data(), eye.data(), 0.3f, -0.7f);
    expect_near(project(look, eye), {0, 0, 0}, 1e-6f);
    expect_near(project(orbit, {0, 0, 0}), {-1, -2, -3}, 1e-6f);

    // A quarter turn brings +x to the front of an orbiting camera: z towards the viewer.
    mat_look_orbit(orbit.data(), vec3{0, 0, 10}.data(), -pi / 2, 0);
    expect_near(project(orbit, {1, 0, 0}), {0, 0, -9}, 1e-5f);

    vec3 dir = {0, 0, -2}, up = {0, 3, 0};
    mat_look2(look.data(), eye.data(), dir.data(), up.data());
    EXPECT_EQ(dir, (vec3{0, 0, -1}));
    EXPECT_EQ(up, (vec3{0, 1, 0}));
    expect_near(project(look, {2, 4, 0}), {1, -2, -3}, 1e-6f); // second row is dir x s: y turned round
}

TEST(math, transpose_and_3x3_pick_by_row_and_column) {
    mat4 m, transposed;
    for (size_t i = 0; i < 16; i++) {
        m[i] = static_cast<float>(i);
    }
    mat_transpose(m.data(), transposed.data());
    std::array<float, 9> small;
    mat_to3x3(m.data(), small.data());
    for (size_t r = 0; r < 4; r++) {
        for (size_t c = 0; c < 4; c++) {
            EXPECT_EQ(transposed[c * 4 + r], m[r * 4 + c]);
            if (r < 3 && c < 3) {
                EXPECT_EQ(small[c * 3 + r], m[c * 4 + r]);
            }
        }
    }
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
