#include "shader/context.h"

#include "shader/cache.h"

#include <GLES2/gl2.h>

uint32_t gl_context = 0;

namespace {

// Whether the program of the entry's name is the entry's, and not one that was given the name again.
bool is_same(const program_cache_entry& entry) {
    if (entry.uniforms < 0) return true; // nobody looked at it
    GLint uniforms = 0;
    GLint longest_name = 0;
    glGetProgramiv(entry.program, GL_ACTIVE_UNIFORMS, &uniforms);
    glGetProgramiv(entry.program, GL_ACTIVE_UNIFORM_MAX_LENGTH, &longest_name);
    return uniforms == entry.uniforms && longest_name == entry.longest_name;
}

} // namespace

void gl_context_check() {
    const program_cache_entry* const first = program_cache;
    if (!first || (glIsProgram(first->program) && is_same(*first))) return;
    gl_context++;
    caches_clear(false);
}

void lum_gl_clearprogramcaches(void) {
    bool lost = false;
    for (const program_cache_entry* entry = program_cache; entry; entry = entry->next) {
        if (glIsProgram(entry->program) && !is_same(*entry)) lost = true;
    }
    if (lost) gl_context++;
    caches_clear(!lost);
}
