// A libGLESv2 that accepts everything and draws nothing: what is timed in front of it is our own work.
// Every shader compiles, every program has the uniforms of the built-in ones, and names count upwards.

#include <GLES2/gl2.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

GLuint last_name = 0;

std::vector<std::string> make_uniforms() {
    std::vector<std::string> names{"proj_view",
                                   "model_local",
                                   "normal_model_local",
                                   "camera_pos",
                                   "ka",
                                   "kd",
                                   "ks",
                                   "ke",
                                   "spec_exp",
                                   "alpha",
                                   "lightness",
                                   "ambient_factor",
                                   "nlights",
                                   "diffuseSampler"};
    for (int i = 0; i < 8; ++i) {
        for (const char* member : {"position", "diffuse_color", "specular_color", "intensity"}) {
            names.push_back("light_params[" + std::to_string(i) + "]." + member);
        }
    }
    return names;
}

const std::vector<std::string>& uniforms() {
    static const std::vector<std::string> names = make_uniforms();
    return names;
}

void make_names(GLsizei n, GLuint* names) {
    for (GLsizei i = 0; i < n; ++i) {
        names[i] = ++last_name;
    }
}

} // namespace

#define EXPORT extern "C" __attribute__((visibility("default")))
#define NOTHING(name, ...)                                                                                   \
    EXPORT void name(__VA_ARGS__) {}

NOTHING(glActiveTexture, GLenum)
NOTHING(glAttachShader, GLuint, GLuint)
NOTHING(glBindAttribLocation, GLuint, GLuint, const GLchar*)
NOTHING(glBindBuffer, GLenum, GLuint)
NOTHING(glBindTexture, GLenum, GLuint)
NOTHING(glBlendFuncSeparate, GLenum, GLenum, GLenum, GLenum)
NOTHING(glBufferData, GLenum, GLsizeiptr, const void*, GLenum)
NOTHING(glClear, GLbitfield)
NOTHING(glCompileShader, GLuint)
NOTHING(glDeleteBuffers, GLsizei, const GLuint*)
NOTHING(glDeleteProgram, GLuint)
NOTHING(glDeleteShader, GLuint)
NOTHING(glDeleteTextures, GLsizei, const GLuint*)
NOTHING(glDepthFunc, GLenum)
NOTHING(glDepthMask, GLboolean)
NOTHING(glDisable, GLenum)
NOTHING(glDisableVertexAttribArray, GLuint)
NOTHING(glDrawArrays, GLenum, GLint, GLsizei)
NOTHING(glDrawElements, GLenum, GLsizei, GLenum, const void*)
NOTHING(glEnable, GLenum)
NOTHING(glEnableVertexAttribArray, GLuint)
NOTHING(glFrontFace, GLenum)
NOTHING(glGetProgramInfoLog, GLuint, GLsizei, GLsizei*, GLchar*)
NOTHING(glGetShaderInfoLog, GLuint, GLsizei, GLsizei*, GLchar*)
NOTHING(glLinkProgram, GLuint)
NOTHING(glPixelStorei, GLenum, GLint)
NOTHING(glShaderSource, GLuint, GLsizei, const GLchar* const*, const GLint*)
NOTHING(glTexImage2D, GLenum, GLint, GLint, GLsizei, GLsizei, GLint, GLenum, GLenum, const void*)
NOTHING(glTexParameterf, GLenum, GLenum, GLfloat)
NOTHING(glTexParameteri, GLenum, GLenum, GLint)
NOTHING(glUniform1fv, GLint, GLsizei, const GLfloat*)
NOTHING(glUniform2fv, GLint, GLsizei, const GLfloat*)
NOTHING(glUniform3fv, GLint, GLsizei, const GLfloat*)
NOTHING(glUniform4fv, GLint, GLsizei, const GLfloat*)
NOTHING(glUniform1iv, GLint, GLsizei, const GLint*)
NOTHING(glUniform2iv, GLint, GLsizei, const GLint*)
NOTHING(glUniform3iv, GLint, GLsizei, const GLint*)
NOTHING(glUniform4iv, GLint, GLsizei, const GLint*)
NOTHING(glUniformMatrix2fv, GLint, GLsizei, GLboolean, const GLfloat*)
NOTHING(glUniformMatrix3fv, GLint, GLsizei, GLboolean, const GLfloat*)
NOTHING(glUniformMatrix4fv, GLint, GLsizei, GLboolean, const GLfloat*)
NOTHING(glUseProgram, GLuint)
NOTHING(glValidateProgram, GLuint)
NOTHING(glVertexAttribPointer, GLuint, GLint, GLenum, GLboolean, GLsizei, const void*)
NOTHING(glViewport, GLint, GLint, GLsizei, GLsizei)

EXPORT GLuint glCreateProgram() {
    return ++last_name;
}
EXPORT GLuint glCreateShader(GLenum) {
    return ++last_name;
}
EXPORT void glGenBuffers(GLsizei n, GLuint* names) {
    make_names(n, names);
}
EXPORT void glGenTextures(GLsizei n, GLuint* names) {
    make_names(n, names);
}
EXPORT GLenum glGetError() {
    return GL_NO_ERROR;
}
EXPORT const GLubyte* glGetString(GLenum) {
    return reinterpret_cast<const GLubyte*>("OpenGL ES 2.0 that does nothing");
}
EXPORT GLboolean glIsBuffer(GLuint) {
    return GL_TRUE;
}
EXPORT GLboolean glIsProgram(GLuint) {
    return GL_TRUE;
}
EXPORT GLboolean glIsShader(GLuint) {
    return GL_TRUE;
}
EXPORT void glGetIntegerv(GLenum what, GLint* values) {
    const std::array<GLint, 4> viewport{0, 0, 640, 480};
    if (what == GL_VIEWPORT) memcpy(values, viewport.data(), sizeof viewport);
    if (what == GL_FRONT_FACE) *values = GL_CCW;
}
EXPORT void glGetShaderiv(GLuint, GLenum what, GLint* value) {
    *value = what == GL_COMPILE_STATUS;
}
EXPORT void glGetProgramiv(GLuint, GLenum what, GLint* value) {
    *value = what == GL_LINK_STATUS || what == GL_VALIDATE_STATUS;
    if (what == GL_ACTIVE_UNIFORMS) *value = static_cast<GLint>(uniforms().size());
    if (what == GL_ACTIVE_UNIFORM_MAX_LENGTH) *value = 64;
}
EXPORT void glGetActiveUniform(GLuint, GLuint index, GLsizei size, GLsizei*, GLint* elements, GLenum* type,
                               GLchar* name) {
    *elements = 1;
    *type = GL_FLOAT;
    snprintf(name, static_cast<size_t>(size), "%s", uniforms()[index].c_str());
}
EXPORT GLint glGetUniformLocation(GLuint, const GLchar* name) {
    for (size_t i = 0; i < uniforms().size(); ++i) {
        if (uniforms()[i] == name) return static_cast<GLint>(i);
    }
    return -1;
}
