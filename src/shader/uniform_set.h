// Setting a uniform's value, in line: with type and count known little more than a comparison is left.
#ifndef SHADER_UNIFORM_SET_H
#define SHADER_UNIFORM_SET_H

#include "shader/uniform.h"

#include <GLES2/gl2.h>

#include <cstring>

// Keeps a value in newly allocated memory: the first one, or one that has another size than the one before.
// When there is no memory nothing is kept, and the next value is sent even if it is equal.
void uniform_store_anew(own_uniform* uniform, const void* value, size_t size);

inline size_t uniform_value_size(int type, int count) {
    const auto elements = static_cast<size_t>(count < 0 ? 0 : count);
    return 4 * (type == UNIFORM_VALUE_MATRIX ? elements * elements : elements);
}

#define IN_LINE [[gnu::always_inline]] inline

IN_LINE void uniform_send_floats(const char* name, GLint location, int count, const GLfloat* v) {
    const auto d = [v](int i) { return static_cast<double>(v[i]); };
    switch (count) {
    case 1:
        kora_app_log(nullptr, 9, "%s [index %d]: %.3f", name, location, d(0));
        glUniform1fv(location, 1, v);
        break;
    case 2:
        kora_app_log(nullptr, 9, "%s [index %d]: <%.3f, %.3f>", name, location, d(0), d(1));
        glUniform2fv(location, 1, v);
        break;
    case 3:
        kora_app_log(nullptr, 9, "%s [index %d]: <%.3f, %.3f, %.3f>", name, location, d(0), d(1), d(2));
        glUniform3fv(location, 1, v);
        break;
    case 4:
        kora_app_log(nullptr, 9, "%s [index %d]: <%.3f, %.3f, %.3f, %.3f>", name, location, d(0), d(1), d(2),
                     d(3));
        glUniform4fv(location, 1, v);
        break;
    default:
        break;
    }
}

IN_LINE void uniform_send_ints(const char* name, GLint location, int count, const GLint* v) {
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

IN_LINE void uniform_send_matrix(GLint location, int order, const GLfloat* m) {
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

// Whether `size` bytes, a multiple of 4, are equal. For the small sizes here faster than a call of memcmp.
IN_LINE bool same_words(const void* a, const void* b, size_t size) {
    const auto word = [](const void* from, size_t at, auto bits) {
        memcpy(&bits, static_cast<const char*>(from) + at, sizeof(bits));
        return bits;
    };
    size_t at = 0;
    for (; at + 8 <= size; at += 8) {
        if (word(a, at, uint64_t{}) != word(b, at, uint64_t{})) return false;
    }
    return at == size || word(a, at, uint32_t{}) == word(b, at, uint32_t{});
}

// uniform_set_any in line, for code that runs for every segment of a mesh. With `is_same` the caller knows
// that the value is the one it set last, and the comparison is left out.
IN_LINE int uniform_set_inline(own_uniform* uniform, shader_program* program, const char* name, int type,
                               int count, const void* value, bool is_same = false) {
    if (!uniform) return lum_gl_shader_set_uniform_value(program, name, type, count, value);
    const size_t size = uniform_value_size(type, count);
    const bool fits = uniform->value_size == size && (size != 0 || uniform->value);
    if (fits && (is_same || same_words(uniform->value, value, size))) {
        kora_app_log(nullptr, 9, "uniform value equal for uniform %s in shader %s, ignoring", name,
                     program->name);
        return 1;
    }
    kora_app_log(nullptr, 9, "uniform value not equal for uniform %s in shader %s, sending new value", name,
                 program->name);
    switch (type) {
    case UNIFORM_VALUE_FLOAT:
        uniform_send_floats(name, uniform->location, count, static_cast<const GLfloat*>(value));
        break;
    case UNIFORM_VALUE_INT:
        uniform_send_ints(name, uniform->location, count, static_cast<const GLint*>(value));
        break;
    default:
        uniform_send_matrix(uniform->location, count, static_cast<const GLfloat*>(value));
        break;
    }
    if (fits) {
        memcpy(uniform->value, value, size);
    } else {
        uniform_store_anew(uniform, value, size);
    }
    return 1;
}

#undef IN_LINE

template <builtin_uniform which>
inline void uniform_set_inline(const uniform_table& table, const void* value, bool is_same = false) {
    constexpr builtin_uniform_row row = builtin_uniforms[which];
    uniform_set_inline(table.uniforms[which], table.program, row.name, row.type, row.count, value, is_same);
}

#endif
