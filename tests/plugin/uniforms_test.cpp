// Uniform values by name: what is sent, what is kept, what is refused.

#include "plugin/fixture.h"

namespace {

class uniforms : public plugin_test {
  protected:
    void build(const char* declarations, const char* uses) {
        vertex = std::string(declarations) + "void main() { gl_Position = vec4(0); " + uses + "; }";
        const shader_desc description = {"mine", SHADER_TYPE_SOURCE, vertex.c_str(),
                                         "precision highp float; void main() {}", nullptr};
        reference = host_get_shader("mine", &description);
        ASSERT_NE(reference, nullptr);
        program = static_cast<shader_program*>(host_get_data(reference));
        gl().program = program->program;
        recorded().clear();
    }
    void TearDown() override {
        if (reference) host_release(reference);
        plugin_test::TearDown();
    }
    int set(const char* name, int type, int count, const void* value) {
        return PLUGIN(lum_gl_shader_set_uniform_value)(program, name, type, count, value);
    }
    static lines log() { return recorded().text({channel::log}); }

    std::string vertex;
    kora_reference* reference = nullptr;
    shader_program* program = nullptr;
};

TEST_F(uniforms, every_kind_is_sent_once_per_change) {
    const float f[16] = {1.5f, -2, 0, 4.25f, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const int32_t n[4] = {7, -8, 9, 0};
    const struct {
        const char* name;
        int type, count;
        GLenum gl_type; // recorded as GL reports it
    } cases[] = {
        {"f1", UNIFORM_VALUE_FLOAT, 1, GL_FLOAT},       {"f2", UNIFORM_VALUE_FLOAT, 2, GL_FLOAT_VEC2},
        {"f3", UNIFORM_VALUE_FLOAT, 3, GL_FLOAT_VEC3},  {"f4", UNIFORM_VALUE_FLOAT, 4, GL_FLOAT_VEC4},
        {"i1", UNIFORM_VALUE_INT, 1, GL_INT},           {"i2", UNIFORM_VALUE_INT, 2, GL_INT_VEC2},
        {"i3", UNIFORM_VALUE_INT, 3, GL_INT_VEC3},      {"i4", UNIFORM_VALUE_INT, 4, GL_INT_VEC4},
        {"s", UNIFORM_VALUE_INT, 1, GL_SAMPLER_2D},     {"m2", UNIFORM_VALUE_MATRIX, 2, GL_FLOAT_MAT2},
        {"m3", UNIFORM_VALUE_MATRIX, 3, GL_FLOAT_MAT3}, {"m4", UNIFORM_VALUE_MATRIX, 4, GL_FLOAT_MAT4}};
    build("uniform float f1; uniform vec2 f2; uniform vec3 f3; uniform vec4 f4; uniform int i1;"
          "uniform ivec2 i2; uniform ivec3 i3; uniform ivec4 i4; uniform sampler2D s; uniform mat2 m2;"
          "uniform mat3 m3; uniform mat4 m4;",
          "f1, f2, f3, f4, i1, i2, i3, i4, s, m2, m3, m4");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const bool is_matrix = c.type == UNIFORM_VALUE_MATRIX;
        const size_t words = static_cast<size_t>(is_matrix ? c.count * c.count : c.count);
        uint32_t value[16];
        std::memcpy(value, c.type == UNIFORM_VALUE_INT ? static_cast<const void*>(n) : f, words * 4);
        EXPECT_EQ(set(c.name, c.type, c.count, value), 1);
        EXPECT_EQ(set(c.name, c.type, c.count, value), 1);
        value[words - 1] ^= 1; // one bit of the last component is a change
        EXPECT_EQ(set(c.name, c.type, c.count, value), 1);
        const auto* found = static_cast<const shader_uniform*>(kor_string_map_get(program->uniforms, c.name));
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->type, c.gl_type);
        EXPECT_EQ(found->location, PLUGIN(lum_gl_shader_get_uniform)(program, c.name));
        EXPECT_EQ(std::memcmp(found->value, value, words * 4), 0);
    }
    expect_lines(recorded().text({channel::gl, channel::log}), text_lines("uniforms.txt"), "sent");
}

