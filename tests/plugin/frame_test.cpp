// The whole sequence of calls and of diagnostic lines of a first and a later frame.

#include "plugin/fixture.h"

#include <algorithm>
#include <map>

namespace {

// Tags before a line say when it is expected; $c and $t are the colour and texture programs of the shading
// model, $each are all programs. Enabling an attribute array and looking up a uniform's name may come
// anywhere, and are left out.
constexpr const char* frame_calls = R"(
    [later] glIsProgram 1
    [later] glGetProgramiv 1 ACTIVE_UNIFORMS
    [later] glGetProgramiv 1 ACTIVE_UNIFORM_MAX_LENGTH
    get_reference "shader" "$each"
    get_data "$each"

    [first][timed] snapshot_time
    [first] map_create 32
    [first] resolve_path "tri.obj"
    [first] resolve_path ".//tri.mtl"
    [first] $upload_1
    [first] $upload_2
    [first] glGetString VERSION
    [first] glGenBuffers 2
    [first] glBindBuffer ARRAY_BUFFER 1
    [first] glBufferData ARRAY_BUFFER 288 STATIC_DRAW
    [first] glBindBuffer ELEMENT_ARRAY_BUFFER 2
    [first] glBufferData ELEMENT_ARRAY_BUFFER 36 STATIC_DRAW
    [first] map_traverse 0
    [first][timed] snapshot_time
    [first][timed] timing app lum_RenderExtension render model3d: load model 4294967303

    glDepthMask 1
    glClear DEPTH_BUFFER_BIT
    glEnable BLEND
    glBlendFuncSeparate SRC_ALPHA ONE_MINUS_SRC_ALPHA ONE ONE
    glEnable DEPTH_TEST
    glDepthFunc LESS
    glDepthMask 1
    glGetIntegerv FRONT_FACE
    glFrontFace CCW
    [back] glEnable CULL_FACE
    rect_to_size
    glGetIntegerv VIEWPORT
    get_origin
    find_service "gles_display_info"
    [display] gles_display_info
    is_surface
    [surface] glFrontFace CW
    [surface] glViewport 10 20 200 99
    [screen] glViewport 10 480 200 100
    [config] map_traverse 0

    [timed] snapshot_time
    glUseProgram $c
    [first] glUniformMatrix4fv $c.proj_view
    [first][lit] glUniform3fv $c.camera_pos 1, 2, 9
    [first] glUniform1fv $c.lightness 0.5
    [first] glUniform1fv $c.ambient_factor 0.3
    glUseProgram $t
    [first] glUniformMatrix4fv $t.proj_view
    [first][lit] glUniform3fv $t.camera_pos 1, 2, 9
    [first] glUniform1fv $t.lightness 0.5
    [first] glUniform1fv $t.ambient_factor 0.3
    [first] glUniform1iv $t.diffuseSampler 0
    [timed] snapshot_time
    [timed] timing app lum_RenderExtension render model3d: global uniforms 4294967303
    [timed] snapshot_time
    [lit] glUseProgram $c
    [first][lit][internal] $lights_c
    [first][lit][model] glUniform1iv $c.nlights 0
    [lit] glUseProgram $t
    [first][lit][internal] $lights_t
    [first][lit][model] glUniform1iv $t.nlights 0
    [timed] snapshot_time
    [timed] timing app lum_RenderExtension render model3d: pre-render light calc and config 4294967303
    [timed] snapshot_time

