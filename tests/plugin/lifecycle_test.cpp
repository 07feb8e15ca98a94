// Models and GL objects over the life of a control: new names, lost contexts, copies, the end.

#include "plugin/fixture.h"

namespace {

class lifecycle : public plugin_test {
  protected:
    void SetUp() override {
        plugin_test::SetUp();
        write_three_triangles();
        write("other.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    }
    // Buffers and textures: what a scene owns.
    static size_t scene_objects() { return gl().buffers.size() + gl().textures.size(); }
};

TEST_F(lifecycle, another_file_name_frees_the_scene) {
    control shown;
    show(shown);
    shown.set("filename", "tri.obj");
    EXPECT_EQ(shown.state().loaded, 1);
    EXPECT_EQ(scene_objects(), 4u);
    shown.set("filename", "other.obj");
    EXPECT_EQ(shown.state().loaded, 0);
    EXPECT_EQ(scene_objects(), 0u);
    const int maps = host().live_maps;
    recorded().clear();
    shown.render();
    EXPECT_EQ(recorded().count("resolve_path \"other.obj\""), 1);
    EXPECT_EQ(scene_objects(), 2u);
    EXPECT_LE(host().live_maps, maps) << "the new group map replaces the old one";
    expect_lines(recorded().log(0, 4), {});
}

TEST_F(lifecycle, presleep_drops_the_scene_until_the_next_frame) {
    control shown, bystander;
    shown.realize();
    bystander.realize();
    host_fire("kora.presleep");
    EXPECT_EQ(recorded().log(0, 9).size(), 0u);
    show(shown);
    recorded().clear();
    host_fire("kora.presleep");
    host_fire("kora.presleep");
    expect_lines(recorded().log(0, 9), {"2 null model3d: context disappeared, reloading."});
    EXPECT_EQ(scene_objects(), 0u);
    EXPECT_EQ(shown.state().loaded, 0);
    recorded().clear();
    shown.render();
    EXPECT_EQ(shown.state().loaded, 1);
    EXPECT_EQ(recorded().count("resolve_path \"tri.obj\""), 1);
    EXPECT_EQ(scene_objects(), 4u);
    EXPECT_EQ(gl().draws.size(), 6u);
}

// GL goes without a word, or with one that comes too late, and the next context hands out the old names
// again: to objects of the host's, and to programs that are made before the plug-in looks.
struct order {
    // What the host has in the new context before all else: programs by names that were ours, with other
    // uniforms, with the same, or the first one only; and with shaders, so that ours get other names.
    enum { nothing, different, identical_first, identical, identical_with_shaders } first;
    bool live; // models
    std::string cleared, acquired, then;
    // Whether anything tells the contexts apart, if only a name that is handed out again.
    bool differs() const {
        if (first == identical_first) return cleared == "after";
        if (first < identical) return true;
        const bool makes = acquired == "purged" ? then == "frame" : acquired != "none" && acquired != "kept";
        return makes && cleared == "never";
    }
};

class lost_context : public lifecycle {
  protected:
    void follow(const order& o);
    // Acquires what the order says; the program that was made, or 0.
    GLuint acquire(const std::string& how, const char* vertex, const char* fragment) {
        const char* const name = how == "new" ? "twin" : "gouraud_color";
        const shader_desc description = {name, SHADER_TYPE_SOURCE, vertex, fragment, nullptr};
        if (how == "purged" || how == "rebuilt") host_purge_shaders();
        if (how == "none" || how == "purged") return 0;
        if (how == "linked") {
            const GLuint shaders[] = {PLUGIN(lum_gl_loadvertexshader)(vertex),
                                      PLUGIN(lum_gl_loadfragmentshader)(fragment)};
            const GLuint made = PLUGIN(lum_gl_program_link)(host_app(), shaders[0], shaders[1], nullptr);
            for (const GLuint shader : shaders)
                PLUGIN(lum_gl_free_shader)(shader);
            return made;
        }
        kora_reference* held = host_get_shader(name, &description);
        const GLuint made = static_cast<shader_program*>(host_get_data(held))->program;
        host_release(held);
        return how == "kept" ? 0 : made;
    }
};

void lost_context::follow(const order& o) {
    const auto clear_caches = PLUGIN(lum_gl_clearprogramcaches);
    control shown, other;
    for (control* each : {&other, &shown}) {
        each->realize();
        show(*each);
    }
    const std::vector<gl_draw> before = gl().draws;
    const gl_program ours = gl().programs.at(1);
    const std::string vertex = gl().shaders.at(ours.shaders[0]).source;
    const std::string fragment = gl().shaders.at(ours.shaders[1]).source;
    if (!o.live) host_fire("kora.presleep");
    if (o.cleared == "before") clear_caches();

    gl().lose_context();
    for (GLuint name = 1; name <= 7; ++name)
        gl().textures[name] = gl().buffers[name] = {};
    gl().last_texture = gl().last_buffer = 7;
    const GLuint programs = o.first == order::nothing ? 0 : o.first < order::identical ? 7 : 3;
    for (GLuint name = 1; name <= programs; ++name) {
        gl().programs[name] = {"host's", {}, {}, ours.uniforms, true};
        if (o.first == order::different || (o.first == order::identical_first && name > 1))
            for (gl_uniform& u : gl().programs[name].uniforms)
                u.name = "u";
    }
    gl().last_program = programs;
    if (o.first == order::identical_with_shaders) gl().last_shader = 200;
    const size_t objects = gl().live_objects();
    if (o.cleared == "after") clear_caches();
    const GLuint made = acquire(o.acquired, vertex.c_str(), fragment.c_str());

    if (o.then == "presleep") host_fire("kora.presleep");
    if (o.then == "clear") clear_caches();
    if (o.then == "free") other.release();
    if (o.then == "rename") other.set("filename", "other.obj");
    gl().draws.clear();
    shown.render();
    ASSERT_EQ(gl().draws.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(gl().draws[i].corners, before[i].corners);
        EXPECT_GT(gl().draws[i].program, programs);
    }
    EXPECT_TRUE(!made || o.then == "clear" || gl().programs.contains(made));
    if (o.then != "free") other.render();
    EXPECT_EQ(gl().draws.size(), o.then == "free" ? 3u : o.then == "rename" ? 4u : 6u);
    shown.render();
    recorded().clear();
    shown.render();
    EXPECT_EQ(recorded().count("glUniform") + recorded().count("glCompileShader"), 0);

    shown.release();
    other.release();
    host_purge_shaders();
    clear_caches();
    EXPECT_EQ(gl().live_objects(), objects) << "what is the host's, and no more";
    for (GLuint name = 1; name <= 7; ++name)
        EXPECT_TRUE(gl().textures[name].empty() && gl().buffers[name].empty());
    expect_lines(recorded().faults, {}, "faults");
    host().listeners.clear();
    gl() = {};
}

TEST_F(lost_context, is_seen_in_any_order) {
    for (const auto first : {order::nothing, order::different, order::identical_first, order::identical,
                             order::identical_with_shaders})
        for (const bool live : {true, false})
            for (const char* cleared : {"never", "before", "after"})
                for (const char* acquired : {"none", "kept", "purged", "rebuilt", "new", "linked"})
                    for (const char* then : {"frame", "presleep", "clear", "free", "rename"}) {
                        const order o = {first, live, cleared, acquired, then};
                        if (!o.differs()) continue;
                        SCOPED_TRACE(print("%d, models %d, cleared %s, acquired %s, %s", first, live, cleared,
                                           acquired, then));
                        follow(o);
                        if (HasFailure()) return;
                    }
}

// Records that the pool gave up are not touched when the caches are cleared.
TEST_F(lifecycle, only_living_records_are_mended) {
    control shown;
    show(shown);
    const shader_desc custom = {"custom", SHADER_TYPE_SOURCE, "void main() {}", "void main() {}", nullptr};
    kora_reference* held = host_get_shader(custom.name, &custom);
    host_purge_shaders();
    PLUGIN(lum_gl_clearprogramcaches)();
    shown.render();
    EXPECT_EQ(gl().draws.size(), 6u);
    host_release(held);
}

// The host may empty the caches at any time; a pool that goes on handing out its records gets them mended.
TEST_F(lifecycle, cleared_caches_are_filled_again) {
    control shown;
    show(shown);
    PLUGIN(lum_gl_clearprogramcaches)();
    EXPECT_EQ(gl().programs.size(), 1u) << "a witness of the model's context";
    recorded().clear();
    shown.render();
    EXPECT_EQ(gl().programs.size(), 7u);
    EXPECT_EQ(recorded().count("glCompileShader"), 12);
    EXPECT_EQ(recorded().count("resolve_path"), 0) << "the model is still there";
    shown.render();
    EXPECT_EQ(gl().programs.size(), 6u);
    EXPECT_EQ(gl().draws.size(), 9u);
    expect_lines(recorded().log(0, 4), {});
}

// A pool that keeps nothing between frames has every program built again, and every value sent again.
TEST_F(lifecycle, programs_may_be_rebuilt_for_every_frame) {
    host().keep_shaders = false;
    control shown;
    show(shown);
    const int sent = recorded().count("glUniform");
    recorded().clear();
    shown.render();
    EXPECT_EQ(recorded().count("glCompileShader"), 12);
    EXPECT_EQ(recorded().count("glUniform"), sent);
    EXPECT_EQ(gl().shaders.size(), 2 * gl().programs.size()) << "shaders live only inside their programs";
}

TEST_F(lifecycle, a_copy_loads_its_own_scene) {
    control source, copy;
    source.set("shading_model", "flat");
    source.set("azimuth", 30.0f);
    source.set("ignore_bind_transforms", 0);
    source.set("camera_clip_far", 77.0f);
    show(source);
    source.copy_to(copy);
    const described::state &from = source.state(), &to = copy.state();
    EXPECT_STREQ(to.filename, "tri.obj");
    EXPECT_NE(to.filename, from.filename);
    // From the flags to the light's intensity, then from the shading model to the deformers.
    const auto equal = [&](size_t begin, size_t end) {
        return std::memcmp(reinterpret_cast<const char*>(&to) + begin,
                           reinterpret_cast<const char*>(&from) + begin, end - begin) == 0;
    };
    EXPECT_TRUE(equal(offsetof(described::state, flags), offsetof(described::state, scene)));
    EXPECT_TRUE(equal(offsetof(described::state, shading_model), offsetof(described::state, group_map)));
    EXPECT_EQ(to.loaded, 0);
    EXPECT_EQ(to.group_map, nullptr);
    EXPECT_EQ(to.scene.root.nodes, nullptr);
    for (const void* program : to.programs)
        EXPECT_EQ(program, nullptr);

    recorded().clear();
    copy.render();
    EXPECT_EQ(recorded().count("resolve_path \"tri.obj\""), 1);
    EXPECT_EQ(scene_objects(), 8u);
    source.release();
    EXPECT_EQ(scene_objects(), 4u);
    gl().draws.clear();
    copy.render();
    EXPECT_EQ(gl().draws.size(), 3u);
}

TEST_F(lifecycle, copies_onto_themselves_and_onto_loaded_controls) {
    control a, b, unnamed;
    show(a);
    a.copy_to(a);
    EXPECT_EQ(a.state().loaded, 1);
    EXPECT_EQ(scene_objects(), 4u);
    show(b, "other.obj");
    EXPECT_EQ(scene_objects(), 6u);
    a.copy_to(b); // b's name and scene go first
    EXPECT_EQ(scene_objects(), 4u);
    EXPECT_STREQ(b.state().filename, "tri.obj");
    b.render();
    EXPECT_EQ(scene_objects(), 8u);
    unnamed.copy_to(b);
    EXPECT_EQ(b.state().filename, nullptr);
    EXPECT_EQ(b.state().loaded, 0);
    EXPECT_EQ(scene_objects(), 4u);
    recorded().clear();
    b.render();
    expect_lines(recorded().text({channel::gl, channel::host, channel::log}), {});
}

// Two controls share programs, not values: what one sends, the other must send again.
TEST_F(lifecycle, two_controls_share_the_programs) {
    control a, b;
    a.set("control_lightness", 0.25f);
    b.set("control_lightness", 1.0f);
    show(a);
    show(b);
    EXPECT_EQ(recorded().count("glCompileShader"), 0);
    for (int i = 0; i < 2; ++i) {
        recorded().clear();
        a.render();
        EXPECT_EQ(recorded().count("glUniform1fv gouraud_color.lightness 0.25"), 1);
        EXPECT_EQ(recorded().count("glUniform"), 2) << "the lightness of two programs";
        b.render();
        EXPECT_EQ(recorded().count("glUniform1fv gouraud_color.lightness 1"), 1);
    }
}

} // namespace
