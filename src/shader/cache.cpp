#include "shader/cache.h"

#include "base/heap.h"
#include "model3d/shader.h"

#include <GLES2/gl2.h>

shader_cache_entry* shader_cache = nullptr;
program_cache_entry* program_cache = nullptr;

namespace {

template <class T> void append(T*& head, T* entry) {
    T** link = &head;
    while (*link) {
        link = &(*link)->next;
    }
    *link = entry;
}

} // namespace

shader_cache_entry* shader_cache_find(const char* path) {
    shader_cache_entry* entry = shader_cache;
    while (entry && strcmp(entry->path, path) != 0) {
        entry = entry->next;
    }
    return entry;
}

program_cache_entry* program_cache_find(uint32_t vertex, uint32_t fragment) {
    program_cache_entry* entry = program_cache;
    while (entry && (entry->vertex != vertex || entry->fragment != fragment)) {
        entry = entry->next;
    }
    return entry;
}

void shader_cache_add(const char* path, uint32_t shader) {
    heap_ptr<char> copy{heap_text(path)};
    auto* entry = heap_zeroed<shader_cache_entry>();
    if (!copy || !entry) {
        free(entry);
        return;
    }
    entry->path = copy.release();
    entry->shader = shader;
    append(shader_cache, entry);
}

void program_cache_add(app_record* app, uint32_t vertex, uint32_t fragment, uint32_t program) {
    auto* entry = heap_zeroed<program_cache_entry>();
    if (!entry) return;
    entry->vertex = vertex;
    entry->fragment = fragment;
    entry->program = program;
    entry->app = program_cache ? nullptr : app;
    append(program_cache, entry);
}

void cache_log(const char* format, const char* text) {
    if (program_cache) kora_app_log(program_cache->app, 5, format, text);
}

void lum_gl_clearprogramcaches(void) {
    if (program_cache) kora_app_log(program_cache->app, 5, "shader library: clearing caches");
    while (shader_cache) {
        shader_cache_entry* const entry = shader_cache;
        shader_cache = entry->next;
        free(entry->path);
        if (glIsShader(entry->shader)) glDeleteShader(entry->shader);
        free(entry);
    }
    while (program_cache) {
        program_cache_entry* const entry = program_cache;
        program_cache = entry->next;
        if (glIsProgram(entry->program)) glDeleteProgram(entry->program);
        free(entry);
    }
}

void lum_gl_free_shader(uint32_t shader) {
    for (const auto* entry = shader_cache; entry; entry = entry->next) {
        if (entry->shader == shader) return;
    }
    if (glIsShader(shader) == GL_TRUE) glDeleteShader(shader);
}