    glBindBuffer ARRAY_BUFFER 1
    glVertexAttribPointer 0 3 FLOAT 0 32 0
    glVertexAttribPointer 1 3 FLOAT 0 32 12
    glVertexAttribPointer 2 2 FLOAT 0 32 24
    glBindBuffer ELEMENT_ARRAY_BUFFER 2
    glUseProgram $t
    [first] glUniformMatrix4fv $t.model_local
    [first][lit] glUniformMatrix3fv $t.normal_model_local
    [first] glUniform3fv $t.ka 0.2, 0.2, 0.2
    [first] glUniform3fv $t.kd 1, 1, 1
    [first][lit] glUniform3fv $t.ks 1, 1, 1
    [first] glUniform3fv $t.ke 0, 0, 0
    [first][lit] glUniform1fv $t.spec_exp 0
    [first] glUniform1fv $t.alpha 0.502
    glActiveTexture TEXTURE0
    glBindTexture TEXTURE_2D 1
    glDrawElements TRIANGLES 3 UNSIGNED_INT 0
    glUseProgram $c
    [first] glUniformMatrix4fv $c.model_local
    [first][lit] glUniformMatrix3fv $c.normal_model_local
    [first] glUniform3fv $c.ka 0.1, 0.2, 0.3
    [first] glUniform3fv $c.kd 1, 0, 0
    [first][lit] glUniform3fv $c.ks 0.5, 0.5, 0.5
    [first] glUniform3fv $c.ke 0, 0, 0
    [first][lit] glUniform1fv $c.spec_exp 10
    [first] glUniform1fv $c.alpha 0.251
    glDrawElements TRIANGLES 3 UNSIGNED_INT 12
    glUseProgram $t
    glActiveTexture TEXTURE0
    glBindTexture TEXTURE_2D 2
    glDrawElements TRIANGLES 3 UNSIGNED_INT 24
    glBindBuffer ARRAY_BUFFER 0
    glBindBuffer ELEMENT_ARRAY_BUFFER 0
    [timed] snapshot_time
    [timed] timing app lum_RenderExtension render model3d: render scene graph 4294967303

    release "$each"
    glViewport 0 0 800 600
    glDisable DEPTH_TEST
    glDisable CULL_FACE
    glFrontFace CCW
    glDepthMask 0
)";

// The level of a line is the threshold from which it is written. $s and $n are the shading model's name
// and number. Without a stated app record the mesh and segment lines may have either.
constexpr const char* frame_trace = R"(
    [first][9] ... model3d: gl version: OPENGL ES 2.0
    [first][9] ... model3d: gl extensions: $extensions
    [first][buffers][9] ... copying vertex and index data into VBO
    [first][buffers][9] $vertices
    [first][buffers][9] ... dumping indices
    [first][buffers][9] ... face[0] = [0,1,2]
    [first][buffers][9] ... face[1] = [3,4,5]
    [first][buffers][9] ... face[2] = [6,7,8]
    [6] app shading model: $n
    [internal][6] app using scene lighting?: 0
    [model][6] app using scene lighting?: 1
    [6] app light az el int: 1.047197 0.523598 0.800000
    [6] app light direction: -0.7...
    [6] app camera mode: 0
    [6] app camera pos: 1.000000 2.000000 9.000000
    [6] app camera az el fov: 0.174533 0.349066 60.000000
    [6] app model pos: 0.500000 0.250000 0.125000
    [6] app model orient: 1.047197 1.570795 3.141590
    [first][6] app global alpha amb lit: 0.000000 0.300000 0.500000
    [later][6] app global alpha amb lit: 0.501961 0.300000 0.500000
    [plain][6] app culling mode: 0
    [back][6] app culling mode: 1
    [plain][6] app culling mode: 0
    [back][6] app culling mode: 1
    [6] null camera parameters: aspect: 2.000000, near=5.875000, far=11.875000
    [display][8] null using gles_display_info to get screen size
    [display][8] null sx=1.000000 sy=1.000000 rotation=0
    [no-display][8] app gles_display_info not available
    [surface][8] null rendering to surface
    [screen][5] null rendering to frame buffer
    [5] app shading model: $n
    [6] null initializing global uniforms for $s shading model
    [lit][internal][6] null rendering with internal lighting
    [lit][model][6] null rendering with model-specified lighting
    [6] ... rendering mesh: tri.obj
    [buffers][9] ... rendering using vbos: 1, 2
    [elements][9] ... rendering with direct elements
    [arrays][9] ... rendering with direct arrays, stride = 32
    [9] ... rendering with 3 material segments
    [9] ... rendering with material segment 0
    [6] ... material alpha: 1.000000
    [6] ... global alpha: 0.501961
    [6] ... combined alpha: 0.501961
    [6] ... material is textured, $s shading
    [9] ... setting diffuse map to active texture
    [8] ... rendering $ranges 0 to 1
    [9] ... rendering with material segment 1
    [6] ... material alpha: 0.500000
    [6] ... global alpha: 0.501961
    [6] ... combined alpha: 0.250980
    [6] ... material is colored, $s shading
    [8] ... rendering $ranges 1 to 2
    [9] ... rendering with material segment 2
    [6] ... material alpha: 1.000000
    [6] ... global alpha: 0.501961
    [6] ... combined alpha: 0.501961
    [6] ... material is textured, $s shading
    [8] ... rendering last $ranges 2 to 3
)";

