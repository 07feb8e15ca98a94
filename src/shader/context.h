// Whose names GL objects have. A lost context takes its objects along, and the next one hands out the same
// names again: a name means nothing without its context.
#ifndef SHADER_CONTEXT_H
#define SHADER_CONTEXT_H

#include "model3d/shader.h"

// The number of the current context: how many were seen lost before it.
extern uint32_t gl_context;

// Loaded models of the process. While there are any, clearing the caches leaves one program in GL that tells
// whether the models' context is still there.
extern int32_t gl_models;

// Looks whether the first program made is still there. When it is gone, or another has its name, the context
// was replaced: gl_context counts on, and what the caches held is forgotten, for GL has forgotten it too.
// Three queries; none while no program has been made.
void gl_context_check();

// The same before anything is made for the caches: what is new there must not stand beside what is lost. More
// lenient, for a lookup says what became of a single object: while any of the caches is still there, the
// context is.
void gl_context_check_before_making();

// The same for an object just made: GL gives no name again that one of ours still has. A cached program holds
// its shaders.
void gl_context_check_new_shader(uint32_t shader);
void gl_context_check_new_program(uint32_t program);

// Makes a record of the "shader" pool whole again: one whose program went with the caches or with its
// context, or whose uniforms did not all find memory. False, after log lines, when that cannot be done now.
// A record that was not made here is taken as it is.
bool program_renew(app_record* app, shader_program* record, const shader_desc* desc);

#endif
