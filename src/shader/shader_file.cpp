// Shaders from files: texts to compile, binaries to hold.

#include "base/heap.h"
#include "model3d/shader.h"
#include "shader/cache.h"
#include "shader/context.h"

#include <GLES2/gl2.h>

#include <cstdio>

namespace {

struct file_close {
    void operator()(FILE* file) const { fclose(file); }
};
using file_ptr = std::unique_ptr<FILE, file_close>;

// The whole file as a zero-terminated text, or null.
heap_ptr<char> read_text(const char* path) {
    constexpr size_t piece = 512;
    size_t capacity = piece;
    size_t size = 0;
    char* buffer = heap_array<char>(capacity);
    const file_ptr file{buffer ? fopen(path, "r") : nullptr};
    bool done = !file;
    bool good = !done;
    while (!done) {
        size += fread(buffer + size, 1, piece, file.get());
        done = feof(file.get()) || ferror(file.get());
        good = !ferror(file.get());
        if (!done || size == capacity) {
            capacity = size + (done ? 1 : piece);
            if (!heap_resize(buffer, capacity)) {
                done = true;
                good = false;
            }
        }
    }
    if (!good) {
        free(buffer);
        return nullptr;
    }
    buffer[size] = '\0';
    return heap_ptr<char>{buffer};
}

// Bytes in an open file, which is left at its start; `file` is opened anew when it cannot seek.
// Negative on failure.
long file_size(file_ptr& file, const char* path) {
    if (fseek(file.get(), 0, SEEK_END) == 0) {
        const long size = ftell(file.get());
        if (size >= 0 && fseek(file.get(), 0, SEEK_SET) == 0) return size;
    }
    char piece[1024];
    long size = 0;
    size_t count = 0;
    while ((count = fread(piece, 1, sizeof(piece), file.get())) > 0) {
        size += static_cast<long>(count);
    }
    file.reset(fopen(path, "rb"));
    return file ? size : -1;
}

} // namespace

int program_loadshader_file(const char* path, uint32_t gl_type, uint32_t* shader) {
    *shader = 0;
    if (!path) return 0;
    gl_context_check_before_making();
    if (const shader_cache_entry* entry = shader_cache_find(path)) {
        if (glIsShader(entry->shader)) {
            cache_log("shader: loaded shader from cache: %s", path);
            *shader = entry->shader;
            return 1;
        }
        lum_gl_clearprogramcaches(); // the context that made it is gone
    }
    const heap_ptr<char> text = read_text(path);
    if (!text) return 0;
    *shader = program_loadshader(text.get(), gl_type);
    if (*shader) {
        shader_cache_add(path, *shader);
        cache_log("shader: loaded shader: %s", path);
    }
    return 0;
}

int lum_gl_loadvertexshader_file(const char* path, uint32_t* shader) {
    return program_loadshader_file(path, GL_VERTEX_SHADER, shader);
}

int lum_gl_loadfragmentshader_file(const char* path, uint32_t* shader) {
    return program_loadshader_file(path, GL_FRAGMENT_SHADER, shader);
}

void* lum_gl_load_shader_file(app_record* app, const char* name, unsigned int* length) {
    resource_manager* const resources = app->services->resource;
    const heap_ptr<char> path{resources ? resources->resolve_path(resources, name) : nullptr};
    const char* const shown = path ? path.get() : name;
    file_ptr file{path ? fopen(path.get(), "rb") : nullptr};
    const long size = file ? file_size(file, path.get()) : -1;
    if (size < 0 || static_cast<unsigned long>(size) > UINT32_MAX) {
        kora_app_log(app, 0, "Unable to open shader: %s\n", shown);
        return nullptr;
    }
    heap_ptr<char> data{heap_array<char>(static_cast<size_t>(size))};
    if (!data) {
        kora_app_log(app, 0, "Shader load (%s) allocation failed", shown);
        return nullptr;
    }
    if (fread(data.get(), 1, static_cast<size_t>(size), file.get()) != static_cast<size_t>(size)) {
        kora_app_log(app, 0, "Shader load (%s) read failed", shown);
        return nullptr;
    }
    *length = static_cast<unsigned int>(size);
    return data.release();
}