// What stands for several lines: the image of the textured material becoming texture `name`.
lines uploads(int name) {
    constexpr const char* calls = R"(
        get_reference "image" ".//tex.png"
        get_data ".//tex.png"
        describe_image 1 ...
        glActiveTexture TEXTURE0
        glGenTextures 1
        glBindTexture TEXTURE_2D %d
        glTexImage2D TEXTURE_2D 0 RGBA 2x2 0 RGBA UNSIGNED_BYTE
        glTexParameteri TEXTURE_2D TEXTURE_MAG_FILTER LINEAR
        glTexParameteri TEXTURE_2D TEXTURE_MIN_FILTER LINEAR
        glTexParameterf TEXTURE_2D TEXTURE_WRAP_S 10497
        glTexParameterf TEXTURE_2D TEXTURE_WRAP_T 10497
        glGetError)";
    return listing(print(calls, name).c_str());
}

// The internal light in both programs.
lines lights(const std::string& program) {
    return {"glUniform1iv " + program + ".nlights 1",
            "glUniform4fv " + program + ".light_params[0].position -0.75, 0.433, 0.5, 0",
            "glUniform3fv " + program + ".light_params[0].diffuse_color 1, 1, 1",
            "glUniform3fv " + program + ".light_params[0].specular_color 1, 1, 1",
            "glUniform1fv " + program + ".light_params[0].intensity 0.8"};
}

// The upload of every corner of the three triangles.
lines trace_vertices() {
    constexpr const char* corners[] = {"0.000000,0.000000", "2.000000,0.000000", "0.000000,1.000000"};
    constexpr const char* uvs[] = {"0.000000,0.000000", "1.000000,0.000000", "0.000000,1.000000"};
    constexpr int order[] = {0, 1, 2, 0, 2, 1, 1, 2, 0};
    lines result;
    for (int i = 0; i < 9; ++i) {
        result.push_back(print("... copying vertex[%d] <%s,0.000000>", i, corners[order[i]]));
        result.push_back("... copying normal <0.000000,0.000000,1.000000>");
        result.push_back(print("... copying uvs <%s>", uvs[order[i]]));
    }
    return result;
}

// The lines whose every tag is in `tags`, each once for every value of what it names.
lines choose(const char* text, const std::string& tags, const std::map<std::string, lines>& values) {
    lines chosen;
    for (std::string line : listing(text)) {
        bool wanted = true;
        while (line[0] == '[') {
            const size_t end = line.find(']') + 1;
            wanted = wanted && tags.find(line.substr(0, end)) != std::string::npos;
            line = line.substr(line.find_first_not_of(' ', end));
        }
        if (!wanted) continue;
        const size_t at = line.find('$');
        if (at == std::string::npos) {
            chosen.push_back(line);
            continue;
        }
        const size_t end = std::min(line.find_first_of(".\" ,", at), line.size());
        for (const std::string& value : values.at(line.substr(at, end - at)))
            chosen.push_back(line.substr(0, at) + value + line.substr(end));
    }
    return chosen;
}

