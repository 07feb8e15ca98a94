// The camera's clip planes, the matrices and the viewport of a frame.

#include "plugin/fixture.h"
#include "plugin/reference.h"

#include <functional>

namespace {

using namespace reference;

class view : public plugin_test {};

// The model's farthest vertex lies at the radius.
void write_radius(const std::function<void(const char*, const std::string&)>& write, int radius) {
    write("r.obj", print("v 0 0 0\nv %d 0 0\nv 0 1 0\nf 1 2 3\n", radius));
}

TEST_F(view, clip_planes) {
    const struct {
        float near, far, camera_z, model_z;
        int radius;
        double expected_near, expected_far;
    } cases[] = {
        {0, 0, 10, 0, 2, 7, 13}, {0, 0, 10, 0, 10, 0.1, 25},  {0, 0, -10, 0, 2, 7, 13},
        {0, 0, 4, -6, 2, 7, 13}, {5, 0, 10, 0, 2, 5, 10},     {0, 50, 10, 0, 2, 0.1, 50},
        {3, 4, 10, 0, 2, 3, 4},  {-1, 40, 10, 0, 2, 0.1, 40}, {8, 8, 10, 0, 2, 8, 8},
    };
    init("diag=6");
    for (const auto& c : cases) {
        write_radius([this](const char* name, const std::string& text) { write(name, text); }, c.radius);
        control shown;
        shown.set(id_clip_near, c.near);
        shown.set(id_clip_far, c.far);
        shown.set(id_camera_z, c.camera_z);
        shown.set(id_model_z, c.model_z);
        show(shown, "r.obj");
        const std::string expected = print("null camera parameters: aspect: %f, near=%f, far=%f", 2.0,
                                           c.expected_near, c.expected_far);
        EXPECT_EQ(recorded().count(expected), 1) << expected;
        if (c.near != c.far)
            expect_near(std::to_array(shown.state().projection),
                        perspective(60, 2, c.expected_near, c.expected_far), "projection");
    }
}

// Every matrix that reaches the shaders, from attributes that leave no element zero.
TEST_F(view, matrices_reach_the_programs) {
    write("t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const struct {
        int rotation, surface;
        float fov;
    } cases[] = {{0, 0, 60}, {90, 0, 30}, {180, 0, 90}, {270, 0, 45}, {30, 0, 45}, {90, 1, 60}, {0, 0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(
            print("rotation %d surface %d fov %g", c.rotation, c.surface, static_cast<double>(c.fov)));
        host().display_info = true;
        host().rotation = c.rotation;
        host().surface = c.surface;
        control shown;
        shown.set(id_camera_x, 1.0f);
        shown.set(id_camera_y, 2.0f);
        shown.set(id_camera_z, 9.0f);
        shown.set(id_azimuth, 35.0f);
        shown.set(id_elevation, -20.0f);
        shown.set(id_model_x, 0.5f);
        shown.set(id_psi, 50.0f);
        shown.set(id_theta, 60.0f);
        shown.set(id_phi, 70.0f);
        shown.set(id_clip_near, 1.0f);
        shown.set(id_clip_far, 30.0f);
        if (c.fov != 0) shown.set(id_fov, c.fov);
        shown.set(id_filename, "t.obj");
        shown.render();

        // A field of view that was never set counts as 60.
        const matrix p = perspective(c.fov != 0 ? static_cast<double>(c.fov) : 60, 2, 1, 30);
        const matrix turn = c.surface ? scale(1, -1, 1) : rotate(2, -c.rotation / 180.0 * M_PI);
        const matrix v = rotate(0, radians(-20)) * rotate(1, radians(35)) * translate(-1, -2, -9);
        const matrix m =
            translate(0.5, 0, 0) * rotate(2, radians(50)) * rotate(1, radians(60)) * rotate(0, radians(70));
        for (const char* name : {"gouraud_color", "gouraud_texture"})
            expect_near(gl().named(name).find("proj_view")->value, turn * p * v, "proj_view");
        expect_near(gl().named("gouraud_color").find("model_local")->value, m, "model_local");
        expect_near(gl().named("gouraud_color").find("normal_model_local")->value, upper3x3(m),
                    "normal_model_local");
        EXPECT_EQ(shown.state().field_of_view, c.fov);
    }
}

TEST_F(view, a_file_name_is_enough_to_be_placed) {
    write("t.obj", "v 0 0 0\nv 2 0 0\nv 0 1 0\nf 1 2 3\n");
    control shown;
    shown.set(id_filename, "t.obj");
    shown.render();
    const gl_program& p = gl().named("gouraud_color");
    expect_near(p.find("proj_view")->value, perspective(60, 2, 0.1, 3), "proj_view");
    expect_near(p.find("model_local")->value, scale(1, 1, 1), "model_local");
    expect_near(p.find("light_params[0].position")->value, std::array{0.0, 0.0, 1.0, 0.0}, "light");
}

TEST_F(view, viewport_of_the_display) {
    const struct {
        bool info;
        int rotation, surface;
        float tx;
        std::array<int, 4> expected;
    } cases[] = {
        {false, 90, 0, 7, {13, 476, 200, 100}}, // no service: no rotation either
        {true, 0, 0, 7, {27, 541, 300, 50}},      {true, 45, 0, 7, {27, 541, 300, 50}},
        {true, 90, 0, 7, {741, 273, 50, 300}},    {true, 180, 0, 7, {473, 9, 300, 50}},
        {true, 270, 0, 7, {9, 27, 50, 300}},      {true, -90, 0, 7, {27, 541, 300, 50}},
        {true, 0, 0, -20.25f, {0, 541, 300, 50}}, // -0.25 is truncated towards zero
        {true, 90, 1, 7, {13, 24, 200, 99}},      {false, 0, 1, 7, {13, 24, 200, 99}},
    };
    write_three_triangles();
    for (const auto& c : cases) {
        SCOPED_TRACE(print("info %d rotation %d surface %d", c.info, c.rotation, c.surface));
        host().display_info = c.info;
        host().sx = 1.5f;
        host().sy = 0.5f;
        host().tx = c.tx;
        host().ty = -3;
        host().rotation = c.rotation;
        host().surface = c.surface;
        host().origin_x = 3;
        host().origin_y = 4;
        gl().viewport = {40, 50, 800, 600};
        gl().front_face = GL_CW;
        control shown;
        shown.set(id_culling, "back");
        show(shown);
        const lines states = recorded().text({channel::gl});
        const auto calls = [&](const char* prefix) {
            lines found;
            for (const std::string& s : states)
                if (s.starts_with(prefix)) found.push_back(s.substr(s.find(' ') + 1));
            return found;
        };
        expect_lines(calls("glViewport"),
                     {print("%d %d %d %d", c.expected[0], c.expected[1], c.expected[2], c.expected[3]),
                      "40 50 800 600"});
        // The mirrored projection of a surface turns the faces round; the host's own setting returns.
        expect_lines(calls("glFrontFace"), c.surface ? lines{"CCW", "CW", "CW"} : lines{"CCW", "CW"});
        expect_lines(calls("glDisable"), {"DEPTH_TEST", "CULL_FACE"});
        EXPECT_EQ(gl().depth_mask, GL_FALSE);
    }
}

} // namespace
