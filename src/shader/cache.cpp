#include "shader/cache.h"

#include "base/heap.h"
#include "model3d/shader.h"

#include <GLES2/gl2.h>

shader_cache_entry* shader_cache = nullptr;
program_cache_entry* program_cache = nullptr;
program_record* program_records = nullptr;

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

bool program_cache_add(app_record* app, uint32_t vertex, uint32_t fragment, uint32_t program) {
    auto* entry = heap_zeroed<program_cache_entry>();
    if (!entry) return false;
    entry->vertex = vertex;
    entry->fragment = fragment;
    entry->program = program;
    entry->app = program_cache ? nullptr : app;
    entry->uniforms = entry->longest_name = -1;
    append(program_cache, entry);
    return true;
}

void program_cache_describe(uint32_t program, int32_t uniforms, int32_t longest_name) {
    for (program_cache_entry* entry = program_cache; entry; entry = entry->next) {
        if (entry->program != program) continue;
        entry->uniforms = uniforms;
        entry->longest_name = longest_name;
    }
}

program_record* program_record_find(const shader_program* record) {
    program_record* own = program_records;
    while (own && own != record) {
        own = own->next;
    }
    return own;
}

void cache_log(const char* format, const char* text) {
    if (program_cache) kora_app_log(program_cache->app, 5, format, text);
}

void caches_clear(bool delete_objects) {
    if (program_cache) kora_app_log(program_cache->app, 5, "shader library: clearing caches");
    while (shader_cache) {
        shader_cache_entry* const entry = shader_cache;
        shader_cache = entry->next;
        free(entry->path);
        if (delete_objects && glIsShader(entry->shader)) glDeleteShader(entry->shader);
        free(entry);
    }
    while (program_cache) {
        program_cache_entry* const entry = program_cache;
        program_cache = entry->next;
        if (delete_objects && glIsProgram(entry->program)) glDeleteProgram(entry->program);
        free(entry);
    }
    for (program_record* record = program_records; record; record = record->next) {
        record->state = record_state::gone;
    }
}

void lum_gl_free_shader(uint32_t shader) {
    for (const auto* entry = shader_cache; entry; entry = entry->next) {
        if (entry->shader == shader) return;
    }
    if (glIsShader(shader) == GL_TRUE) glDeleteShader(shader);
}