// By number: the attribute's values, and what the names of the programs begin with.
constexpr const char* shadings[] = {"gouraud", "blinn-phong", "flat"};
constexpr const char* families[] = {"gouraud", "phong", "flat"};

struct setting {
    int shading;
    bool model_lights, back, surface, display, timed;
};

void PrintTo(const setting& s, std::ostream* out) {
    *out << shadings[s.shading] << (s.model_lights ? ", model lights" : "") << (s.back ? ", culled" : "")
         << (s.surface ? ", surface" : "") << (s.display ? ", display info" : "")
         << (s.timed ? ", timed" : "");
}

class frame : public plugin_test, public testing::WithParamInterface<setting> {
  protected:
    // A control with the setting and values of its own everywhere; `show` makes its first frame.
    void prepare(control& shown) {
        const setting& s = GetParam();
        write_three_triangles();
        host().surface = s.surface;
        host().display_info = s.display;
        host().timing = s.timed;
        shown.set(id_shading, shadings[s.shading]);
        if (s.model_lights) shown.set(id_lighting, "model");
        if (s.back) shown.set(id_culling, "back");
        shown.set(id_alpha, 128);
        shown.set(id_light_azimuth, 60.0f);
        shown.set(id_light_elevation, 30.0f);
        constexpr struct {
            int id;
            float value;
        } values[] = {
            {id_camera_x, 1},   {id_camera_y, 2},     {id_camera_z, 9},     {id_light_intensity, 0.8f},
            {id_ambient, 0.3f}, {id_lightness, 0.5f}, {id_azimuth, 10},     {id_elevation, 20},
            {id_model_x, 0.5f}, {id_model_y, 0.25f},  {id_model_z, 0.125f}, {id_phi, 60},
            {id_theta, 90},     {id_psi, 180}};
        for (const auto& v : values)
            shown.set(v.id, v.value);
    }
    std::string tags(bool first) const {
        const setting& s = GetParam();
        return std::string(first ? "[first]" : "[later]") + (s.shading == 2 ? "" : "[lit]") +
               (s.model_lights ? "[model]" : "[internal]") + (s.back ? "[back]" : "[plain]") +
               (s.surface ? "[surface]" : "[screen]") + (s.display ? "[display]" : "[no-display]") +
               (s.timed ? "[timed]" : "");
    }
};

TEST_P(frame, makes_these_calls) {
    const std::string name = families[GetParam().shading];
    const std::map<std::string, lines> programs{
        {"$each",
         {"gouraud_color", "gouraud_texture", "phong_color", "phong_texture", "flat_color", "flat_texture"}},
        {"$c", {name + "_color"}},
        {"$t", {name + "_texture"}},
        {"$lights_c", lights(name + "_color")},
        {"$lights_t", lights(name + "_texture")},
        {"$upload_1", uploads(1)},
        {"$upload_2", uploads(2)}};
    control shown;
    prepare(shown);
    for (const bool first : {true, false}) {
        if (first)
            show(shown);
        else
            shown.render();
        lines got = recorded().text({channel::host, channel::gl, channel::map});
        // The image may be given back anywhere after its upload.
        EXPECT_EQ(std::erase(got, "release \".//tex.png\""), first ? 2u : 0u);
        expect_lines(got, choose(frame_calls, tags(first), programs),
                     first ? "calls, first frame," : "calls, later frame,");
        expect_lines(recorded().log(0, 4), {}, "warnings");
        recorded().clear();
    }
    // A new configuration only reads the bindings again.
    shown.set(id_zero_deformers, 1);
    shown.render();
    expect_lines(recorded().text({channel::host, channel::gl, channel::map}),
                 choose(frame_calls, tags(false) + "[config]", programs), "calls, new configuration,");
    EXPECT_EQ(shown.state().flags, described::defaults_set);
    // The segments of a moved mesh tell both programs, each once.
    shown.set(id_model_x, 2.0f);
    recorded().clear();
    shown.render();
    for (const char* kind : {"_color", "_texture"})
        EXPECT_EQ(recorded().count("glUniformMatrix4fv " + name + kind + ".model_local"), 1);
}

