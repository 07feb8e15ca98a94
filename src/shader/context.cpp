#include "shader/context.h"

#include "shader/cache.h"

#include <GLES2/gl2.h>

uint32_t gl_context = 0;
int32_t gl_models = 0;

namespace {

// The program that was left in GL when the caches were cleared; its name is 0 when there is none. Older than
// all programs in the cache.
program_cache_entry witness;

// What a program's name stands for in the current context: nothing, that program, or another one.
enum class finding { nothing, same, other };

finding look_for(const program_cache_entry& entry) {
    if (!glIsProgram(entry.program)) return finding::nothing;
    if (entry.uniforms < 0) return finding::same; // its uniforms were never listed: nothing to compare
    GLint uniforms = 0;
    GLint longest_name = 0;
    glGetProgramiv(entry.program, GL_ACTIVE_UNIFORMS, &uniforms);
    glGetProgramiv(entry.program, GL_ACTIVE_UNIFORM_MAX_LENGTH, &longest_name);
    const bool same = uniforms == entry.uniforms && longest_name == entry.longest_name;
    return same ? finding::same : finding::other;
}

void delete_witness() {
    if (witness.program && look_for(witness) == finding::same) glDeleteProgram(witness.program);
    witness = {};
}

void lose_context() {
    ++gl_context;
    witness = {};
    caches_clear(false);
}

// Whether the context of the caches is gone: GL has none of the objects that they and the witness name, or
// one of the names stands for another program. Stops at the first program that exists, unless `all` are to be
// checked.
bool is_lost(bool all) {
    if (witness.program && look_for(witness) != finding::same) return true;
    bool found = witness.program != 0 || (!program_cache && !shader_cache);
    for (const program_cache_entry* entry = program_cache; entry && (all || !found); entry = entry->next) {
        const finding what = look_for(*entry);
        if (what == finding::other) return true;
        if (what == finding::same) found = true;
    }
    for (const shader_cache_entry* entry = shader_cache; entry && !found; entry = entry->next) {
        found = glIsShader(entry->shader);
    }
    return !found;
}

} // namespace

void gl_context_check() {
    const program_cache_entry* const oldest = witness.program ? &witness : program_cache;
    if (!oldest) return;
    if (look_for(*oldest) != finding::same) {
        lose_context();
    } else if (oldest == &witness && program_cache) {
        delete_witness();
    }
}

void gl_context_check_before_making() {
    if (is_lost(false)) lose_context();
}

void gl_context_check_new_shader(uint32_t shader) {
    bool taken = false;
    for (const auto* entry = program_cache; entry && !taken; entry = entry->next) {
        taken = entry->vertex == shader || entry->fragment == shader;
    }
    for (const auto* entry = shader_cache; entry && !taken; entry = entry->next) {
        taken = entry->shader == shader;
    }
    if (taken) lose_context();
}

void gl_context_check_new_program(uint32_t program) {
    bool taken = program == witness.program;
    for (const auto* entry = program_cache; entry && !taken; entry = entry->next) {
        taken = entry->program == program;
    }
    if (taken) lose_context();
}

void lum_gl_clearprogramcaches(void) {
    if (is_lost(true)) {
        lose_context();
        return;
    }
    if (gl_models == 0) {
        delete_witness();
    } else if (program_cache && !witness.program) {
        witness = *program_cache;
        program_cache->program = 0; // keeps caches_clear from deleting it
    }
    caches_clear(true);
}
