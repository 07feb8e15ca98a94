// String maps: an open-addressed index over entries kept in the order they came.
#include "kora/kora.h"
#include "text_hash.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

namespace {

struct map_entry {
    char* key;
    void* value;
};

struct map_slot {
    uint32_t hash;
    uint32_t entry; // 1 + index of the entry; 0: free
};

// A hint may come from a driver: it must not decide how much memory is taken.
constexpr uint32_t smallest_index = 16, largest_hint = 4096;

} // namespace

struct kor_string_map {
    std::vector<map_entry> entries;
    std::vector<map_slot> index; // a power of two, at most three quarters full

    // The slot that holds `key`, or the free one where it belongs.
    map_slot& find(const char* key, uint32_t hash) {
        const size_t mask = index.size() - 1;
        for (size_t i = hash & mask;; i = (i + 1) & mask) {
            map_slot& slot = index[i];
            if (slot.entry == 0) return slot;
            if (slot.hash == hash && strcmp(entries[slot.entry - 1].key, key) == 0) return slot;
        }
    }

    void grow() {
        std::vector<map_slot> larger(index.size() * 2);
        const size_t mask = larger.size() - 1;
        for (const map_slot& slot : index) {
            if (slot.entry == 0) continue;
            size_t i = slot.hash & mask;
            while (larger[i].entry != 0)
                i = (i + 1) & mask;
            larger[i] = slot;
        }
        index.swap(larger);
    }

    void set(const char* key, void* value) {
        const uint32_t hash = text_hash(key);
        if (const map_slot& slot = find(key, hash); slot.entry != 0) {
            entries[slot.entry - 1].value = value;
            return;
        }
        if ((entries.size() + 1) * 4 > index.size() * 3) grow();
        entries.push_back({nullptr, value});
        entries.back().key = strdup(key);
        if (!entries.back().key) {
            entries.pop_back();
            throw std::bad_alloc();
        }
        find(key, hash) = {hash, static_cast<uint32_t>(entries.size())};
    }
};

kor_string_map* kor_string_map_create(int32_t initial_size) {
    const uint32_t hint = initial_size < 0 ? 0 : static_cast<uint32_t>(initial_size);
    const uint32_t wanted = hint < largest_hint ? hint : largest_hint;
    auto* map = new (std::nothrow) kor_string_map;
    try {
        if (map) map->index.resize(std::max(smallest_index, std::bit_ceil(wanted * 2)));
    } catch (const std::bad_alloc&) {
        delete map;
        return nullptr;
    }
    return map;
}

void kor_string_map_set(kor_string_map* map, const char* key, void* value) {
    if (!map || !key) return;
    try {
        map->set(key, value);
    } catch (const std::bad_alloc&) {
        // Nothing is stored and nothing is lost; the interface has no way to say so.
        kora_app_log(nullptr, 0, "kora: no memory for string map key %s", key);
    }
}

void* kor_string_map_get(kor_string_map* map, const char* key) {
    if (!map || !key) return nullptr;
    const map_slot& slot = map->find(key, text_hash(key));
    return slot.entry ? map->entries[slot.entry - 1].value : nullptr;
}

void kor_string_map_traverse(kor_string_map* map, kor_string_map_callback callback, void* user, int) {
    if (!map || !callback) return;
    // By index and up to the present count: the callback may set keys.
    const size_t count = map->entries.size();
    for (size_t i = 0; i < count; ++i)
        if (callback(map->entries[i].key, map->entries[i].value, user) != 0) return;
}

void kor_string_map_destroy(kor_string_map* map, kor_string_map_callback callback, void* user) {
    if (!map) return;
    for (const map_entry& entry : map->entries) {
        if (callback) callback(entry.key, entry.value, user);
        free(entry.key);
    }
    delete map;
}
