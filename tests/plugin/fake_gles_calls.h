/* What the files of the recording libGLESv2 share. */
#ifndef TESTS_PLUGIN_FAKE_GLES_CALLS_H
#define TESTS_PLUGIN_FAKE_GLES_CALLS_H

#include "plugin/fake_gles.h"

#define DRIVER extern "C"
#define CALL(...) record(channel::gl, __VA_ARGS__)

/* The constant without its prefix, "?" for those that the plug-in has no use for. */
const char* name_of(GLenum value);

/* The uniforms that a GLSL ES 1.00 shader reads somewhere besides their declaration. Members of arrays of
 * structures are named "light_params[0].position"; the size of such an array is a number, or a constant like
 * "const int N = 8;". */
const std::vector<gl_uniform>& glsl_uniforms(const std::string& source);

#endif
