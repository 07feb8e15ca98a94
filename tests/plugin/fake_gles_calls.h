/* What the files of the recording libGLESv2 share. */
#ifndef TESTS_PLUGIN_FAKE_GLES_CALLS_H
#define TESTS_PLUGIN_FAKE_GLES_CALLS_H

#include "plugin/fake_gles.h"

#define DRIVER extern "C"
#define CALL(...) record(channel::gl, __VA_ARGS__)

/* The constant without its prefix, "?" for those that the plug-in has no use for. */
const char* name_of(GLenum value);

#endif
