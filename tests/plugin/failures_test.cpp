// Frames that cannot be drawn: what the log says, and that everything is given back.

#include "plugin/fixture.h"

#include <algorithm>
#include <set>
#include <utility>

namespace {

class failures : public plugin_test {
  protected:
    void TearDown() override {
        EXPECT_EQ(gl().draws.size(), 0u);
        plugin_test::TearDown();
    }
};

TEST_F(failures, no_file_name_is_no_frame) {
    control c;
    c.render();
    c.set("camera_field_of_view", 60.0f);
    c.render();
    expect_lines(recorded().text({channel::host, channel::gl, channel::log, channel::map}), {});
}

// One program after the other is missing, for every reason there is.
TEST_F(failures, a_missing_program_stops_the_frame) {
    constexpr const char* names[] = {"gouraud_color", "gouraud_texture", "phong_color",
                                     "phong_texture", "flat_color",      "flat_texture"};
    write_three_triangles();
    for (const std::string step :
         {"host", "compile", "link", "validate", "glCreateProgram", "glCreateShader"})
        for (int i = 0; i < 6; ++i) {
            const std::string name = names[i];
            SCOPED_TRACE(name + " " + step);
            fresh_gl();
            gl().failing = step;
            gl().failing_for = name;
            host().refused = {step == "host" ? name : ""};
            control shown;
            show(shown);
            const std::string tags =
                "[" + step + "]" + (step == "host" ? "" : "[gl]") + (i < 4 ? "[required]" : "[flat]");
            // The app record comes along with the first program that has been linked.
            const lines expected =
                text_lines("missing_program.txt", tags, {{'p', name}, {'a', i == 0 ? "null" : "app"}});
            lines got = recorded().text({channel::log}, true);
            std::erase_if(got, [](const std::string& l) { return l.starts_with("5 app LUMGL: "); });
            expect_lines(got, expected);

            lines expected_calls;
            std::set<std::string> expected_back; // in any order
            for (int k = 0; k < (i < 4 ? i + 1 : 6); ++k)
                expected_calls.push_back(
                    print("get_reference \"shader\" \"%s\"%s", names[k], k == i ? " -> null" : ""));
            for (int k = 0; k < (i < 4 ? i : 6); ++k) {
                if (k == i) continue;
                if (i >= 4) expected_calls.push_back(print("get_data \"%s\"", names[k]));
                expected_back.insert(print("release \"%s\"", names[k]));
            }
            lines calls = recorded().text({channel::host});
            const auto first_back =
                calls.end() - static_cast<long>(std::min(calls.size(), expected_back.size()));
            EXPECT_EQ(std::set<std::string>(first_back, calls.end()), expected_back);
            calls.erase(first_back, calls.end());
            expect_lines(calls, expected_calls);
            expect_lines(recorded().text({channel::gl}), {}, "GL calls of the frame");
            EXPECT_EQ(shown.state().loaded, 0);
        }
    gl().failing = "";
    host().refused.clear();
}

TEST_F(failures, an_empty_info_log_is_not_fetched) {
    write_three_triangles();
    gl().info_log.clear();
    for (const char* step : {"compile", "link"}) {
        gl().failing = step;
        control shown;
        show(shown);
        EXPECT_EQ(recorded().count("glGetShaderInfoLog") + recorded().count("glGetProgramInfoLog"), 0);
        EXPECT_EQ(recorded().count("0 null error: could not compile shader"), 0);
    }
}

TEST_F(failures, a_program_without_its_record_stops_the_frame) {
    write_three_triangles();
    for (const char* name : {"gouraud_color", "phong_texture", "flat_texture"}) {
        host().without_data = {name};
        control shown;
        show(shown);
        expect_lines(recorded().log(0, 4),
                     {"0 app model3d: could not get shader metadata, can't draw 3D content"});
        EXPECT_EQ(recorded().count("release"), 6);
        EXPECT_EQ(recorded().count("glClear"), 0);
    }
}

// A model that does not load is tried again with every frame, and costs nothing while it fails.
TEST_F(failures, a_model_that_does_not_load_is_tried_again) {
    host().unresolved = {"lost.obj"};
    for (const char* name : {"missing.obj", "lost.obj", "missing.qel"}) {
        SCOPED_TRACE(name);
        control shown;
        shown.realize();
        for (int i = 0; i < 2; ++i) {
            if (i == 0)
                show(shown, name);
            else
                shown.render();
            expect_lines(recorded().log(0, 4), {std::string("1 app model3d: could not load model: ") + name});
            lines calls = recorded().text({channel::gl});
            std::erase_if(calls, [](const std::string& l) {
                return l.starts_with("glIsProgram") || l.starts_with("glGetProgramiv");
            });
            expect_lines(calls, {}, "calls besides a look at the context,");
            EXPECT_EQ(shown.state().loaded, 0);
            EXPECT_EQ(shown.state().scene.root.nodes, nullptr);
            EXPECT_EQ(shown.state().scene.lights, nullptr);
            for (const auto& [key, count] : host().held)
                EXPECT_EQ(count, 0) << key;
            recorded().clear();
        }
        host_fire("kora.presleep"); // nothing was loaded
        expect_lines(recorded().text({channel::log, channel::gl}), {});
        host().listeners.clear();
    }
}

TEST_F(failures, the_extension_chooses_the_loader) {
    const std::string triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    const struct {
        const char* name;
        lines log;
        size_t draws;
    } cases[] = {
        {"UPPER.OBJ", {}, 1},
        {".obj", {}, 1},
        {"a.ObJ", {}, 1},
        {"abc", {}, 0},
        {"obj", {}, 0},
        {"x.stl", {"0 app model3d: unsupported format: .stl"}, 0},
        {"x.DAZ", {"0 app model3d: unsupported format: .daz"}, 0},
        {"model.obj2", {"0 app model3d: unsupported format: obj2"}, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        write(c.name, triangle);
        control shown;
        show(shown, c.name);
        shown.render(); // an empty scene is a loaded one: no second message
        expect_lines(recorded().log(0, 4), c.log);
        EXPECT_EQ(std::exchange(gl().draws, {}).size(), 2 * c.draws);
        EXPECT_EQ(recorded().count("resolve_path"), static_cast<int>(c.draws));
        EXPECT_EQ(recorded().count("glClear"), 2);
        EXPECT_EQ(shown.state().loaded, 1);
    }
}

} // namespace
