#include "gl_state.h"

#include <GLES2/gl2.h>

namespace pictures {
namespace {

enum class kind { flag, whole, real };

struct variable {
    GLenum name;
    kind type;
    size_t count;
    const char* text;
};

#define FLAG(name) GL_##name, kind::flag, 1, #name
#define WHOLE(name, count) GL_##name, kind::whole, count, #name
#define REAL(name, count) GL_##name, kind::real, count, #name

// clang-format off
// In the order of the state tables.
constexpr variable variables[] = {
    {WHOLE(ARRAY_BUFFER_BINDING, 1)}, {WHOLE(ELEMENT_ARRAY_BUFFER_BINDING, 1)}, {WHOLE(VIEWPORT, 4)},
    {REAL(DEPTH_RANGE, 2)}, {REAL(LINE_WIDTH, 1)}, {FLAG(CULL_FACE)}, {WHOLE(CULL_FACE_MODE, 1)},
    {WHOLE(FRONT_FACE, 1)}, {REAL(POLYGON_OFFSET_FACTOR, 1)}, {REAL(POLYGON_OFFSET_UNITS, 1)},
    {FLAG(POLYGON_OFFSET_FILL)}, {FLAG(SAMPLE_ALPHA_TO_COVERAGE)}, {FLAG(SAMPLE_COVERAGE)},
    {REAL(SAMPLE_COVERAGE_VALUE, 1)}, {FLAG(SAMPLE_COVERAGE_INVERT)}, {WHOLE(ACTIVE_TEXTURE, 1)},
    {FLAG(SCISSOR_TEST)}, {WHOLE(SCISSOR_BOX, 4)}, {FLAG(STENCIL_TEST)}, {WHOLE(STENCIL_FUNC, 1)},
    {WHOLE(STENCIL_VALUE_MASK, 1)}, {WHOLE(STENCIL_REF, 1)}, {WHOLE(STENCIL_FAIL, 1)},
    {WHOLE(STENCIL_PASS_DEPTH_FAIL, 1)}, {WHOLE(STENCIL_PASS_DEPTH_PASS, 1)}, {WHOLE(STENCIL_BACK_FUNC, 1)},
    {WHOLE(STENCIL_BACK_VALUE_MASK, 1)}, {WHOLE(STENCIL_BACK_REF, 1)}, {WHOLE(STENCIL_BACK_FAIL, 1)},
    {WHOLE(STENCIL_BACK_PASS_DEPTH_FAIL, 1)}, {WHOLE(STENCIL_BACK_PASS_DEPTH_PASS, 1)}, {FLAG(DEPTH_TEST)},
    {WHOLE(DEPTH_FUNC, 1)}, {FLAG(BLEND)}, {WHOLE(BLEND_SRC_RGB, 1)}, {WHOLE(BLEND_SRC_ALPHA, 1)},
    {WHOLE(BLEND_DST_RGB, 1)}, {WHOLE(BLEND_DST_ALPHA, 1)}, {WHOLE(BLEND_EQUATION_RGB, 1)},
    {WHOLE(BLEND_EQUATION_ALPHA, 1)}, {REAL(BLEND_COLOR, 4)}, {FLAG(DITHER)}, {WHOLE(COLOR_WRITEMASK, 4)},
    {FLAG(DEPTH_WRITEMASK)}, {WHOLE(STENCIL_WRITEMASK, 1)}, {WHOLE(STENCIL_BACK_WRITEMASK, 1)},
    {REAL(COLOR_CLEAR_VALUE, 4)}, {REAL(DEPTH_CLEAR_VALUE, 1)}, {WHOLE(STENCIL_CLEAR_VALUE, 1)},
    {WHOLE(FRAMEBUFFER_BINDING, 1)}, {WHOLE(RENDERBUFFER_BINDING, 1)}, {WHOLE(UNPACK_ALIGNMENT, 1)},
    {WHOLE(PACK_ALIGNMENT, 1)}, {WHOLE(CURRENT_PROGRAM, 1)}, {WHOLE(GENERATE_MIPMAP_HINT, 1)},
};
// clang-format on

struct parameter {
    GLenum name;
    const char* text;
};

constexpr parameter attribute_parameters[] = {
    {GL_VERTEX_ATTRIB_ARRAY_ENABLED, "ENABLED"},       {GL_VERTEX_ATTRIB_ARRAY_SIZE, "SIZE"},
    {GL_VERTEX_ATTRIB_ARRAY_STRIDE, "STRIDE"},         {GL_VERTEX_ATTRIB_ARRAY_TYPE, "TYPE"},
    {GL_VERTEX_ATTRIB_ARRAY_NORMALIZED, "NORMALIZED"}, {GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING, "BUFFER"},
};
constexpr parameter texture_parameters[] = {
    {GL_TEXTURE_MIN_FILTER, "MIN_FILTER"},
    {GL_TEXTURE_MAG_FILTER, "MAG_FILTER"},
    {GL_TEXTURE_WRAP_S, "WRAP_S"},
    {GL_TEXTURE_WRAP_T, "WRAP_T"},
};
constexpr parameter attachment_points[] = {
    {GL_COLOR_ATTACHMENT0, "COLOR_ATTACHMENT0"},
    {GL_DEPTH_ATTACHMENT, "DEPTH_ATTACHMENT"},
    {GL_STENCIL_ATTACHMENT, "STENCIL_ATTACHMENT"},
};

std::vector<double> value_of(const variable& v) {
    GLboolean flags[4];
    GLint wholes[4];
    GLfloat reals[4];
    if (v.type == kind::flag) {
        glGetBooleanv(v.name, flags);
        return {flags, flags + v.count};
    }
    if (v.type == kind::whole) {
        glGetIntegerv(v.name, wholes);
        return {wholes, wholes + v.count};
    }
    glGetFloatv(v.name, reals);
    return {reals, reals + v.count};
}

GLint whole_of(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

std::string of(const char* name, GLint index) {
    return std::string(name) + "[" + std::to_string(index) + "]";
}

} // namespace

gl_state gl_state_read(const std::vector<unsigned>& textures) {
    gl_state state;
    for (const variable& v : variables)
        state[v.text] = value_of(v);

    for (GLint i = 0; i < whole_of(GL_MAX_VERTEX_ATTRIBS); ++i) {
        const auto index = static_cast<GLuint>(i);
        GLint value = 0;
        for (const parameter& p : attribute_parameters) {
            glGetVertexAttribiv(index, p.name, &value);
            state[of(p.text, i)] = {static_cast<double>(value)};
        }
        void* pointer = nullptr;
        glGetVertexAttribPointerv(index, GL_VERTEX_ATTRIB_ARRAY_POINTER, &pointer);
        state[of("POINTER", i)] = {static_cast<double>(reinterpret_cast<uintptr_t>(pointer))};
        GLfloat current[4];
        glGetVertexAttribfv(index, GL_CURRENT_VERTEX_ATTRIB, current);
        state[of("CURRENT", i)] = {current, current + 4};
    }

    const auto active = static_cast<GLenum>(whole_of(GL_ACTIVE_TEXTURE));
    for (GLint i = 0; i < whole_of(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS); ++i) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(i));
        state[of("BINDING_2D", i)] = {static_cast<double>(whole_of(GL_TEXTURE_BINDING_2D))};
        state[of("BINDING_CUBE_MAP", i)] = {static_cast<double>(whole_of(GL_TEXTURE_BINDING_CUBE_MAP))};
    }
    const auto bound = static_cast<GLuint>(whole_of(GL_TEXTURE_BINDING_2D));
    for (const GLuint texture : textures) {
        glBindTexture(GL_TEXTURE_2D, texture);
        for (const parameter& p : texture_parameters) {
            GLint value = 0;
            glGetTexParameteriv(GL_TEXTURE_2D, p.name, &value);
            state[p.text + ("(" + std::to_string(texture) + ")")] = {static_cast<double>(value)};
        }
    }
    glBindTexture(GL_TEXTURE_2D, bound);
    glActiveTexture(active);

    for (const parameter& point : attachment_points) {
        GLint type = GL_NONE, name = 0;
        glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, point.name,
                                              GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, &type);
        if (type != GL_NONE)
            glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, point.name,
                                                  GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &name);
        state[point.text] = {static_cast<double>(type), static_cast<double>(name)};
    }
    return state;
}

} // namespace pictures
