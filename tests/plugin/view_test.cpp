// The camera's clip planes and the viewport of a frame.

#include "plugin/fixture.h"

namespace {

class view : public plugin_test {};

TEST_F(view, clip_planes) {
    const struct {
        float near, far, camera_z, model_z;
        int radius; // of the model's farthest vertex
        double expected_near, expected_far;
    } cases[] = {
        {0, 0, 10, 0, 2, 7, 13}, {0, 0, 10, 0, 10, 0.1, 25},  {0, 0, -10, 0, 2, 7, 13},
        {0, 0, 4, -6, 2, 7, 13}, {5, 0, 10, 0, 2, 5, 10},     {0, 50, 10, 0, 2, 0.1, 50},
        {3, 4, 10, 0, 2, 3, 4},  {-1, 40, 10, 0, 2, 0.1, 40}, {8, 8, 10, 0, 2, 8, 8},
    };
    init("diag=6");
    for (const auto& c : cases) {
        write("r.obj", print("v 0 0 0\nv %d 0 0\nv 0 1 0\nf 1 2 3\n", c.radius));
        control shown;
        shown.set("camera_clip_near", c.near);
        shown.set("camera_clip_far", c.far);
        shown.set("camera_position_z", c.camera_z);
        shown.set("model_position_z", c.model_z);
        show(shown, "r.obj");
        const std::string expected = print("null camera parameters: aspect: %f, near=%f, far=%f", 2.0,
                                           c.expected_near, c.expected_far);
        EXPECT_EQ(recorded().count(expected), 1) << expected;
    }
}

TEST_F(view, viewport_of_the_display) {
    constexpr struct {
        bool info;
        int rotation, surface;
        float tx;
        const char* expected;
    } cases[] = {
        {false, 90, 0, 7, "13 476 200 100"}, // no service: no rotation either
        {true, 0, 0, 7, "27 541 300 50"},      {true, 45, 0, 7, "27 541 300 50"},
        {true, 90, 0, 7, "741 273 50 300"},    {true, 180, 0, 7, "473 9 300 50"},
        {true, 270, 0, 7, "9 27 50 300"},      {true, -90, 0, 7, "27 541 300 50"},
        {true, 0, 0, -20.25f, "0 541 300 50"}, // -0.25 is truncated towards zero
        {true, 90, 1, 7, "13 24 200 99"},      {false, 0, 1, 7, "13 24 200 99"},
    };
    write_three_triangles();
    host().sx = 1.5f;
    host().sy = 0.5f;
    host().ty = -3;
    host().origin_x = 3;
    host().origin_y = 4;
    for (const auto& c : cases) {
        SCOPED_TRACE(print("info %d rotation %d surface %d", c.info, c.rotation, c.surface));
        host().display_info = c.info;
        host().tx = c.tx;
        host().rotation = c.rotation;
        host().surface = c.surface;
        gl().viewport = {40, 50, 800, 600};
        gl().front_face = GL_CW;
        control shown;
        show(shown);
        lines changes;
        for (const std::string& call : recorded().text({channel::gl}))
            if (call.starts_with("glViewport") || call.starts_with("glFrontFace")) changes.push_back(call);
        // The mirrored projection of a surface turns the faces round; the host's own setting returns.
        lines expected = {"glFrontFace CCW", std::string("glViewport ") + c.expected,
                          "glViewport 40 50 800 600", "glFrontFace CW"};
        if (c.surface) expected.insert(expected.begin() + 1, "glFrontFace CW");
        expect_lines(changes, expected);
    }
}

} // namespace
