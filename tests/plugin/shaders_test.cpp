// Building programs: compiling, files, links, their caches, and the built-in sources.

#include "plugin/fixture.h"

#include <algorithm>
#include <filesystem>
#include <set>

using namespace std::string_literals;

namespace {

class shaders : public plugin_test {
  protected:
    static lines log() { return recorded().text({channel::log}, true); }
    static lines calls() { return recorded().text({channel::gl}, true); }

    const char* vertex = "attribute vec4 pos; uniform mat4 m; void main() { gl_Position = m * pos; }";
    const char* fragment =
        "precision highp float; uniform vec3 c; void main() { gl_FragColor = vec4(c, 1.0); }";
};

TEST_F(shaders, the_pool_is_registered_when_the_host_asks) {
    PLUGIN(lum_gl_create_shader_pool)(host_app(), reinterpret_cast<void*>(intptr_t{42}));
    expect_lines(recorded().text({channel::host}), {"create_pool \"shader\" 42 0"});
}

TEST_F(shaders, a_built_in_program_is_made_by_these_calls) {
    write_three_triangles();
    host().timing = true;
    control shown;
    show(shown);
    lines got;
    for (const trace::line& l : recorded().lines) {
        if (l.nested && l.from != channel::lookup) got.push_back(l.text);
        if (l.text.starts_with("timing app lum_Image load flat_color")) got.clear(); // the last but one
    }
    expect_lines(got, text_lines("flat_texture.txt"), "program");
}

TEST_F(shaders, files_are_read_whole_and_compiled_once) {
    std::set<GLuint> names;
    for (const size_t size : {0, 1, 511, 512, 513, 1024, 5000}) {
        std::string text;
        while (text.size() < size)
            text += static_cast<char>('a' + text.size() % 23);
        const std::string path = write(print("f%zu.glsl", size), text);
        for (int again = 0; again < 2; ++again) {
            uint32_t shader = 77;
            EXPECT_EQ(PLUGIN(lum_gl_loadfragmentshader_file)(path.c_str(), &shader), again);
            ASSERT_TRUE(gl().shaders.contains(shader));
            EXPECT_EQ(gl().shaders[shader].source, text) << size;
            EXPECT_EQ(gl().shaders[shader].type, GLenum{GL_FRAGMENT_SHADER});
            names.insert(shader);
        }
        PLUGIN(lum_gl_free_shader)(*names.rbegin()); // the cache holds it
    }
    EXPECT_EQ(names.size(), 7u);
    EXPECT_EQ(gl().shaders.size(), 7u);
    EXPECT_EQ(recorded().count("glCompileShader"), 7);
    expect_lines(log(), {}, "log without a program");
    PLUGIN(lum_gl_clearprogramcaches)();
    EXPECT_EQ(gl().shaders.size(), 0u);
    expect_lines(log(), {});
}

TEST_F(shaders, files_that_fail_give_no_shader) {
    uint32_t shader = 77;
    EXPECT_EQ(PLUGIN(lum_gl_loadvertexshader_file)((folder + "/none").c_str(), &shader), 0);
    EXPECT_EQ(shader, 0u);
    shader = 77;
    EXPECT_EQ(PLUGIN(program_loadshader_file)(folder.c_str(), GL_VERTEX_SHADER, &shader), 0); // a directory
    EXPECT_TRUE(shader == 0 || gl().shaders.contains(shader));
    expect_lines(log(), {});
    gl().failing = "compile";
    const std::string path = write("v.glsl", vertex);
    for (int i = 0; i < 2; ++i) { // a failure is not cached
        EXPECT_EQ(PLUGIN(lum_gl_loadvertexshader_file)(path.c_str(), &shader), 0);
        EXPECT_EQ(shader, 0u);
    }
    expect_lines(log(), lines(2, "0 null error: could not compile shader: 0:1: bad"));
    gl().failing = "";
    EXPECT_NE(PLUGIN(lum_gl_loadvertexshader)(vertex), 0u);
    PLUGIN(lum_gl_free_shader)(gl().last_shader);
    PLUGIN(lum_gl_free_shader)(gl().last_shader); // no shader any more: not deleted twice
    EXPECT_EQ(recorded().count("glDeleteShader"), 3);
}

TEST_F(shaders, links_are_cached_by_their_pair) {
    const auto link = PLUGIN(lum_gl_program_link);
    const char* const attribs[] = {"pos", "more", nullptr};
    const char* const none[] = {nullptr};
    uint32_t v = 0, f = 0, f2 = 0;
    const std::string path = write("f.glsl", fragment);
    PLUGIN(lum_gl_loadvertexshader_file)(write("v.glsl", vertex).c_str(), &v);
    PLUGIN(lum_gl_loadfragmentshader_file)(path.c_str(), &f);
    PLUGIN(lum_gl_loadfragmentshader_file)(write("f2.glsl", fragment).c_str(), &f2);
    recorded().clear();

    EXPECT_EQ(link(host_app(), 0, f, attribs), 0u);
    EXPECT_EQ(link(host_app(), v, 0, attribs), 0u);
    EXPECT_FALSE(PLUGIN(lum_gl_program_valid)(0));
    expect_lines(calls(), {});
    expect_lines(log(), {});

    EXPECT_EQ(link(host_app(), v, 555, attribs), 0u);
    expect_lines(log(), {"0 app shader: attempt to link program with invalid shaders"});
    recorded().clear();

    const uint32_t program = link(host_app(), v, f, attribs);
    ASSERT_NE(program, 0u);
    EXPECT_EQ(gl().programs[program].attributes, (std::map<std::string, GLuint>{{"more", 1}, {"pos", 0}}));
    EXPECT_EQ(link(host_app(), v, f, nullptr), program);
    EXPECT_EQ(recorded().count("glLinkProgram"), 1);
    const uint32_t other = link(host_app(), v, f2, none);
    EXPECT_NE(other, program);
    EXPECT_EQ(gl().programs[other].attributes.size(), 0u);
    EXPECT_NE(PLUGIN(lum_gl_program_valid)(program), 0);
    PLUGIN(lum_gl_free_program)(program);
    EXPECT_NE(PLUGIN(lum_gl_program_valid)(program), 0);
    expect_lines(log(), {});

    // With a program in the cache the library knows whom to tell.
    uint32_t again = 0;
    EXPECT_EQ(PLUGIN(program_loadshader_file)(path.c_str(), GL_FRAGMENT_SHADER, &again), 1);
    EXPECT_EQ(again, f);
    const std::string third = write("f3.glsl", fragment);
    PLUGIN(lum_gl_loadfragmentshader_file)(third.c_str(), &again);
    expect_lines(
        log(), {"5 app shader: loaded shader from cache: " + path, "5 app shader: loaded shader: " + third});
    recorded().clear();

    // A program that GL lost takes both caches along, and with them the shaders of this very link.
    gl().programs.erase(program);
    EXPECT_EQ(link(host_app(), v, f, attribs), 0u);
    expect_lines(log(), {"5 app shader library: clearing caches",
                         "0 app shader: attempt to link program with invalid shaders"});
    EXPECT_EQ(gl().live_objects(), 0u);
    recorded().clear();

    // A lost shader does the same, and is loaded anew.
    PLUGIN(lum_gl_loadfragmentshader_file)(path.c_str(), &f);
    PLUGIN(lum_gl_loadvertexshader_file)((folder + "/v.glsl").c_str(), &v);
    link(host_app(), v, f, attribs);
    gl().lose_context();
    recorded().clear();
    EXPECT_EQ(PLUGIN(lum_gl_loadfragmentshader_file)(path.c_str(), &f), 0);
    EXPECT_TRUE(gl().shaders.contains(f));
    expect_lines(log(), {"5 app shader library: clearing caches"});
    EXPECT_EQ(recorded().count("glDelete"), 0);
    gl().lose_context();
    gl().last_shader = 200;
    PLUGIN(lum_gl_loadfragmentshader_file)(third.c_str(), &again);
    PLUGIN(lum_gl_loadfragmentshader_file)(path.c_str(), &f);
    EXPECT_TRUE(gl().shaders.contains(again)) << "made before the lost one was asked for";
}

TEST_F(shaders, descriptions_of_every_type) {
    const std::string v = write("v.glsl", vertex), f = write("f.glsl", fragment);
    for (const char* binary : {"lit.shd", "a.shd.shd", "b.shd"})
        write(binary, "binary");
    host().timing = true;
    host_app();
    const shader_desc failing[] = {{"no file", SHADER_TYPE_FILE, v.c_str(), "gone", nullptr},
                                   {"lit", SHADER_TYPE_BINARY, nullptr, "lit.frag", nullptr},
                                   {"twice", SHADER_TYPE_BINARY, "x", "a.frag.frag", nullptr},
                                   {"direct", SHADER_TYPE_BINARY, "x", "b.shd", nullptr},
                                   {"lost", SHADER_TYPE_BINARY, "x", "gone.frag", nullptr},
                                   {"odd", 7, "x", "y", nullptr},
                                   {"odd", 3, "x", nullptr, nullptr}};
    for (const shader_desc& d : failing)
        EXPECT_EQ(host_get_shader(d.name, &d), nullptr) << d.name;
    expect_lines(recorded().text({channel::log, channel::host}, true),
                 text_lines("descriptions.txt", "", {{'f', folder}, {'n', "\n"}}), "failing");
    recorded().clear();
    EXPECT_EQ(host_get_shader("nothing", nullptr), nullptr);
    expect_lines(recorded().text({channel::log, channel::gl}, true), {});
    for (const shader_desc& d : {shader_desc{"file", SHADER_TYPE_FILE, v.c_str(), f.c_str(), nullptr},
                                 shader_desc{"source", SHADER_TYPE_SOURCE, vertex, fragment, nullptr}}) {
        kora_reference* reference = host_get_shader(d.name, &d);
        ASSERT_NE(reference, nullptr);
        expect_lines(recorded().log(0, 4), {});
        const auto* program = static_cast<const shader_program*>(host_get_data(reference));
        EXPECT_STREQ(program->name, d.name);
        EXPECT_TRUE(gl().programs.contains(program->program));
        host_release(reference);
    }
}

TEST_F(shaders, whole_files_come_with_their_length) {
    const std::string text = "one\0two"s + std::string(5000, 'x');
    write("whole.bin", text);
    unsigned int length = 77;
    auto* bytes = static_cast<char*>(PLUGIN(lum_gl_load_shader_file)(host_app(), "whole.bin", &length));
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(std::string(bytes, length), text);
    free(bytes);
    length = 77;
    EXPECT_EQ(PLUGIN(lum_gl_load_shader_file)(host_app(), "gone.bin", &length), nullptr);
    host().unresolved = {"nowhere"};
    EXPECT_EQ(PLUGIN(lum_gl_load_shader_file)(host_app(), "nowhere", &length), nullptr);
    EXPECT_EQ(length, 77u) << "written only on success";
    EXPECT_EQ(log().at(0), "0 app Unable to open shader: " + folder + "/gone.bin\n");
    recorded().clear();
    // The kernel says that these are 4096 bytes long, and gives fewer.
    const char* liar = "/sys/kernel/mm/transparent_hugepage/enabled";
    if (std::filesystem::exists(liar)) {
        EXPECT_EQ(PLUGIN(lum_gl_load_shader_file)(host_app(), liar, &length), nullptr);
        expect_lines(log(), {std::string("0 app Shader load (") + liar + ") read failed"});
    }
}

} // namespace
