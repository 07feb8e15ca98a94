// State, shaders, programs and uniforms.
#include "plugin/fake_gles_calls.h"
#include "plugin/fake_kora.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

bool fails(const char* step) {
    const gl_state& s = gl();
    return s.failing == step && (s.failing_for.empty() || s.failing_for == host().building);
}

template <class T>
void uniform(const char* function, const std::string& type, GLint location, size_t words, const T* values,
             int cases) {
    const auto program = gl().programs.find(gl().program);
    if (program == gl().programs.end() || location < 0 ||
        static_cast<size_t>(location) >= program->second.uniforms.size() || cases != 1)
        return fault("%s: no program, no such location or count %d", function, cases);
    gl_uniform& u = program->second.uniforms[static_cast<size_t>(location)];
    if (u.type != type && !(u.type == "sampler2D" && type == "int"))
        fault("%s on %s %s", function, u.type.c_str(), u.name.c_str());
    u.value.assign(values, values + words);
    ++u.sends;
    std::string text;
    for (size_t i = 0; i < words && words < 9; ++i)
        text += (i ? ", " : " ") + number(static_cast<double>(values[i]));
    CALL("%s %s.%s%s", function, program->second.name.c_str(), u.name.c_str(), text.c_str());
}

GLenum gl_type(const std::string& type) {
    static const std::map<std::string, GLenum> types{
        {"float", GL_FLOAT},     {"vec2", GL_FLOAT_VEC2}, {"vec3", GL_FLOAT_VEC3},
        {"vec4", GL_FLOAT_VEC4}, {"int", GL_INT},         {"ivec2", GL_INT_VEC2},
        {"ivec3", GL_INT_VEC3},  {"ivec4", GL_INT_VEC4},  {"mat2", GL_FLOAT_MAT2},
        {"mat3", GL_FLOAT_MAT3}, {"mat4", GL_FLOAT_MAT4}, {"sampler2D", GL_SAMPLER_2D}};
    const auto found = types.find(type);
    return found == types.end() ? GLenum{0} : found->second;
}

bool attached(GLuint shader) {
    return std::any_of(gl().programs.begin(), gl().programs.end(), [shader](const auto& p) {
        return std::count(p.second.shaders.begin(), p.second.shaders.end(), shader) > 0;
    });
}

void copy_text(const std::string& text, GLsizei size, GLsizei* length, GLchar* out) {
    if (size <= 0) return;
    const size_t n = std::min(text.size(), static_cast<size_t>(size) - 1);
    std::memcpy(out, text.data(), n);
    out[n] = 0;
    if (length) *length = static_cast<GLsizei>(n);
}

} // namespace

const char* name_of(GLenum value) {
// clang-format off
#define NAME(x) {GL_##x, #x}
    static const std::map<GLenum, const char*> names{
        NAME(VERTEX_SHADER), NAME(FRAGMENT_SHADER), NAME(COMPILE_STATUS), NAME(INFO_LOG_LENGTH),
        NAME(LINK_STATUS), NAME(VALIDATE_STATUS), NAME(ACTIVE_UNIFORMS), NAME(ACTIVE_UNIFORM_MAX_LENGTH),
        NAME(VERSION), NAME(EXTENSIONS), NAME(ARRAY_BUFFER), NAME(ELEMENT_ARRAY_BUFFER), NAME(STATIC_DRAW),
        NAME(TEXTURE_2D), NAME(TEXTURE0), NAME(TEXTURE_MAG_FILTER), NAME(TEXTURE_MIN_FILTER),
        NAME(TEXTURE_WRAP_S), NAME(TEXTURE_WRAP_T), NAME(LINEAR), NAME(RGBA), NAME(RGB),
        NAME(UNSIGNED_BYTE), NAME(UNSIGNED_SHORT_5_6_5), NAME(VIEWPORT), NAME(FRONT_FACE), NAME(CCW),
        NAME(CW), NAME(BLEND), NAME(DEPTH_TEST), NAME(CULL_FACE), NAME(LESS), NAME(DEPTH_BUFFER_BIT),
        NAME(SRC_ALPHA), NAME(ONE_MINUS_SRC_ALPHA), NAME(ONE), NAME(TRIANGLES), NAME(FLOAT),
        NAME(UNSIGNED_INT)};
// clang-format on
#undef NAME
    const auto found = names.find(value);
    return found == names.end() ? "?" : found->second;
}