TEST_F(uniforms, comparison_is_by_bytes_and_the_first_value_always_goes) {
    build("uniform float f;", "f");
    const float zero = 0, negative = -0.0f;
    for (const float* value : {&zero, &negative, &negative, &zero})
        EXPECT_EQ(set("f", UNIFORM_VALUE_FLOAT, 1, value), 1);
    EXPECT_EQ(recorded().count("glUniform1fv"), 3);
}

TEST_F(uniforms, refuses_what_it_does_not_know) {
    build("uniform float f; uniform float idle;", "f");
    const float value[25] = {1};
    EXPECT_EQ(set("idle", UNIFORM_VALUE_FLOAT, 1, value), 0); // GL leaves an unused uniform out
    EXPECT_EQ(set("", UNIFORM_VALUE_FLOAT, 1, value), 0);
    EXPECT_EQ(PLUGIN(lum_gl_shader_get_uniform)(program, "idle"), -1);
    EXPECT_EQ(PLUGIN(lum_gl_shader_get_uniform)(program, "f"), 0);
    for (const int type : {0, 3, 5, -1})
        EXPECT_EQ(set("f", type, 1, value), 0);
    expect_lines(log(), {"1 null could not find uniform idle in shader mine",
                         "1 null could not find uniform  in shader mine",
                         "1 null unknown uniform value type 0 sent for uniform f in shader mine",
                         "1 null unknown uniform value type 3 sent for uniform f in shader mine",
                         "1 null unknown uniform value type 5 sent for uniform f in shader mine",
                         "1 null unknown uniform value type -1 sent for uniform f in shader mine"});
    expect_lines(recorded().text({channel::gl}), {});
}

// Counts that GL has no function for are stored and answered, not sent; another size makes a new store.
TEST_F(uniforms, odd_counts_and_sizes_stay_inside_their_memory) {
    build("uniform float f; uniform vec4 v;", "f, v");
    const int32_t ints[5] = {1, 2, 3, 4, 5};
    const float floats[25] = {1, 2, 3, 4, 5};
    EXPECT_EQ(set("f", UNIFORM_VALUE_INT, 5, ints), 1);
    EXPECT_EQ(set("f", UNIFORM_VALUE_FLOAT, 5, floats), 1);
    EXPECT_EQ(set("f", UNIFORM_VALUE_MATRIX, 5, floats), 1);
    EXPECT_EQ(set("f", UNIFORM_VALUE_MATRIX, 1, floats), 1);
    expect_lines(recorded().text({channel::gl}), {});
    EXPECT_EQ(set("v", UNIFORM_VALUE_FLOAT, 4, floats), 1);
    EXPECT_EQ(set("f", UNIFORM_VALUE_FLOAT, 1, floats), 1); // four bytes as before: equal
    EXPECT_EQ(recorded().count("glUniform"), 1);
    EXPECT_EQ(set("f", UNIFORM_VALUE_MATRIX, 5, floats), 1);
    EXPECT_EQ(set("f", UNIFORM_VALUE_FLOAT, 1, floats), 1); // another size: sent
    expect_lines(recorded().text({channel::gl}), {"glUniform4fv mine.v 1, 2, 3, 4", "glUniform1fv mine.f 1"});
}

TEST_F(uniforms, a_program_without_uniforms_has_no_map) {
    build("", "0");
    EXPECT_EQ(program->uniforms, nullptr);
    const float value = 1;
    EXPECT_EQ(set("f", UNIFORM_VALUE_FLOAT, 1, &value), 0);
    EXPECT_EQ(PLUGIN(lum_gl_shader_get_uniform)(program, "f"), -1);
    expect_lines(log(), {"1 null could not find uniform f in shader mine"});
}

} // namespace
