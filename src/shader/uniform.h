// The table of a program's active uniforms.
#ifndef SHADER_UNIFORM_H
#define SHADER_UNIFORM_H

#include "model3d/shader.h"

// Asks GL for every active uniform and fills the record's map, which is null before. `name` is the
// resource's, for the log. False when memory ran out: what found none is missing.
bool enumerate_uniforms(app_record* app, shader_program* record, const char* name);

#endif