TEST_P(frame, writes_these_diagnostic_lines) {
    constexpr struct {
        const char *options, *extensions, *tag, *ranges;
    } paths[] = {{"", "GL_OES_element_index_uint", "[buffers]", "elements"},
                 {",novbo", "GL_OES_element_index_uint", "[elements]", "elements"},
                 {",novbo", "GL_A", "[arrays]", "array values"}};
    for (const auto& path : paths)
        for (const int threshold : {-1, 0, 4, 5, 6, 7, 8, 9}) {
            const std::map<std::string, lines> words{{"$s", {shadings[GetParam().shading]}},
                                                     {"$n", {std::to_string(GetParam().shading)}},
                                                     {"$vertices", trace_vertices()},
                                                     {"$extensions", {path.extensions}},
                                                     {"$ranges", {path.ranges}}};
            init(print("diag=%d%s", threshold, path.options).c_str());
            control shown;
            prepare(shown);
            gl().last_buffer = 0;
            gl().version = "OPENGL ES 2.0";
            gl().extensions = path.extensions;
            for (const bool first : {true, false}) {
                if (first)
                    show(shown);
                else
                    shown.render();
                std::string wanted = tags(first) + path.tag;
                for (int level = 5; level <= threshold; ++level)
                    wanted += print("[%d]", level);
                expect_lines(
                    recorded().text({channel::diag}), choose(frame_trace, wanted, words),
                    print("%s up to %d, %s frame,", path.tag, threshold, first ? "first" : "later").c_str());
                recorded().clear();
            }
        }
}

INSTANTIATE_TEST_SUITE_P(
    settings, frame,
    testing::Values(setting{0, false, false, false, false, false}, setting{0, true, true, false, true, true},
                    setting{1, false, true, true, false, true}, setting{1, true, false, false, true, false},
                    setting{2, false, false, true, true, false}, setting{2, true, true, false, false, true}));

// A model without materials: the callback's own colours, drawn in one piece.
TEST_F(plugin_test, a_mesh_without_material_is_drawn_in_default_grey) {
    write("plain.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nf 1 2 3\nf 2 4 3\n");
    init("diag=9");
    for (int i = 0; i < 3; ++i) {
        control shown;
        shown.set(id_shading, shadings[i]);
        shown.set(id_alpha, 51);
        show(shown, "plain.obj");
        const gl_program& p = gl().named(families[i] + std::string("_color"));
        const auto value = [&p](const char* name) {
            return p.find(name) ? p.find(name)->value : std::vector<float>{};
        };
        EXPECT_EQ(value("ka"), (std::vector{0.2f, 0.2f, 0.2f}));
        EXPECT_EQ(value("kd"), (std::vector{1.0f, 1.0f, 1.0f}));
        EXPECT_EQ(value("ke"), (std::vector{0.0f, 0.0f, 0.0f}));
        EXPECT_EQ(value("alpha"), (std::vector{51 / 255.0f}));
        if (i != 2) {
            EXPECT_EQ(value("ks"), (std::vector{0.0f, 0.0f, 0.0f}));
            EXPECT_EQ(value("spec_exp"), (std::vector{1.0f}));
        }
        EXPECT_EQ(recorded().count("glDrawElements TRIANGLES 6 UNSIGNED_INT 0"), 1);
        lines trace = recorded().text({channel::diag});
        ASSERT_GE(trace.size(), 4u);
        trace.erase(trace.begin(), trace.end() - 4);
        expect_lines(trace, {"... rendering mesh: plain.obj",
                             print("... rendering using vbos: %d, %d", 2 * i + 1, 2 * i + 2),
                             "... rendering with no material segments",
                             "... no material, using defaults for solid color shading"});
    }
}

} // namespace