gl_state& gl() {
    static gl_state instance;
    return instance;
}

const gl_uniform* gl_program::find(const std::string& uniform) const {
    for (const gl_uniform& u : uniforms)
        if (u.name == uniform) return &u;
    return nullptr;
}

const gl_program& gl_state::named(const std::string& name) const {
    static const gl_program none;
    const gl_program* newest = &none;
    for (const auto& [id, p] : programs)
        if (p.name == name) newest = &p;
    return *newest;
}

void gl_state::lose_context() {
    shaders.clear();
    programs.clear();
    textures.clear();
    buffers.clear();
    program = texture = array_buffer = element_buffer = 0;
    attributes = {};
    last_shader = 100;
    last_program = last_texture = last_buffer = 0;
}

// ---- Shaders and programs -------------------------------------------------------------------------

DRIVER GLuint glCreateShader(GLenum type) {
    CALL("glCreateShader %s", name_of(type));
    if (fails("glCreateShader")) return 0;
    gl().shaders[++gl().last_shader] = {type, "", false, false};
    return gl().last_shader;
}

DRIVER void glShaderSource(GLuint shader, GLsizei count, const GLchar* const* text, const GLint* length) {
    CALL("glShaderSource %u %d %s", shader, count, length ? "lengths" : "null");
    gl().shaders.at(shader).source = text[0];
}

DRIVER void glCompileShader(GLuint shader) {
    CALL("glCompileShader %u", shader);
    gl().shaders.at(shader).compiled = !fails("compile");
}

DRIVER void glGetShaderiv(GLuint shader, GLenum what, GLint* value) {
    CALL("glGetShaderiv %u %s", shader, name_of(what));
    if (what == GL_COMPILE_STATUS)
        *value = gl().shaders.at(shader).compiled;
    else if (what == GL_INFO_LOG_LENGTH)
        *value = gl().info_log.empty() ? 0 : static_cast<GLint>(gl().info_log.size() + 1);
}

