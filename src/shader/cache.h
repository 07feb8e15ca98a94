// Process-wide caches of what outlives a program record. Used on the render thread only.
#ifndef SHADER_CACHE_H
#define SHADER_CACHE_H

#include "kora/kora.h"

// Compiled shaders that came from files, in the order they were made.
struct shader_cache_entry {
    shader_cache_entry* next;
    char* path;
    uint32_t shader;
};
extern shader_cache_entry* shader_cache;

// Linked programs, in the order they were made. The head's app is the log context of messages that
// belong to no call.
struct program_cache_entry {
    program_cache_entry* next;
    uint32_t vertex;
    uint32_t fragment;
    uint32_t program;
    app_record* app;
};
extern program_cache_entry* program_cache;

// The first match, or null.
shader_cache_entry* shader_cache_find(const char* path);
program_cache_entry* program_cache_find(uint32_t vertex, uint32_t fragment);

// Append; when memory is short nothing is cached. `app` is kept only by the first program.
void shader_cache_add(const char* path, uint32_t shader);
void program_cache_add(app_record* app, uint32_t vertex, uint32_t fragment, uint32_t program);

// Writes a line at level 5 in the head's context, or nothing while no program is cached.
void cache_log(const char* format, const char* text);

#endif
