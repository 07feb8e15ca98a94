// Meshes on their three ways to GL, material segments, and light uniforms.

#include "plugin/fixture.h"

#include <algorithm>
#include <cstdlib>

namespace {

class draw : public plugin_test {};

using corner = std::array<float, 8>;

enum class path { buffers, elements, arrays };

TEST_F(draw, takes_the_path_that_options_and_driver_allow) {
    constexpr const char* upper = "OPENGL ES 2.0";
    constexpr const char* with_index = "GL_A GL_OES_element_index_uint GL_B";
    const struct {
        const char *options, *version, *extensions;
        path expected;
        int extension_queries;
    } cases[] = {
        {"", "OpenGL ES 2.0", "", path::buffers, 0},     {"", "opengl es 2.0", "", path::buffers, 0},
        {"", "OPENGL E", "", path::buffers, 0},          {"", nullptr, nullptr, path::buffers, 0},
        {"", upper, nullptr, path::buffers, 1},          {"", upper, with_index, path::buffers, 1},
        {"", upper, "GL_A GL_B", path::arrays, 1},       {"", "OPENGL ES", "", path::arrays, 1},
        {"novbo", upper, with_index, path::elements, 1}, {"novbo", nullptr, nullptr, path::elements, 0},
        {"novbo", upper, "", path::arrays, 1},
    };
    // Two quads and a triangle around a first face that no material covers.
    write("s.mtl", "newmtl a\nKd 1 0 0\nnewmtl b\nKd 0 1 0\n");
    write("s.obj",
          "mtllib s.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 5 5 5\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
          "vn 0 0 1\nvn 1 0 0\nf 5/1/1 5/1/1 5/1/1\nusemtl a\nf 1/1/1 2/2/2 3/3/1 4/4/2\n"
          "usemtl b\nf 1/1/1 3/3/1 4/4/2\nf 1/1/2 2/2/2 3/3/2 4/4/2\n");
    const corner p1{0, 0, 0, 0, 0, 1, 0, 1}, p2{1, 0, 0, 1, 0, 0, 1, 1}, p3{1, 1, 0, 0, 0, 1, 1, 0},
        p4{0, 1, 0, 1, 0, 0, 0, 0};
    corner q1 = p1, q3 = p3; // with the second normal
    q1[3] = q3[3] = 1;
    q1[5] = q3[5] = 0;
    const std::vector<std::vector<corner>> expected = {{p1, p2, p3, p1, p3, p4},
                                                       {p1, p3, p4, q1, p2, q3, q1, q3, p4}};

    for (const auto& c : cases) {
        SCOPED_TRACE(print("%s, %s, %s", c.options, c.version ? c.version : "null",
                           c.extensions ? c.extensions : "null"));
        fresh_gl();
        gl().version = c.version;
        gl().extensions = c.extensions;
        init(c.options);
        control shown;
        show(shown, "s.obj");

        ASSERT_EQ(gl().draws.size(), 2u);
        const bool arrays = c.expected == path::arrays;
        const int firsts[] = {3, 9}, counts[] = {6, 9};
        for (size_t i = 0; i < 2; ++i) {
            const gl_draw& d = gl().draws[i];
            EXPECT_EQ(d.elements, !arrays);
            EXPECT_EQ(d.client_memory, c.expected != path::buffers);
            EXPECT_EQ(d.count, counts[i]);
            if (c.expected != path::elements) {
                EXPECT_EQ(d.first, firsts[i]);
            }
            EXPECT_EQ(d.corners, expected[i]) << "draw " << i;
            for (const gl_attribute& a : d.attributes)
                EXPECT_EQ(a.stride, c.expected == path::elements ? 0 : 32);
        }
        EXPECT_EQ(recorded().count("glGetString VERSION"), 1);
        EXPECT_EQ(recorded().count("glGetString EXTENSIONS"), c.extension_queries);
        EXPECT_EQ(gl().buffers.size(), c.expected == path::buffers ? 2u : 0u);

        expect_lines(recorded().log(0, 4),
                     arrays ? lines{"2 ... model3d: no support for OES_element_index_uint, falling back to "
                                    "draw arrays"}
                            : lines{});
        recorded().clear();
        shown.render(); // drawn from what was kept, not from what was released
        EXPECT_EQ(gl().draws.back().corners, expected[1]);
    }
}

// ---- Lights of a scene. The OBJ loader makes none, so a loaded scene is given some. ----------------

class scene_lights : public plugin_test {
  protected:
    // A shown control with `n` lights in its scene's list, which the scene owns.
    void hang(control& shown, described::light* lights, int32_t n) {
        write("t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        shown.set("lighting_mode", "model");
        show(shown, "t.obj");
        described::scene& scene = shown.state().scene;
        std::free(scene.lights);
        scene.lights = static_cast<described::light**>(std::malloc(16 * sizeof(described::light*)));
        scene.lights_capacity = 16;
        scene.nlights = n;
        for (int32_t i = 0; i < n; ++i)
            scene.lights[i] = &lights[i];
        recorded().clear();
    }
};

// A light of no kind sends nothing; a directional light lies in the direction that it comes from.
TEST_F(scene_lights, are_sent_to_both_programs) {
    described::light lights[] = {
        {nullptr, 2, {1, 0.5f, 0.25f}, 100, {1, 2, 3}, {9, 9, 9}},
        {nullptr, 0, {1, 1, 1}, 100, {1, 1, 1}, {1, 1, 1}},
        {nullptr, 1, {0, 0, 1}, 50, {9, 9, 9}, {0, -1, 0.5f}},
        {nullptr, 3, {1, 1, 1}, 100, {1, 1, 1}, {1, 1, 1}},
    };
    for (const char* shading : {"gouraud", "blinn-phong"}) {
        SCOPED_TRACE(shading);
        control shown;
        shown.set("shading_model", shading);
        hang(shown, lights, 4);
        shown.render();
        const std::string family = shading[0] == 'g' ? "gouraud" : "phong";
        lines sent = recorded().text({channel::gl, channel::log});
        std::erase_if(
            sent, [](const std::string& l) { return !l.starts_with("1 ") && !l.starts_with("glUniform"); });
        expect_lines(sent, text_lines("lights.txt", "", {{'p', family}}), "sent");
        recorded().clear();
        shown.render();
        EXPECT_EQ(recorded().count("glUniform"), 0);
    }
}

TEST_F(scene_lights, beyond_the_eighth_are_reported_by_name) {
    described::light lights[9];
    for (int i = 0; i < 9; ++i)
        lights[i] = {nullptr, 2, {1, 1, 1}, 100, {static_cast<float>(i), 0, 0}, {0, 0, 0}};
    control shown;
    hang(shown, lights, 9);
    shown.render();
    lines expected;
    for (const char* program : {"gouraud_color", "gouraud_texture"})
        for (const char* member : {"position", "diffuse_color", "specular_color", "intensity"})
            expected.push_back(
                print("1 null could not find uniform light_params[8].%s in shader %s", member, program));
    expect_lines(recorded().log(0, 4), expected);
    EXPECT_EQ(gl().named("gouraud_color").find("nlights")->value, std::vector{9.0f});
    EXPECT_EQ(gl().named("gouraud_color").find("light_params[7].position")->value,
              (std::vector{7.0f, 0.0f, 0.0f, 1.0f}));
}

} // namespace
