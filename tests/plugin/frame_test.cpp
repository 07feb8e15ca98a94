// The whole sequence of calls and of diagnostic lines of a first and a later frame.

#include "plugin/fixture.h"

#include <algorithm>
#include <sstream>

namespace {

// By number: the attribute's values, and what the names of the programs begin with.
constexpr const char* shadings[] = {"gouraud", "blinn-phong", "flat"};
constexpr const char* families[] = {"gouraud", "phong", "flat"};

// The number of a shading model, and the tags of the other settings.
using setting = std::tuple<int, std::string>;

class frame : public plugin_test, public testing::WithParamInterface<setting> {
  protected:
    const int number = std::get<0>(GetParam());
    const std::string tags = std::get<1>(GetParam());
    bool is(const char* tag) const { return tags.find(tag) != std::string::npos; }

    // A control with the setting and values of its own everywhere.
    void prepare(control& shown) {
        write_three_triangles();
        host().surface = is("[surface]");
        host().display_info = is("[display]");
        host().timing = is("[timed]");
        shown.set("shading_model", shadings[number]);
        if (is("[model]")) shown.set("lighting_mode", "model");
        if (is("[back]")) shown.set("culling_mode", "back");
        shown.set("alpha", 128);
        std::istringstream values(
            "camera_position_x 1 camera_position_y 2 camera_position_z 9 azimuth 10 elevation 20 "
            "model_position_x 0.5 model_position_y 0.25 model_position_z 0.125 model_orientation_phi 60 "
            "model_orientation_theta 90 model_orientation_psi 180 light_internal_azimuth 60 "
            "light_internal_elevation 30 light_internal_intensity 0.8 control_ambient 0.3 control_lightness "
            "0.5");
        for (std::string attribute, value; values >> attribute >> value;)
            shown.set(attribute, std::stof(value));
    }
    // The first frame of a control, or a later one, recorded from a clean trace.
    void draw(control& shown, const std::string& when) {
        if (when == "[first]") return show(shown);
        recorded().clear();
        shown.render();
    }
};

TEST_P(frame, makes_these_calls) {
    const std::string color = families[number] + std::string("_color");
    const std::string texture = families[number] + std::string("_texture");
    control shown;
    prepare(shown);
    for (const std::string when : {"[first]", "[later]", "[later][config]"}) {
        // A new configuration only reads the bindings again.
        if (when == "[later][config]") shown.set("zero_deformers", 1);
        draw(shown, when);
        lines got = recorded().text({channel::host, channel::gl, channel::map});
        // The image may be given back anywhere after its upload.
        EXPECT_EQ(std::erase(got, "release \".//tex.png\""), when == "[first]" ? 2u : 0u);
        expect_lines(got, text_lines("frame_calls.txt", tags + when, {{'c', color}, {'t', texture}}),
                     ("calls, " + when).c_str());
        expect_lines(recorded().log(0, 4), {}, "warnings");
        EXPECT_EQ(shown.state().flags, described::defaults_set);
    }
    // The segments of a moved mesh tell both programs, each once.
    shown.set("model_position_x", 2.0f);
    draw(shown, "[later]");
    for (const std::string& program : {color, texture})
        EXPECT_EQ(recorded().count("glUniformMatrix4fv " + program + ".model_local"), 1);
}

TEST_P(frame, writes_these_diagnostic_lines) {
    constexpr struct {
        const char *options, *extensions, *tag, *ranges;
    } paths[] = {{"", "GL_OES_element_index_uint", "[buffers]", "elements"},
                 {",novbo", "GL_OES_element_index_uint", "[elements]", "elements"},
                 {",novbo", "GL_A", "[arrays]", "array values"}};
    for (const auto& path : paths)
        for (const int threshold : {-1, 0, 4, 5, 6, 7, 8, 9}) {
            init(print("diag=%d%s", threshold, path.options).c_str());
            control shown;
            prepare(shown);
            gl().last_buffer = 0;
            gl().version = "OPENGL ES 2.0";
            gl().extensions = path.extensions;
            for (const std::string when : {"[first]", "[later]"}) {
                draw(shown, when);
                std::string wanted = tags + when + path.tag;
                for (int level = 5; level <= threshold; ++level)
                    wanted += print("[%d]", level);
                const lines expected = text_lines("frame_trace.txt", wanted,
                                                  {{'s', shadings[number]},
                                                   {'n', std::to_string(number)},
                                                   {'e', path.extensions},
                                                   {'r', path.ranges}});
                expect_lines(recorded().text({channel::diag}), expected, wanted.c_str());
            }
        }
}

INSTANTIATE_TEST_SUITE_P(settings, frame,
                         testing::Values(setting(0, "[lit][internal][plain][screen][no-display]"),
                                         setting(0, "[lit][model][back][screen][display][timed]"),
                                         setting(1, "[lit][internal][back][surface][no-display][timed]"),
                                         setting(1, "[lit][model][plain][screen][display]"),
                                         setting(2, "[internal][plain][surface][display]"),
                                         setting(2, "[model][back][screen][no-display][timed]")));

// A model without materials: the callback's own colours, drawn in one piece.
TEST_F(plugin_test, a_mesh_without_material_is_drawn_in_default_grey) {
    write("plain.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nf 1 2 3\nf 2 4 3\n");
    init("diag=9");
    for (int i = 0; i < 3; ++i) {
        control shown;
        shown.set("shading_model", shadings[i]);
        shown.set("alpha", 51);
        show(shown, "plain.obj");
        for (const char* sent : {"3fv $.ka 0.2, 0.2, 0.2", "3fv $.kd 1, 1, 1", "3fv $.ke 0, 0, 0",
                                 "1fv $.alpha 0.2", "3fv $.ks 0, 0, 0", "1fv $.spec_exp 1"}) {
            const bool is_shiny = strstr(sent, "ks") || strstr(sent, "spec_exp");
            const std::string call = std::string(sent).replace(4, 1, families[i] + std::string("_color"));
            EXPECT_EQ(recorded().count("glUniform" + call), i == 2 && is_shiny ? 0 : 1) << call;
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
