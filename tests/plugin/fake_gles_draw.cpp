// Buffers, drawing, textures and fixed state.
#include "plugin/fake_gles_calls.h"
#include "plugin/fake_kora.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

const uint8_t* bytes_of(GLuint buffer, const char* pointer, size_t offset, size_t size) {
    if (!buffer && pointer) return reinterpret_cast<const uint8_t*>(pointer) + offset;
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
    const auto program = s.programs.find(s.program);
    if (program == s.programs.end()) {
        fault("a draw call without a program");
        return {};
    }
    return {s.program, s.texture,       elements,     first,
            count,     !s.array_buffer, s.attributes, program->second.uniforms,
            {}};
}

} // namespace

#define GENERATE(function, objects, last)                                                                    \
    DRIVER void function(GLsizei n, GLuint* names) {                                                         \
        CALL(#function " %d", n);                                                                            \
        for (GLsizei i = 0; i < n; ++i)                                                                      \
            gl().objects[names[i] = ++gl().last];                                                            \
    }
GENERATE(glGenBuffers, buffers, last_buffer)
GENERATE(glGenTextures, textures, last_texture)

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

#define ENABLE(function, on)                                                                                 \
    DRIVER void function(GLuint index) {                                                                     \
        record(channel::lookup, #function " %u", index);                                                     \
        gl().attributes.at(index).enabled = on;                                                              \
    }
ENABLE(glEnableVertexAttribArray, true)
ENABLE(glDisableVertexAttribArray, false)

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
    gl().textures.at(gl().texture).assign(bytes, bytes + row * static_cast<size_t>(height));
}

DRIVER void glTexParameteri(GLenum target, GLenum what, GLint value) {
    CALL("glTexParameteri %s %s %s", name_of(target), name_of(what), name_of(static_cast<GLenum>(value)));
}

DRIVER void glTexParameterf(GLenum target, GLenum what, GLfloat value) {
    CALL("glTexParameterf %s %s %s", name_of(target), name_of(what),
         number(static_cast<double>(value)).c_str());
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

DRIVER void glPixelStorei(GLenum what, GLint value) {
    CALL("glPixelStorei 0x%x %d", what, value);
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

#define SETTING(function)                                                                                    \
    DRIVER void function(GLenum value) {                                                                     \
        CALL(#function " %s", name_of(value));                                                               \
    }
SETTING(glActiveTexture)
SETTING(glEnable)
SETTING(glDisable)
SETTING(glDepthFunc)
SETTING(glClear)

DRIVER void glDepthMask(GLboolean on) {
    CALL("glDepthMask %d", on);
}

DRIVER void glBlendFuncSeparate(GLenum source, GLenum target, GLenum source_alpha, GLenum target_alpha) {
    CALL("glBlendFuncSeparate %s %s %s %s", name_of(source), name_of(target), name_of(source_alpha),
         name_of(target_alpha));
}
