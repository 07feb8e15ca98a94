// Hosts that have a service less, or one that answers nothing.

#include "plugin/fixture.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <utility>

namespace {

class hosts : public plugin_test {};

// The life of a control goes by without it; once it is back, the next frame is the right one.
TEST_F(hosts, may_lack_anything_for_a_while) {
    constexpr const char* no_programs[] = {"0 null Unable to load shader: gouraud_color",
                                           "0 app model3d: could not get a required shader: gouraud_color"};
    const struct {
        const char* what;
        std::set<std::string> absent, silent;
        size_t draws; // of the frame without
        lines log;
    } cases[] = {
        {"data", {"data"}, {}, 3, {}},
        {"events", {"event"}, {}, 3, {}},
        {"graphics", {"graphics"}, {}, 3, {}},
        {"resources", {"resource"}, {}, 0, {no_programs[0], no_programs[1]}},
        {"image descriptions", {}, {"describe_image"}, 3, {}},
        {"maps", {}, {"string_map_create"}, 3, {}},
        {"map entries", {}, {"string_map_set"}, 3, {}},
    };
    write_three_triangles();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fresh_gl();
        host().absent = c.absent;
        host().silent = c.silent;
        init(nullptr);
        PLUGIN(lum_gl_create_shader_pool)(host_app(), nullptr);
        {
            control shown;
            shown.realize();
            show(shown);
            lines log = recorded().log(0, 4);
            // Without maps nothing is known of any uniform.
            std::erase_if(
                log, [](const std::string& l) { return l.starts_with("1 null could not find uniform"); });
            expect_lines(log, c.log);
            EXPECT_EQ(gl().draws.size(), c.draws);
            shown.dirty();
            host_fire("kora.presleep");
            shown.render();
            EXPECT_EQ(shown.state().loaded, c.draws > 0);
        }
        host().listeners.clear();
        control shown;
        shown.realize();
        show(shown);

        host().absent.clear();
        host().silent.clear();
        gl().draws.clear();
        if (c.draws > 0 && !c.absent.empty())
            shown.set("filename", "again.obj"), shown.set("filename", "tri.obj");
        recorded().clear();
        shown.render();
        expect_lines(recorded().log(0, 4), {});
        ASSERT_EQ(gl().draws.size(), 3u);
        EXPECT_EQ(gl().draws[0].corners[1][6], 1.0f);
        const gl_program& program = gl().programs.at(gl().draws[0].program);
        const auto sent = [](const gl_uniform& u) {
            return u.sends > 0 || u.name.starts_with("light_params[");
        };
        EXPECT_TRUE(std::all_of(program.uniforms.begin(), program.uniforms.end(), sent));
        host().listeners.clear();
    }
}

// Records that the pool did not make, by the one that it made.
std::map<void*, shader_program> others;

void* copied(void* record) {
    return &(others[record] = *static_cast<shader_program*>(record));
}

// Another library's: nothing of its uniform records is known but the three public fields.
struct foreign_uniform {
    shader_uniform uniform;
    uint32_t next = 64;
};

void* foreign(void* record) {
    shader_program& other = others[record];
    if (other.program) return &other;
    copied(record);
    other.uniforms = kor_string_map_create(64);
    const auto add = [](const char* key, void* uniform, void* map) {
        const auto* own = static_cast<shader_uniform*>(uniform);
        kor_string_map_set(static_cast<kor_string_map*>(map), key,
                           new foreign_uniform{{own->type, own->location, nullptr}});
        return 0;
    };
    kor_string_map_traverse(static_cast<shader_program*>(record)->uniforms, add, other.uniforms, 0);
    return &other;
}

// Uniforms of records that the pool did not make are found by name: the frames are the same.
TEST_F(hosts, may_keep_program_records_of_their_own) {
    write_three_triangles();
    lines sent[3];
    void* (*const records[])(void*) = {nullptr, copied, foreign};
    for (int i = 0; i < 3; ++i) {
        fresh_gl();
        others.clear();
        host().other_record = records[i];
        control shown;
        shown.set("shading_model", "blinn-phong");
        show(shown);
        shown.render();
        sent[i] = recorded().text({channel::gl, channel::log});
    }
    EXPECT_FALSE(sent[0].empty());
    expect_lines(sent[1], sent[0]);
    expect_lines(sent[2], sent[0]);
    for (auto& [record, other] : std::exchange(others, {})) {
        auto* lightness = static_cast<shader_uniform*>(kor_string_map_get(other.uniforms, "lightness"));
        const void* const value = lightness->value;
        constexpr int32_t many[5] = {1, 2, 3, 4, 5};
        EXPECT_EQ(PLUGIN(lum_gl_shader_set_uniform_value)(&other, "lightness", UNIFORM_VALUE_INT, 5, many),
                  1);
        EXPECT_EQ(lightness->value, value);
        EXPECT_TRUE(!value || get<float>(value, 0) == 0.75f);
        const auto release = [](const char* key, void* uniform, void*) {
            auto* own = static_cast<foreign_uniform*>(uniform);
            EXPECT_EQ(own->next, 64u) << key;
            std::free(own->uniform.value);
            delete own;
            return 0;
        };
        kor_string_map_destroy(other.uniforms, release, nullptr);
    }
}

} // namespace
