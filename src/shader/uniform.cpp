#include "shader/uniform.h"

#include "base/heap.h"
#include "shader/cache.h"
#include "shader/uniform_set.h"

#include <GLES2/gl2.h>

own_uniform* no_uniforms[builtin_uniform_count];

namespace {

shader_uniform* find(const shader_program* program, const char* name) {
    return static_cast<shader_uniform*>(kor_string_map_get(program->uniforms, name));
}

bool is_known(int type) {
    return type == UNIFORM_VALUE_FLOAT || type == UNIFORM_VALUE_INT || type == UNIFORM_VALUE_MATRIX;
}

// Bytes of a value; 0 for types that ES 2.0 does not have.
size_t size_of(GLenum type) {
    switch (type) {
    case GL_FLOAT:
    case GL_INT:
    case GL_BOOL:
    case GL_SAMPLER_2D:
    case GL_SAMPLER_CUBE:
        return 4;
    case GL_FLOAT_VEC2:
    case GL_INT_VEC2:
    case GL_BOOL_VEC2:
        return 8;
    case GL_FLOAT_VEC3:
    case GL_INT_VEC3:
    case GL_BOOL_VEC3:
        return 12;
    case GL_FLOAT_VEC4:
    case GL_INT_VEC4:
    case GL_BOOL_VEC4:
    case GL_FLOAT_MAT2:
        return 16;
    case GL_FLOAT_MAT3:
        return 36;
    case GL_FLOAT_MAT4:
        return 64;
    default:
        return 0;
    }
}

// Whether this library made the uniforms of the record, which is the pool's own or a copy of one.
bool are_own(const shader_program* record) {
    const program_record* own = program_records;
    while (own && own->uniforms != record->uniforms) {
        own = own->next;
    }
    return own;
}

// Sets a uniform whose record another library made, and which therefore does not say how large the kept value
// is. It is taken to have the size of the uniform's type: a value of that size is compared with it and kept
// in its place, any other is sent and not kept.
int set_foreign(shader_uniform* uniform, shader_program* program, const char* name, int type, int count,
                const void* value) {
    const size_t size = uniform_value_size(type, count);
    const bool fits = size != 0 && size == size_of(uniform->type);
    own_uniform stand_in = {*uniform, static_cast<uint32_t>(size)};
    if (!fits) stand_in.value = nullptr;
    if (!stand_in.value) stand_in.value_size = 0;
    const int result = uniform_set_any(&stand_in, program, name, type, count, value);
    if (fits) {
        uniform->value = stand_in.value;
    } else {
        free(stand_in.value);
    }
    return result;
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
    for (GLint i = 0; i < count; ++i) {
        heap_ptr<own_uniform> uniform{heap_zeroed<own_uniform>()};
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
    if (!uniform) {
        kora_app_log(nullptr, 1, "could not find uniform %s in shader %s", name, program->name);
        return 0;
    }
    if (!is_known(type)) {
        kora_app_log(nullptr, 1, "unknown uniform value type %d sent for uniform %s in shader %s", type, name,
                     program->name);
        return 0;
    }
    if (!are_own(program)) return set_foreign(uniform, program, name, type, count, value);
    return uniform_set_any(static_cast<own_uniform*>(uniform), program, name, type, count, value);
}

void find_builtin_uniforms(const shader_program* record, own_uniform* found[builtin_uniform_count]) {
    for (int i = 0; i < builtin_uniform_count; ++i) {
        found[i] = static_cast<own_uniform*>(find(record, builtin_uniforms[i].name));
    }
}

int uniform_set_any(own_uniform* uniform, shader_program* program, const char* name, int type, int count,
                    const void* value) {
    return uniform_set_inline(uniform, program, name, type, count, value);
}

void uniform_store_anew(own_uniform* uniform, const void* value, size_t size) {
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
