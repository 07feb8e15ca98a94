/* A recording host: a libkora.so of its own on the records of kora/kora.h.
 *
 * Every byte the plug-in has no business reading is poison, every slot it may not call records a fault.
 */
#ifndef TESTS_PLUGIN_FAKE_KORA_H
#define TESTS_PLUGIN_FAKE_KORA_H

#include "kora/kora.h"
#include "plugin/trace.h"

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

template <class T> T get(const void* memory, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const char*>(memory) + offset, sizeof value);
    return value;
}

struct host_image {
    int32_t width, height, buffer_width, buffer_height;
    uint8_t bytes_per_pixel;
    uint32_t texture; // the host's own GL texture
    std::vector<uint8_t> pixels;
    bool data = true; // false: the reference has no image object
};

struct host_listener {
    std::string event;
    kora_event_callback callback;
    void* user;
};

struct host_state {
    // What the host answers.
    std::string root;                 // folder that names are resolved in
    std::set<std::string> unresolved; // names without a path
    std::map<std::string, host_image> images;
    std::map<std::string, float> values;    // data manager, under control keys "ctl.NAME"
    std::set<std::string> refused;          // shader names that get_reference refuses
    std::set<std::string> without_data;     // shader names that get_data has nothing for
    std::set<std::string> absent;           // services the host does not have: "data", "event", ...
    std::set<std::string> silent;           // functions that give null, or write nothing
    char* (*copy)(const char*) = strdup;    // of a path, for the plug-in to free
    void* (*other_record)(void*) = nullptr; // what get_data gives for a program record
    bool keep_shaders = true;               // unreferenced programs stay in the pool
    bool timing = false;
    bool display_info = false;
    float sx = 1, sy = 1, tx = 0, ty = 0;
    int32_t rotation = 0;
    int32_t origin_x = 0, origin_y = 0;
    int32_t surface = 0;

    // What the plug-in did.
    const renderext_descriptor* extension = nullptr;
    std::vector<host_listener> listeners;
    std::map<std::string, int> held; // "TYPE NAME" to references not yet released
    int live_maps = 0;
    std::string building; // the program that the pool is making
};

host_state& host();
/* Forgets answers and listeners; pools and maps stay. */
void host_reset();
app_record* host_app();
render_canvas* host_canvas();
/* Acquires from the "shader" pool as a plug-in would. */
kora_reference* host_get_shader(const char* name, const void* description);
void* host_get_data(kora_reference* reference);
void host_release(kora_reference* reference);
/* Discards every program that nobody holds. */
void host_purge_shaders();
void host_fire(const char* event);

#endif