#define OBJECTS(is, get_info_log, objects)                                                                   \
    DRIVER GLboolean is(GLuint name) {                                                                       \
        CALL(#is " %u", name);                                                                               \
        return gl().objects.contains(name);                                                                  \
    }                                                                                                        \
    DRIVER void get_info_log(GLuint name, GLsizei size, GLsizei* length, GLchar* text) {                     \
        CALL(#get_info_log " %u", name);                                                                     \
        copy_text(gl().info_log, size, length, text);                                                        \
    }
OBJECTS(glIsShader, glGetShaderInfoLog, shaders)
OBJECTS(glIsProgram, glGetProgramInfoLog, programs)

DRIVER void glDeleteShader(GLuint shader) {
    CALL("glDeleteShader %u", shader);
    if (!gl().shaders.contains(shader)) return fault("glDeleteShader %u: no shader", shader);
    gl().shaders[shader].deleted = true;
    if (!attached(shader)) gl().shaders.erase(shader);
}

DRIVER GLuint glCreateProgram(void) {
    CALL("glCreateProgram");
    if (fails("glCreateProgram")) return 0;
    gl().programs[++gl().last_program].name = host().building;
    return gl().last_program;
}

DRIVER void glAttachShader(GLuint program, GLuint shader) {
    CALL("glAttachShader %u %u", program, shader);
    gl().programs.at(program).shaders.push_back(shader);
}

DRIVER void glBindAttribLocation(GLuint program, GLuint index, const GLchar* name) {
    CALL("glBindAttribLocation %u %u %s", program, index, name);
    gl().programs.at(program).attributes[name] = index;
}

DRIVER void glLinkProgram(GLuint program) {
    CALL("glLinkProgram %u", program);
    gl_program& p = gl().programs.at(program);
    std::set<GLenum> stages;
    for (const GLuint shader : p.shaders) {
        const gl_shader& s = gl().shaders.at(shader);
        if (s.compiled) stages.insert(s.type);
        for (const gl_uniform& u : glsl_uniforms(s.source))
            if (!p.find(u.name)) p.uniforms.push_back(u);
    }
    p.linked = stages.size() == 2 && !fails("link");
}

DRIVER void glValidateProgram(GLuint program) {
    CALL("glValidateProgram %u", program);
}

DRIVER void glGetProgramiv(GLuint program, GLenum what, GLint* value) {
    CALL("glGetProgramiv %u %s", program, name_of(what));
    const gl_program& p = gl().programs.at(program);
    size_t longest = 0;
    for (const gl_uniform& u : p.uniforms)
        longest = std::max(longest, u.name.size() + 1);
    if (what == GL_LINK_STATUS)
        *value = p.linked;
    else if (what == GL_VALIDATE_STATUS)
        *value = !fails("validate");
    else if (what == GL_INFO_LOG_LENGTH)
        *value = gl().info_log.empty() ? 0 : static_cast<GLint>(gl().info_log.size() + 1);
    else if (what == GL_ACTIVE_UNIFORMS)
        *value = static_cast<GLint>(p.uniforms.size());
    else if (what == GL_ACTIVE_UNIFORM_MAX_LENGTH)
        *value = static_cast<GLint>(longest);
}

DRIVER void glDeleteProgram(GLuint program) {
    CALL("glDeleteProgram %u", program);
    if (!gl().programs.contains(program)) return fault("glDeleteProgram %u: no program", program);
    const std::vector<GLuint> shaders = gl().programs[program].shaders;
    gl().programs.erase(program);
    for (const GLuint shader : shaders)
        if (gl().shaders.contains(shader) && gl().shaders[shader].deleted && !attached(shader))
            gl().shaders.erase(shader);
    if (gl().program == program) gl().program = 0;
}

DRIVER void glUseProgram(GLuint program) {
    const auto found = gl().programs.find(program);
    if (found == gl().programs.end()) return fault("glUseProgram %u: no program", program);
    CALL("glUseProgram %s", found->second.name.c_str());
    gl().program = program;
}

// ---- Uniforms -------------------------------------------------------------------------------------

DRIVER void glGetActiveUniform(GLuint program, GLuint index, GLsizei size, GLsizei* length, GLint* elements,
                               GLenum* type, GLchar* name) {
    CALL("glGetActiveUniform %u %u %d", program, index, size);
    const gl_uniform& u = gl().programs.at(program).uniforms.at(index);
    *elements = 1;
    *type = gl_type(u.type);
    copy_text(u.name, size, length, name);
}

DRIVER GLint glGetUniformLocation(GLuint program, const GLchar* name) {
    CALL("glGetUniformLocation %u %s", program, name);
    const gl_program& p = gl().programs.at(program);
    const gl_uniform* u = p.find(name);
    return u ? static_cast<GLint>(u - p.uniforms.data()) : -1;
}

#define VECTOR(function, glsl, type, n)                                                                      \
    DRIVER void function(GLint at, GLsizei count, const type* v) {                                           \
        uniform(#function, glsl, at, n, v, count);                                                           \
    }
VECTOR(glUniform1fv, "float", GLfloat, 1)
VECTOR(glUniform2fv, "vec2", GLfloat, 2)
VECTOR(glUniform3fv, "vec3", GLfloat, 3)
VECTOR(glUniform4fv, "vec4", GLfloat, 4)
VECTOR(glUniform1iv, "int", GLint, 1)
VECTOR(glUniform2iv, "ivec2", GLint, 2)
VECTOR(glUniform3iv, "ivec3", GLint, 3)
VECTOR(glUniform4iv, "ivec4", GLint, 4)
#define MATRIX(function, glsl, n)                                                                            \
    DRIVER void function(GLint at, GLsizei count, GLboolean transpose, const GLfloat* v) {                   \
        if (transpose) fault(#function ": transposed");                                                      \
        uniform(#function, glsl, at, n, v, count);                                                           \
    }
MATRIX(glUniformMatrix2fv, "mat2", 4)
MATRIX(glUniformMatrix3fv, "mat3", 9)
MATRIX(glUniformMatrix4fv, "mat4", 16)
