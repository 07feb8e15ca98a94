#include "shader/context.h"

#include "shader/cache.h"

#include <GLES2/gl2.h>

uint32_t gl_context = 0;
int32_t gl_models = 0;

namespace {

// What outlived the caches, or a program of 0.
program_cache_entry witness;

// Whether GL has a program of the entry's name.
bool exists(const program_cache_entry& entry) {
    return glIsProgram(entry.program);
}

// Whether that is the entry's, and not one that was given the name again.
bool is_same(const program_cache_entry& entry) {
    if (entry.uniforms < 0) return true; // nobody looked at it
    GLint uniforms = 0;
    GLint longest_name = 0;
    glGetProgramiv(entry.program, GL_ACTIVE_UNIFORMS, &uniforms);
    glGetProgramiv(entry.program, GL_ACTIVE_UNIFORM_MAX_LENGTH, &longest_name);
    return uniforms == entry.uniforms && longest_name == entry.longest_name;
}

void delete_witness() {
    if (witness.program && exists(witness) && is_same(witness)) glDeleteProgram(witness.program);
    witness = {};
}

void lose_context() {
    gl_context++;
    witness = {};
    caches_clear(false);
}

} // namespace

void gl_context_check() {
    const program_cache_entry* const first = program_cache ? program_cache : &witness;
    if (!first->program) return;
    if (!exists(*first) || !is_same(*first)) {
        lose_context();
    } else if (first != &witness && witness.program) {
        delete_witness();
    }
}

void lum_gl_clearprogramcaches(void) {
    for (const program_cache_entry* entry = program_cache; entry; entry = entry->next) {
        if (!exists(*entry) || is_same(*entry)) continue;
        lose_context();
        return;
    }
    if (gl_models == 0) {
        delete_witness();
    } else if (program_cache && !witness.program) {
        witness = *program_cache;
        program_cache->program = 0; // not for deleting
    }
    caches_clear(true);
}
