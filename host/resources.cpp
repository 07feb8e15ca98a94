#include "resources.h"

#include "guard.h"

#include <algorithm>
#include <cstring>

namespace {

// Enough for the programs of a frame and the images that controls share; a budget keeps decoded images,
// which are of no use once uploaded, from filling a small machine.
constexpr size_t most_idle_items = 16, most_idle_bytes = size_t{64} << 20;

int service_create_pool(resource_manager* self, const char* type, void* pool_parameter, kora_pool_alloc alloc,
                        kora_pool_release release, int) {
    auto* service = static_cast<resource_service*>(self);
    if (!type || !alloc || !release) return 0;
    if (service->find_pool(type)) {
        kora_app_log(service->app, 1, "kora: a second resource pool of type %s is ignored", type);
        return 0;
    }
    return guarded(0, [&] {
        service->pools.push_back({type, service->app, pool_parameter, alloc, release});
        return 1;
    });
}

kora_reference* service_get_reference(resource_manager* self, const char* type, const char* name, ...) {
    if (!type || !name) return nullptr;
    resource_pool* pool = static_cast<resource_service*>(self)->find_pool(type);
    if (!pool) return nullptr;
    va_list args;
    va_start(args, name);
    kora_reference* reference = nullptr;
    try {
        reference = pool->acquire(name, args);
        if (reference && pool->hand_over && !pool->hand_over(pool->parameter, name, reference)) {
            self->release(self, reference);
            reference = nullptr;
        }
    } catch (...) {
        reference = nullptr;
    }
    va_end(args);
    return reference;
}

int service_release(resource_manager* self, kora_reference* reference) {
    if (!reference || !reference->host[0]) return 0;
    resource& item = *static_cast<resource*>(reference->host[0]);
    if (item.holders == 0) {
        kora_app_log(static_cast<resource_service*>(self)->app, 1,
                     "kora: resource %s was released more often than acquired", item.name.c_str());
        return 0;
    }
    item.pool->let_go(item);
    return 1;
}

void* service_get_data(resource_manager*, kora_reference* reference) {
    return reference ? reference->data : nullptr;
}

char* service_resolve_path(resource_manager* self, const char* name) {
    if (!name) return nullptr;
    auto& service = *static_cast<resource_service*>(self);
    if (service.drawing && service.drawing->model_file == name) service.drawing->bytes = 0;
    return guarded<char*>(nullptr, [&]() -> char* {
        const std::string path = service.paths.resolve("file", name);
        return path.empty() ? nullptr : strdup(path.c_str());
    });
}

} // namespace

kora_reference* resource_pool::acquire(const char* key, va_list args) {
    if (const auto found = by_name.find(key); found != by_name.end()) {
        const auto item = found->second;
        // Still being made: a resource that needs itself cannot be had.
        if (!item->reference) return nullptr;
        if (item->holders++ == 0) {
            idle_cost -= item->cost;
            held.splice(held.end(), idle, item);
        }
        return item->reference;
    }

    // All memory is taken before the callback runs: what it made can then always be kept.
    std::list<resource> fresh;
    const auto item = fresh.insert(fresh.end(), resource{this, key});
    by_name.emplace(key, item);
    item->reference = alloc(app, parameter, nullptr, key, args);
    if (!item->reference) {
        by_name.erase(by_name.find(key));
        return nullptr;
    }
    item->reference->host[0] = &*item;
    item->cost = cost ? cost(item->reference) : 0;
    item->holders = 1;
    held.splice(held.end(), fresh);
    return item->reference;
}

void resource_pool::let_go(resource& item) {
    if (--item.holders > 0) return;
    idle.splice(idle.end(), held, by_name.find(item.name)->second);
    idle_cost += item.cost;
    trim(most_idle_items, most_idle_bytes);
}

void resource_pool::make_room(uint64_t bytes) {
    trim(most_idle_items, most_idle_bytes - static_cast<size_t>(std::min<uint64_t>(bytes, most_idle_bytes)));
}

void resource_pool::trim(size_t most_items, size_t most_cost) {
    while (!idle.empty() && (idle.size() > most_items || idle_cost > most_cost)) {
        idle_cost -= idle.front().cost;
        discard(idle, idle.begin());
    }
}

void resource_pool::clear() {
    trim(0, 0);
    while (!held.empty())
        discard(held, held.begin());
}

void resource_pool::discard(std::list<resource>& from, std::list<resource>::iterator item) {
    // Out of the tables first, so that a callback that acquires or releases finds them whole.
    std::list<resource> gone;
    gone.splice(gone.end(), from, item);
    by_name.erase(by_name.find(item->name));
    item->reference->host[0] = nullptr;
    release(parameter, nullptr, nullptr, item->reference);
}

resource_service::resource_service(app_record* owner) : resource_manager{}, app(owner) {
    create_pool = service_create_pool;
    get_reference = service_get_reference;
    release = service_release;
    get_data = service_get_data;
    resolve_path = service_resolve_path;
}

resource_pool* resource_service::find_pool(const char* type) {
    for (resource_pool& pool : pools)
        if (pool.type == type) return &pool;
    return nullptr;
}

void resource_service::drop_idle() {
    for (resource_pool& pool : pools)
        pool.trim(0, 0);
}

void resource_service::clear() {
    for (resource_pool& pool : pools)
        pool.clear();
}
