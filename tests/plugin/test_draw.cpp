// Meshes on their three ways to GL, material segments, and light uniforms.

#include "plugin/fixture.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

namespace {

class draw : public plugin_test {};

using corner = std::array<float, 8>;

// Two quads and a triangle around a first face that no material covers.
void write_segments(const std::function<void(const char*, const char*)>& write) {
    write("s.mtl", "newmtl a\nKd 1 0 0\nnewmtl b\nKd 0 1 0\n");
    write("s.obj",
          "mtllib s.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 5 5 5\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
          "vn 0 0 1\nvn 1 0 0\nf 5/1/1 5/1/1 5/1/1\nusemtl a\nf 1/1/1 2/2/2 3/3/1 4/4/2\n"
          "usemtl b\nf 1/1/1 3/3/1 4/4/2\nf 1/1/2 2/2/2 3/3/2 4/4/2\n");
}

enum class path { buffers, elements, arrays };

TEST_F(draw, takes_the_path_that_options_and_driver_allow) {
    constexpr const char* upper = "OPENGL ES 2.0";
    constexpr const char* with_index = "GL_A GL_OES_element_index_uint GL_B";
    const struct {
        const char *options, *version, *extensions;
        path expected;
        int extension_queries;
    } cases[] = {
        {"diag=9", "OpenGL ES 2.0", "", path::buffers, 0},
        {"diag=9", "opengl es 2.0", "", path::buffers, 0},
        {"diag=9", "OPENGL E", "", path::buffers, 0},
        {"diag=9", nullptr, nullptr, path::buffers, 0},
        {"diag=9", upper, nullptr, path::buffers, 1},
        {"diag=9", upper, with_index, path::buffers, 1},
        {"diag=9", upper, "GL_A GL_B", path::arrays, 1},
        {"diag=9", "OPENGL ES", "", path::arrays, 1},
        {"diag=9,novbo", upper, with_index, path::elements, 1},
        {"diag=9,novbo", nullptr, nullptr, path::elements, 0},
        {"diag=9,novbo", upper, "", path::arrays, 1},
    };
    write_segments([this](const char* name, const char* text) { write(name, text); });
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

        lines trace;
        if (c.version) trace.push_back(print("... model3d: gl version: %s", c.version));
        if (c.extension_queries && c.extensions)
            trace.push_back(print("... model3d: gl extensions: %s", c.extensions));
        lines got = recorded().text({channel::diag});
        const auto is_load = [](const std::string& l) { return l.find("model3d: gl ") != std::string::npos; };
        lines loads;
        std::copy_if(got.begin(), got.end(), std::back_inserter(loads), is_load);
        expect_lines(loads, trace);
        const size_t drawn = got.size() >= 15 ? got.size() - 15 : 0;
        got.erase(got.begin(), got.begin() + static_cast<long>(drawn));
        const char* how = c.expected == path::buffers    ? "... rendering using vbos: 1, 2"
                          : c.expected == path::elements ? "... rendering with direct elements"
                                                         : "... rendering with direct arrays, stride = 32";
        const char* what = arrays ? "array values" : "elements";
        expect_lines(got, {"... rendering mesh: s.obj", how, "... rendering with 2 material segments",
                           "... rendering with material segment 0", "... material alpha: 1.000000",
                           "... global alpha: 1.000000", "... combined alpha: 1.000000",
                           "... material is colored, gouraud shading", print("... rendering %s 1 to 3", what),
                           "... rendering with material segment 1", "... material alpha: 1.000000",
                           "... global alpha: 1.000000", "... combined alpha: 1.000000",
                           "... material is colored, gouraud shading",
                           print("... rendering last %s 3 to 6", what)});
        lines notices = recorded().log(0, 4);
        std::erase_if(notices,
                      [](const std::string& l) { return l.find("diagnostic mode") != std::string::npos; });
        expect_lines(notices,
                     arrays ? lines{"2 ... model3d: no support for OES_element_index_uint, falling back to "
                                    "draw arrays"}
                            : lines{});
        EXPECT_EQ(recorded().text({channel::gl}).end()[-6], "glBindBuffer ELEMENT_ARRAY_BUFFER 0");
        recorded().clear();
        shown.render(); // drawn from what was kept, not from what was released
        EXPECT_EQ(gl().draws.back().corners, expected[1]);
    }
}

