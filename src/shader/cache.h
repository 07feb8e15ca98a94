// Process-wide lists: shaders and programs, which outlive the program records, and the records themselves.
// Used on the render thread only.
#ifndef SHADER_CACHE_H
#define SHADER_CACHE_H

#include "shader/uniform.h"

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
    // Number of active uniforms and length of the longest name, which tell it from a program that has its
    // name in another context. -1 until the uniforms were listed.
    int32_t uniforms;
    int32_t longest_name;
};
extern program_cache_entry* program_cache;

// State of a record of the "shader" pool.
enum class record_state {
    whole,
    partial, // memory ran out while its uniforms were listed
    gone     // its program does not exist any more
};

// A record as the pool keeps it.
struct program_record : shader_program {
    record_state state;
    program_record* next;
    own_uniform* builtin[builtin_uniform_count]; // entries of the map; null for those it does not have
};
extern program_record* program_records;

// The first match, or null.
shader_cache_entry* shader_cache_find(const char* path);
program_cache_entry* program_cache_find(uint32_t vertex, uint32_t fragment);

// Append; when memory is short nothing is cached, and program_cache_add returns false. `app` is kept only by
// the first program.
void shader_cache_add(const char* path, uint32_t shader);
bool program_cache_add(app_record* app, uint32_t vertex, uint32_t fragment, uint32_t program);

// Stores the two numbers with a cached program.
void program_cache_describe(uint32_t program, int32_t uniforms, int32_t longest_name);

// Empties the caches and deletes those of their objects that still exist. Without `delete_objects` no GL call
// is made: the context is gone, and its objects with it.
void caches_clear(bool delete_objects);

// The pool's own record, or null for any other.
program_record* program_record_find(const shader_program* record);

// Writes a line at level 5 in the head's context, or nothing while no program is cached.
void cache_log(const char* format, const char* text);

#endif
