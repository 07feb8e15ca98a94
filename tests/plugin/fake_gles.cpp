#include "plugin/fake_gles.h"
#include "plugin/fake_kora.h"

#include <algorithm>
#include <cstring>
#include <utility>

#define DRIVER extern "C"
#define CALL(...) record(channel::gl, __VA_ARGS__)

namespace {

const char* name_of(GLenum value) {
    static const std::map<GLenum, const char*> names{
        {GL_VERTEX_SHADER,             "VERTEX_SHADER"            },
        {GL_FRAGMENT_SHADER,           "FRAGMENT_SHADER"          },
        {GL_COMPILE_STATUS,            "COMPILE_STATUS"           },
        {GL_INFO_LOG_LENGTH,           "INFO_LOG_LENGTH"          },
        {GL_LINK_STATUS,               "LINK_STATUS"              },
        {GL_VALIDATE_STATUS,           "VALIDATE_STATUS"          },
        {GL_ACTIVE_UNIFORMS,           "ACTIVE_UNIFORMS"          },
        {GL_ACTIVE_UNIFORM_MAX_LENGTH, "ACTIVE_UNIFORM_MAX_LENGTH"},
        {GL_VERSION,                   "VERSION"                  },
        {GL_EXTENSIONS,                "EXTENSIONS"               },
        {GL_ARRAY_BUFFER,              "ARRAY_BUFFER"             },
        {GL_ELEMENT_ARRAY_BUFFER,      "ELEMENT_ARRAY_BUFFER"     },
        {GL_STATIC_DRAW,               "STATIC_DRAW"              },
        {GL_TEXTURE_2D,                "TEXTURE_2D"               },
        {GL_TEXTURE0,                  "TEXTURE0"                 },
        {GL_TEXTURE_MAG_FILTER,        "MAG_FILTER"               },
        {GL_TEXTURE_MIN_FILTER,        "MIN_FILTER"               },
        {GL_TEXTURE_WRAP_S,            "WRAP_S"                   },
        {GL_TEXTURE_WRAP_T,            "WRAP_T"                   },
        {GL_LINEAR,                    "LINEAR"                   },
        {GL_RGBA,                      "RGBA"                     },
        {GL_RGB,                       "RGB"                      },
        {GL_UNSIGNED_BYTE,             "UNSIGNED_BYTE"            },
        {GL_UNSIGNED_SHORT_5_6_5,      "UNSIGNED_SHORT_5_6_5"     },
        {GL_VIEWPORT,                  "VIEWPORT"                 },
        {GL_FRONT_FACE,                "FRONT_FACE"               },
        {GL_CCW,                       "CCW"                      },
        {GL_CW,                        "CW"                       },
        {GL_BLEND,                     "BLEND"                    },
        {GL_DEPTH_TEST,                "DEPTH_TEST"               },
        {GL_CULL_FACE,                 "CULL_FACE"                },
        {GL_LESS,                      "LESS"                     },
        {GL_DEPTH_BUFFER_BIT,          "DEPTH_BUFFER_BIT"         },
        {GL_SRC_ALPHA,                 "SRC_ALPHA"                },
        {GL_ONE_MINUS_SRC_ALPHA,       "ONE_MINUS_SRC_ALPHA"      },
        {GL_ONE,                       "ONE"                      },
        {GL_TRIANGLES,                 "TRIANGLES"                },
        {GL_FLOAT,                     "FLOAT"                    },
        {GL_UNSIGNED_INT,              "UNSIGNED_INT"             }
    };
    const auto found = names.find(value);
    return found == names.end() ? "?" : found->second;
}

bool fails(const char* step) {
    const gl_state& s = gl();
    return s.failing == step && (s.failing_for.empty() || s.failing_for == host().building);
}

const uint8_t* bytes_of(GLuint buffer, const char* pointer, size_t offset, size_t size) {
    if (!buffer) return reinterpret_cast<const uint8_t*>(pointer) + offset;
    const auto found = gl().buffers.find(buffer);
    const size_t start = reinterpret_cast<size_t>(pointer) + offset;
    if (found != gl().buffers.end() && start + size <= found->second.size())
        return found->second.data() + start;
    fault("a draw call reads outside buffer %u", buffer);
    return nullptr;
}

void fetch_corner(gl_draw& draw, uint32_t vertex) {
    std::array<float, 8>& corner = draw.corners.emplace_back();
    static constexpr size_t place[3] = {0, 3, 6}, floats[3] = {3, 3, 2};
    for (size_t i = 0; i < 3; ++i) {
        const gl_attribute& a = draw.attributes[i];
        if (!a.enabled) continue;
        const size_t size = static_cast<size_t>(a.size) * 4;
        const size_t stride = a.stride ? static_cast<size_t>(a.stride) : size;
        const uint8_t* bytes = bytes_of(a.buffer, a.pointer, vertex * stride, size);
        if (bytes) std::memcpy(&corner[place[i]], bytes, std::min(size, floats[i] * 4));
    }
}

gl_draw begin_draw(bool elements, GLint first, GLsizei count) {
    const gl_state& s = gl();
    if (!s.programs.contains(s.program)) fault("a draw call without a program");
    return {s.program, s.texture, elements, first, count, !s.array_buffer, s.attributes, {}};
}

template <class T>
void uniform(const char* function, GLint location, size_t words, const T* values, int cases) {
    static const std::map<std::string, std::string> types{
        {"glUniform1fv",       "float"},
        {"glUniform2fv",       "vec2" },
        {"glUniform3fv",       "vec3" },
        {"glUniform4fv",       "vec4" },
        {"glUniform1iv",       "int"  },
        {"glUniform2iv",       "ivec2"},
        {"glUniform3iv",       "ivec3"},
        {"glUniform4iv",       "ivec4"},
        {"glUniformMatrix2fv", "mat2" },
        {"glUniformMatrix3fv", "mat3" },
        {"glUniformMatrix4fv", "mat4" }
    };
    const auto program = gl().programs.find(gl().program);
    if (program == gl().programs.end() || location < 0 ||
        static_cast<size_t>(location) >= program->second.uniforms.size() || cases != 1)
        return fault("%s: no program, no such location or count %d", function, cases);
    gl_uniform& u = program->second.uniforms[static_cast<size_t>(location)];
    const std::string& type = types.at(function);
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
        {"float",     GL_FLOAT     },
        {"vec2",      GL_FLOAT_VEC2},
        {"vec3",      GL_FLOAT_VEC3},
        {"vec4",      GL_FLOAT_VEC4},
        {"int",       GL_INT       },
        {"ivec2",     GL_INT_VEC2  },
        {"ivec3",     GL_INT_VEC3  },
        {"ivec4",     GL_INT_VEC4  },
        {"mat2",      GL_FLOAT_MAT2},
        {"mat3",      GL_FLOAT_MAT3},
        {"mat4",      GL_FLOAT_MAT4},
        {"sampler2D", GL_SAMPLER_2D}
    };
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

DRIVER void glGetShaderInfoLog(GLuint shader, GLsizei size, GLsizei* length, GLchar* text) {
    CALL("glGetShaderInfoLog %u", shader);
    copy_text(gl().info_log, size, length, text);
}

DRIVER GLboolean glIsShader(GLuint shader) {
    CALL("glIsShader %u", shader);
    return gl().shaders.contains(shader);
}

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
        for (const glsl_variable& v : glsl_parse(s.source).uniforms)
            if (v.used && !p.find(v.name)) p.uniforms.push_back({v.name, v.type, {}, 0});
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

DRIVER void glGetProgramInfoLog(GLuint program, GLsizei size, GLsizei* length, GLchar* text) {
    CALL("glGetProgramInfoLog %u", program);
    copy_text(gl().info_log, size, length, text);
}

DRIVER GLboolean glIsProgram(GLuint program) {
    CALL("glIsProgram %u", program);
    return gl().programs.contains(program);
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

#define VECTOR(function, type, n)                                                                            \
    DRIVER void function(GLint at, GLsizei count, const type* v) {                                           \
        uniform(#function, at, n, v, count);                                                                 \
    }
VECTOR(glUniform1fv, GLfloat, 1)
VECTOR(glUniform2fv, GLfloat, 2)
VECTOR(glUniform3fv, GLfloat, 3)
VECTOR(glUniform4fv, GLfloat, 4)
VECTOR(glUniform1iv, GLint, 1)
VECTOR(glUniform2iv, GLint, 2)
VECTOR(glUniform3iv, GLint, 3)
VECTOR(glUniform4iv, GLint, 4)
#define MATRIX(function, n)                                                                                  \
    DRIVER void function(GLint at, GLsizei count, GLboolean transpose, const GLfloat* v) {                   \
        if (transpose) fault(#function ": transposed");                                                      \
        uniform(#function, at, n, v, count);                                                                 \
    }
MATRIX(glUniformMatrix2fv, 4)
MATRIX(glUniformMatrix3fv, 9)
MATRIX(glUniformMatrix4fv, 16)

// ---- Buffers, attributes, drawing -----------------------------------------------------------------

DRIVER void glGenBuffers(GLsizei n, GLuint* names) {
    CALL("glGenBuffers %d", n);
    for (GLsizei i = 0; i < n; ++i)
        gl().buffers[names[i] = ++gl().last_buffer];
}

DRIVER void glDeleteBuffers(GLsizei n, const GLuint* names) {
    CALL("glDeleteBuffers %d", n);
    for (GLsizei i = 0; i < n; ++i)
        if (!gl().buffers.erase(names[i])) fault("glDeleteBuffers: no buffer %u", names[i]);
}

DRIVER GLboolean glIsBuffer(GLuint name) {
    CALL("glIsBuffer %u", name);
    return gl().buffers.contains(name);
}

DRIVER void glBindBuffer(GLenum target, GLuint name) {
    CALL("glBindBuffer %s %u", name_of(target), name);
    if (name && !gl().buffers.contains(name)) fault("glBindBuffer: no buffer %u", name);
    (target == GL_ARRAY_BUFFER ? gl().array_buffer : gl().element_buffer) = name;
}

DRIVER void glBufferData(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
    CALL("glBufferData %s %ld %s", name_of(target), static_cast<long>(size), name_of(usage));
    const auto* bytes = static_cast<const uint8_t*>(data);
    gl().buffers.at(target == GL_ARRAY_BUFFER ? gl().array_buffer : gl().element_buffer)
        .assign(bytes, bytes + size);
}

DRIVER void glEnableVertexAttribArray(GLuint index) {
    record(channel::lookup, "glEnableVertexAttribArray %u", index);
    gl().attributes.at(index).enabled = true;
}

DRIVER void glVertexAttribPointer(GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride,
                                  const void* pointer) {
    const auto* place = static_cast<const char*>(pointer);
    const std::string at = gl().array_buffer ? std::to_string(reinterpret_cast<size_t>(place)) : "client";
    CALL("glVertexAttribPointer %u %d %s %d %d %s", index, size, name_of(type), normalized, stride,
         at.c_str());
    gl_attribute& a = gl().attributes.at(index);
    a = {a.enabled, gl().array_buffer, size, stride, place};
}

DRIVER void glDrawElements(GLenum mode, GLsizei count, GLenum type, const void* indices) {
    const auto* place = static_cast<const char*>(indices);
    const std::string at = gl().element_buffer ? std::to_string(reinterpret_cast<size_t>(place)) : "client";
    CALL("glDrawElements %s %d %s %s", name_of(mode), count, name_of(type), at.c_str());
    const size_t size = static_cast<size_t>(count) * 4;
    gl_draw draw = begin_draw(
        true, gl().element_buffer ? static_cast<GLint>(reinterpret_cast<size_t>(place) / 4) : 0, count);
    const uint8_t* bytes = count > 0 ? bytes_of(gl().element_buffer, place, 0, size) : nullptr;
    for (size_t i = 0; bytes && i < size; i += 4)
        fetch_corner(draw, get<uint32_t>(bytes, i));
    gl().draws.push_back(std::move(draw));
}

DRIVER void glDrawArrays(GLenum mode, GLint first, GLsizei count) {
    CALL("glDrawArrays %s %d %d", name_of(mode), first, count);
    gl_draw draw = begin_draw(false, first, count);
    for (GLint i = 0; i < count; ++i)
        fetch_corner(draw, static_cast<uint32_t>(first + i));
    gl().draws.push_back(std::move(draw));
}

// ---- Textures -------------------------------------------------------------------------------------

DRIVER void glActiveTexture(GLenum unit) {
    CALL("glActiveTexture %s", name_of(unit));
}

DRIVER void glGenTextures(GLsizei n, GLuint* names) {
    CALL("glGenTextures %d", n);
    for (GLsizei i = 0; i < n; ++i)
        gl().textures[names[i] = ++gl().last_texture];
}

DRIVER void glBindTexture(GLenum target, GLuint name) {
    CALL("glBindTexture %s %u", name_of(target), name);
    if (name && !gl().textures.contains(name)) fault("glBindTexture: no texture %u", name);
    gl().texture = name;
}

DRIVER void glTexImage2D(GLenum target, GLint level, GLint internal, GLsizei width, GLsizei height,
                         GLint border, GLenum format, GLenum type, const void* pixels) {
    CALL("glTexImage2D %s %d %s %dx%d %d %s %s", name_of(target), level,
         name_of(static_cast<GLenum>(internal)), width, height, border, name_of(format), name_of(type));
    // Rows begin at multiples of four bytes, the default unpack alignment.
    const size_t row = (static_cast<size_t>(width) * (type == GL_UNSIGNED_BYTE ? 4 : 2) + 3) / 4 * 4;
    const auto* bytes = static_cast<const uint8_t*>(pixels);
    gl_texture& texture = gl().textures.at(gl().texture);
    texture = {
        width, height, format, type, {bytes, bytes + row * static_cast<size_t>(height)},
            texture.parameters
    };
}

DRIVER void glTexParameteri(GLenum target, GLenum what, GLint value) {
    CALL("glTexParameteri %s %s %s", name_of(target), name_of(what), name_of(static_cast<GLenum>(value)));
    gl().textures[gl().texture].parameters[what] = static_cast<float>(value);
}

DRIVER void glTexParameterf(GLenum target, GLenum what, GLfloat value) {
    CALL("glTexParameterf %s %s %s", name_of(target), name_of(what),
         number(static_cast<double>(value)).c_str());
    gl().textures[gl().texture].parameters[what] = value;
}

DRIVER void glDeleteTextures(GLsizei n, const GLuint* names) {
    CALL("glDeleteTextures %d %u", n, names[0]);
    for (GLsizei i = 0; i < n; ++i)
        if (!gl().textures.erase(names[i])) fault("glDeleteTextures: no texture %u", names[i]);
}

// ---- State ----------------------------------------------------------------------------------------

DRIVER GLenum glGetError(void) {
    CALL("glGetError");
    return std::exchange(gl().error, GLenum{0});
}

DRIVER const GLubyte* glGetString(GLenum name) {
    CALL("glGetString %s", name_of(name));
    return reinterpret_cast<const GLubyte*>(name == GL_VERSION ? gl().version : gl().extensions);
}

DRIVER void glGetIntegerv(GLenum what, GLint* value) {
    CALL("glGetIntegerv %s", name_of(what));
    if (what == GL_VIEWPORT)
        std::copy(gl().viewport.begin(), gl().viewport.end(), value);
    else if (what == GL_FRONT_FACE)
        *value = static_cast<GLint>(gl().front_face);
    else
        fault("glGetIntegerv 0x%x", what);
}

DRIVER void glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
    CALL("glViewport %d %d %d %d", x, y, width, height);
    gl().viewport = {x, y, width, height};
}

DRIVER void glFrontFace(GLenum mode) {
    CALL("glFrontFace %s", name_of(mode));
    gl().front_face = mode;
}

DRIVER void glEnable(GLenum what) {
    CALL("glEnable %s", name_of(what));
    gl().enabled.insert(what);
}

DRIVER void glDisable(GLenum what) {
    CALL("glDisable %s", name_of(what));
    gl().enabled.erase(what);
}

DRIVER void glDepthMask(GLboolean on) {
    CALL("glDepthMask %d", on);
    gl().depth_mask = on;
}

DRIVER void glDepthFunc(GLenum function) {
    CALL("glDepthFunc %s", name_of(function));
}
DRIVER void glClear(GLbitfield what) {
    CALL("glClear %s", name_of(what));
}

DRIVER void glBlendFuncSeparate(GLenum source, GLenum target, GLenum source_alpha, GLenum target_alpha) {
    CALL("glBlendFuncSeparate %s %s %s %s", name_of(source), name_of(target), name_of(source_alpha),
         name_of(target_alpha));
}
