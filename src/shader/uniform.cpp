#include "shader/uniform.h"

#include "base/heap.h"
#include "shader/cache.h"

#include <GLES2/gl2.h>

namespace {

const shader_uniform* find(const shader_program* program, const char* name) {
    return static_cast<shader_uniform*>(kor_string_map_get(program->uniforms, name));
}

// Bytes of a value; -1 for an unknown type.
int64_t value_size(int type, int count) {
    const int64_t elements = count < 0 ? 0 : count;
    switch (type) {
    case UNIFORM_VALUE_FLOAT:
    case UNIFORM_VALUE_INT:
        return elements * 4;
    case UNIFORM_VALUE_MATRIX:
        return elements * elements * 4;
    default:
        return -1;
    }
}

void send_floats(const char* name, GLint location, int count, const GLfloat* v) {
    double d[4] = {};
    for (int i = 0; i < count && i < 4; i++) {
        d[i] = static_cast<double>(v[i]);
    }
    switch (count) {
    case 1:
        kora_app_log(nullptr, 9, "%s [index %d]: %.3f", name, location, d[0]);
        glUniform1fv(location, 1, v);
        break;
    case 2:
        kora_app_log(nullptr, 9, "%s [index %d]: <%.3f, %.3f>", name, location, d[0], d[1]);
        glUniform2fv(location, 1, v);
        break;
    case 3:
        kora_app_log(nullptr, 9, "%s [index %d]: <%.3f, %.3f, %.3f>", name, location, d[0], d[1], d[2]);
        glUniform3fv(location, 1, v);
        break;
    case 4:
        kora_app_log(nullptr, 9, "%s [index %d]: <%.3f, %.3f, %.3f, %.3f>", name, location, d[0], d[1], d[2],
                     d[3]);
        glUniform4fv(location, 1, v);
        break;
    default:
        break;
    }
}

void send_ints(const char* name, GLint location, int count, const GLint* v) {
    switch (count) {
    case 1:
        kora_app_log(nullptr, 9, "%s [index %d]: %d", name, location, v[0]);
        glUniform1iv(location, 1, v);
        break;
    case 2:
        kora_app_log(nullptr, 9, "%s [index %d]: <%d, %d>", name, location, v[0], v[1]);
        glUniform2iv(location, 1, v);
        break;
    case 3:
        kora_app_log(nullptr, 9, "%s [index %d]: <%d, %d, %d>", name, location, v[0], v[1], v[2]);
        glUniform3iv(location, 1, v);
        break;
    case 4:
        kora_app_log(nullptr, 9, "%s [index %d]: <%d, %d, %d, %d>", name, location, v[0], v[1], v[2], v[3]);
        glUniform4iv(location, 1, v);
        break;
    default:
        break;
    }
}

void send_matrix(GLint location, int order, const GLfloat* m) {
    switch (order) {
    case 2:
        glUniformMatrix2fv(location, 1, GL_FALSE, m);
        break;
    case 3:
        glUniformMatrix3fv(location, 1, GL_FALSE, m);
        break;
    case 4:
        glUniformMatrix4fv(location, 1, GL_FALSE, m);
        break;
    default:
        break;
    }
}

void send(const char* name, GLint location, int type, int count, const void* value) {
    switch (type) {
    case UNIFORM_VALUE_FLOAT:
        send_floats(name, location, count, static_cast<const GLfloat*>(value));
        break;
    case UNIFORM_VALUE_INT:
        send_ints(name, location, count, static_cast<const GLint*>(value));
        break;
    default:
        send_matrix(location, count, static_cast<const GLfloat*>(value));
        break;
    }
}

// Remembers what was sent. Without memory for it the next set is sent again.
void store(shader_uniform* uniform, const void* value, size_t size) {
    if (!uniform->value || uniform->value_size != size) {
        free(uniform->value);
        uniform->value = malloc(size ? size : 1);
        uniform->value_size = static_cast<uint32_t>(size);
    }
    if (uniform->value) memcpy(uniform->value, value, size);
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
    auto* uniform = const_cast<shader_uniform*>(find(program, name));
    if (!uniform) {
        kora_app_log(nullptr, 1, "could not find uniform %s in shader %s", name, program->name);
        return 0;
    }
    const int64_t wide_size = value_size(type, count);
    if (wide_size < 0) {
        kora_app_log(nullptr, 1, "unknown uniform value type %d sent for uniform %s in shader %s", type, name,
                     program->name);
        return 0;
    }
    const auto size = static_cast<size_t>(wide_size);
    if (uniform->value && uniform->value_size == size && memcmp(uniform->value, value, size) == 0) {
        kora_app_log(nullptr, 9, "uniform value equal for uniform %s in shader %s, ignoring", name,
                     program->name);
        return 1;
    }
    kora_app_log(nullptr, 9, "uniform value not equal for uniform %s in shader %s, sending new value", name,
                 program->name);
    send(name, uniform->location, type, count, value);
    store(uniform, value, size);
    return 1;
}

int shader_string_map_cb(const char*, void* uniform, void*) {
    auto* record = static_cast<shader_uniform*>(uniform);
    free(record->value);
    free(record);
    return 0;
}