TEST_F(draw, buffers_hold_interleaved_vertices_and_plain_indices) {
    write("q.obj", "v 0 0 0\nv 3 0 0\nv 3 3 0\nv 0 3 0\nf 1 2 3 4\n");
    control shown;
    show(shown, "q.obj");
    // A fan of two triangles on five vertices, computed normals, texture coordinates never set.
    const float positions[5][3] = {{0, 0, 0}, {3, 0, 0}, {3, 3, 0}, {3, 3, 0}, {0, 3, 0}};
    const std::vector<uint8_t>& bytes = gl().buffers.at(1);
    ASSERT_EQ(bytes.size(), 5u * 32);
    for (size_t v = 0; v < 5; ++v)
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(get<float>(bytes.data(), v * 32 + i * 4), positions[v][i]);
            EXPECT_EQ(get<float>(bytes.data(), v * 32 + 12 + i * 4), i == 2 ? 1 : 0);
        }
    const uint32_t indices[] = {0, 1, 2, 0, 3, 4};
    ASSERT_EQ(gl().buffers.at(2).size(), sizeof indices);
    EXPECT_EQ(std::memcmp(gl().buffers.at(2).data(), indices, sizeof indices), 0);
}

// A mesh of several programs is sent its matrices by each, again when the model has moved.
TEST_F(draw, every_program_of_a_mesh_knows_where_it_is) {
    write_three_triangles();
    control shown;
    show(shown);
    for (const float x : {3.0f, 4.0f}) {
        shown.set(id_model_x, x);
        shown.render();
        for (const char* program : {"gouraud_color", "gouraud_texture"})
            EXPECT_EQ(gl().named(program).find("model_local")->value[12], x) << program;
    }
}

// ---- Lights of a scene. The OBJ loader makes none, so a loaded scene is given some. ----------------

class scene_lights : public plugin_test {
  protected:
    // A shown control with `n` lights in its scene's list, which the scene owns.
    void hang(control& shown, described::light* lights, int32_t n) {
        write("t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        shown.set(id_lighting, "model");
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
        shown.set(id_shading, shading);
        hang(shown, lights, 4);
        shown.render();
        const std::string family = shading[0] == 'g' ? "gouraud" : "phong";
        lines sent, expected, warnings;
        for (const std::string& l : recorded().text({channel::gl}))
            if (l.starts_with("glUniform")) sent.push_back(l.substr(l.find(' ') + 1));
        for (const char* kind : {"_color.", "_texture."}) {
            const std::string p = family + kind;
            // The second light sends nothing; a directional light lies in the direction that it comes from.
            for (const std::string& rest :
                 {std::string("nlights 4"), std::string("light_params[0].position 1, 2, 3, 1"),
                  std::string("light_params[0].diffuse_color 1, 0.5, 0.25"),
                  std::string("light_params[0].specular_color 1, 1, 1"),
                  std::string("light_params[0].intensity 1"),
                  std::string("light_params[2].position 0, 1, -0.5, 0"),
                  std::string("light_params[2].diffuse_color 0, 0, 1"),
                  std::string("light_params[2].specular_color 1, 1, 1"),
                  std::string("light_params[2].intensity 0.5")})
                expected.push_back(p + rest);
            warnings.push_back("1 null light 1 is of unsupported type 0");
            warnings.push_back("1 null light 3 is of unsupported type 3");
        }
        expect_lines(sent, expected);
        expect_lines(recorded().log(0, 4), warnings);
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

TEST_F(scene_lights, do_not_touch_flat_shading) {
    described::light light{nullptr, 2, {1, 1, 1}, 100, {1, 2, 3}, {0, 0, 0}};
    control shown;
    shown.set(id_shading, "flat");
    hang(shown, &light, 1);
    shown.render();
    EXPECT_EQ(recorded().count("glUniform"), 0);
    expect_lines(recorded().log(0, 4), {});
}

} // namespace
