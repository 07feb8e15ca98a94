// Noticing that the host has replaced its GL context. A lost context takes its objects along, and the next
// one gives the same names to other objects: a name from the old context must not be used in the new one.
#ifndef SHADER_CONTEXT_H
#define SHADER_CONTEXT_H

#include "model3d/shader.h"

// Number of the current context: how many lost ones were noticed before it.
extern uint32_t gl_context;

// Number of loaded models in the process. While there are any, clearing the caches leaves one program in GL:
// as long as that exists, so does the context that the models were uploaded into.
extern int32_t gl_models;

// Checks that the oldest program still exists. When it does not, or its name belongs to another program, the
// context was replaced: gl_context is incremented, and the caches are emptied without a call of GL, whose
// objects went with the context. Costs three GL queries; none while there is no program.
void gl_context_check();

// The same before an object is made for the caches, which must not hold objects of two contexts. As long as
// any cached object exists, the context counts as the same: a single one may have been deleted by the host,
// which the look-up in the cache finds out.
void gl_context_check_before_making();

// The same after an object was made: GL does not give away a name that is in use, so a name that the caches
// know comes from a new context. The shaders of a cached program are in use as well.
void gl_context_check_new_shader(uint32_t shader);
void gl_context_check_new_program(uint32_t program);

// Repairs a record of the "shader" pool: links its program again when that was deleted with the caches or
// lost with its context, and lists its uniforms again when there was not enough memory for all. False, after
// log lines, when that fails. A record that another library made is left as it is.
bool program_renew(app_record* app, shader_program* record, const shader_desc* desc);

#endif
