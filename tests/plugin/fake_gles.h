/* A recording libGLESv2: keeps objects, buffers and uniform values as a driver would, draws nothing.
 *
 * Every call becomes a line of the gl channel. A draw call fetches its vertices, so that tests see the
 * same corners whichever way the data came. Names count up from 1 for each kind of object; shaders, which
 * share their name space with programs, from 101.
 */
#ifndef TESTS_PLUGIN_FAKE_GLES_H
#define TESTS_PLUGIN_FAKE_GLES_H

#include "plugin/trace.h"

#include <GLES2/gl2.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

struct gl_shader {
    GLenum type;
    std::string source;
    bool compiled = false;
    bool deleted = false; // as soon as no program holds it
};

struct gl_uniform {
    std::string name, type;
    std::vector<float> value; // integers widened
    int sends = 0;
};

struct gl_program {
    std::string name; // what the host's pool was building
    std::vector<GLuint> shaders;
    std::map<std::string, GLuint> attributes;
    std::vector<gl_uniform> uniforms; // the location is the index
    bool linked = false;

    const gl_uniform* find(const std::string& uniform) const;
};

struct gl_attribute {
    bool enabled;
    GLuint buffer;
    GLint size;
    GLsizei stride;
    const char* pointer; // or offset
};

struct gl_draw {
    GLuint program, texture;
    bool elements;
    GLint first; // index, or vertex without elements
    GLsizei count;
    bool client_memory;
    std::array<gl_attribute, 3> attributes;
    std::vector<gl_uniform> uniforms;
    std::vector<std::array<float, 8>> corners; // position, normal, texture coordinate; 0 where disabled
};

struct gl_state {
    // What GL answers.
    const char* version = "OpenGL ES 2.0 recorder";
    const char* extensions = "GL_OES_element_index_uint";
    std::string info_log = "0:1: bad";
    std::string failing;     // "glCreateShader", "glCreateProgram", "compile", "link" or "validate"
    std::string failing_for; // only for this program of the host's pool
    GLenum error = 0;        // next answer of glGetError

    std::map<GLuint, gl_shader> shaders;
    std::map<GLuint, gl_program> programs;
    std::map<GLuint, std::vector<uint8_t>> textures;
    std::map<GLuint, std::vector<uint8_t>> buffers;
    std::vector<gl_draw> draws;

    GLenum front_face = GL_CCW;
    std::array<GLint, 4> viewport{0, 0, 800, 600};
    GLuint program = 0, texture = 0, array_buffer = 0, element_buffer = 0;
    std::array<gl_attribute, 3> attributes{};
    GLuint last_shader = 100, last_program = 0, last_texture = 0, last_buffer = 0;

    size_t live_objects() const {
        return shaders.size() + programs.size() + textures.size() + buffers.size();
    }
    const gl_program& named(const std::string& name) const; // the newest of that name
    // A new context: no objects, names start again.
    void lose_context();
};

gl_state& gl();

#endif
