#include "shader/uniform.h"

#include "base/heap.h"
#include "shader/cache.h"
#include "shader/uniform_set.h"

#include <GLES2/gl2.h>

namespace {

shader_uniform* find(const shader_program* program, const char* name) {
    return static_cast<shader_uniform*>(kor_string_map_get(program->uniforms, name));
}

bool is_known(int type) {
    return type == UNIFORM_VALUE_FLOAT || type == UNIFORM_VALUE_INT || type == UNIFORM_VALUE_MATRIX;
}

} // namespace

bool enumerate_uniforms(app_record* app, shader_program* record, const char* name) {
    GLint count = 0;
    glGetProgramiv(record->program, GL_ACTIVE_UNIFORMS, &count);
    GLint longest = 0;
    heap_ptr<char> buffer;
    if (count != 0) {
        record->uniforms = kor_string_map_create(count);
        glGetProgramiv(record->program, GL_ACTIVE_UNIFORM_MAX_LENGTH, &longest);
        buffer.reset(static_cast<char*>(calloc(static_cast<size_t>(longest > 0 ? longest : 0) + 1, 1)));
    }
    program_cache_describe(record->program, count, longest);
    kora_app_log(app, 5, "LUMGL: shader=%s", name);
    if (!record->uniforms || !buffer) return count == 0;

    bool complete = true;
    for (GLint i = 0; i < count; i++) {
        heap_ptr<shader_uniform> uniform{heap_zeroed<shader_uniform>()};
        if (!uniform) {
            complete = false;
            continue;
        }
        GLint elements = 0;
        glGetActiveUniform(record->program, static_cast<GLuint>(i), longest, nullptr, &elements,
                           &uniform->type, buffer.get());
        uniform->location = glGetUniformLocation(record->program, buffer.get());
        kora_app_log(app, 5, "LUMGL: Uniform: %s=%d", buffer.get(), uniform->location);
        kor_string_map_set(record->uniforms, buffer.get(), uniform.get());
        // The map cannot say that it had no memory for the key.
        if (kor_string_map_get(record->uniforms, buffer.get()) == uniform.get()) {
            static_cast<void>(uniform.release());
        } else {
            complete = false;
        }
    }
    return complete;
}

int lum_gl_shader_get_uniform(const shader_program* program, const char* name) {
    const shader_uniform* uniform = find(program, name);
    return uniform ? uniform->location : -1;
}

int lum_gl_shader_set_uniform_value(shader_program* program, const char* name, int type, int count,
                                    const void* value) {
    shader_uniform* const uniform = find(program, name);
    if (uniform && !is_known(type)) {
        kora_app_log(nullptr, 1, "unknown uniform value type %d sent for uniform %s in shader %s", type, name,
                     program->name);
        return 0;
    }
    return uniform_set_any(uniform, program, name, type, count, value);
}

void find_builtin_uniforms(const shader_program* record, shader_uniform* found[builtin_uniform_count]) {
    for (int i = 0; i < builtin_uniform_count; i++) {
        found[i] = find(record, builtin_uniforms[i].name);
    }
}

int uniform_set_any(shader_uniform* uniform, const shader_program* program, const char* name, int type,
                    int count, const void* value) {
    return uniform_set_inline(uniform, program, name, type, count, value);
}

void uniform_missing(const shader_program* program, const char* name) {
    kora_app_log(nullptr, 1, "could not find uniform %s in shader %s", name, program->name);
}

void uniform_store_anew(shader_uniform* uniform, const void* value, size_t size) {
    free(uniform->value);
    uniform->value = malloc(size ? size : 1);
    uniform->value_size = uniform->value ? static_cast<uint32_t>(size) : 0;
    if (uniform->value) memcpy(uniform->value, value, size);
}

int shader_string_map_cb(const char*, void* uniform, void*) {
    auto* record = static_cast<shader_uniform*>(uniform);
    free(record->value);
    free(record);
    return 0;
}
