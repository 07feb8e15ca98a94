// Resource pools. A resource is made on its first acquire and shared by name. Between its last release
// and the next acquire it waits among the pool's few idle ones, the longest idle going first.
#ifndef HOST_RESOURCES_H
#define HOST_RESOURCES_H

#include "kora/kora.h"
#include "paths.h"
#include "text_hash.h"

#include <list>
#include <string>

struct resource_pool;

struct resource {
    resource_pool* pool;
    std::string name;
    kora_reference* reference = nullptr; // its first host word points back here
    uint32_t holders = 0;
    size_t cost = 0;
};

struct resource_pool {
    std::string type;
    app_record* app;
    void* parameter; // first host argument of the callbacks
    kora_pool_alloc alloc;
    kora_pool_release release;
    size_t (*cost)(const kora_reference* reference) = nullptr; // bytes held while idle; may be null
    // Asked at every acquire; false refuses. May be null.
    bool (*hand_over)(void* parameter, const char* name, const kora_reference* reference) = nullptr;

    text_table<std::list<resource>::iterator> by_name{};
    std::list<resource> held{};
    std::list<resource> idle{}; // longest idle first
    size_t idle_cost = 0;

    // Null: it could not be made, and nothing is kept. May throw std::bad_alloc before anything is made.
    kora_reference* acquire(const char* name, va_list args);
    void let_go(resource& item);

    // Discards the longest idle ones until so many bytes fit among those that stay.
    void make_room(uint64_t bytes);
    // Discards the longest idle ones beyond the limits.
    void trim(size_t most_items, size_t most_cost);
    // Discards everything, held or not.
    void clear();

  private:
    void discard(std::list<resource>& from, std::list<resource>::iterator item);
};

// What one control may have of the images. It is given back when the extension loads its model again, which
// the host sees when the model's own file is looked up.
struct image_account {
    std::string model_file;
    uint64_t bytes = 0; // of pixels handed over

    void use_model(const char* file) {
        if (model_file == file) return;
        model_file = file;
        bytes = 0;
    }
};

struct resource_service : resource_manager {
    explicit resource_service(app_record* owner);

    resource_pool* find_pool(const char* type);
    void drop_idle();
    void clear();

    app_record* app;
    std::list<resource_pool> pools;
    path_finder paths;
    image_account* drawing = nullptr; // of the control that is being rendered
};

#endif
