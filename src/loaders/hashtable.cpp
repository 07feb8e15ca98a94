#include "loaders/hashtable.h"

#include "base/heap.h"

namespace {

// Bob Jenkins' one-at-a-time hash.
uint32_t hash(const char* key) {
    uint32_t h = 0;
    for (; *key; ++key) {
        h += static_cast<uint8_t>(*key);
        h += h << 10;
        h ^= h >> 6;
    }
    h += h << 3;
    h ^= h >> 11;
    h += h << 15;
    return h;
}

hashtable_entry* allocate(int32_t size) {
    return static_cast<hashtable_entry*>(calloc(static_cast<size_t>(size), sizeof(hashtable_entry)));
}

// The slot that holds the key, else the empty one where it belongs, else null: every slot is taken.
hashtable_entry* find(hashtable_entry* entries, int32_t size, const char* key) {
    if (!entries) return nullptr;
    const uint32_t slots = static_cast<uint32_t>(size);
    // hash % slots, for ARM cores that divide doubles but no integers. 53 bits are enough for it to be exact.
    const uint32_t full = hash(key);
    const uint32_t home = full - static_cast<uint32_t>(static_cast<double>(full) / slots) * slots;
    uint32_t i = home;
    do {
        if (!entries[i].key || strcmp(entries[i].key, key) == 0) return &entries[i];
        i = i + 1 == slots ? 0 : i + 1;
    } while (i != home);
    return nullptr;
}

// 1 when a slot was newly taken.
int set(hashtable_entry* entries, int32_t size, const char* key, void* value) {
    hashtable_entry* entry = find(entries, size, key);
    if (!entry) return 0;
    const bool taken = entry->key != nullptr;
    if (!taken && !(entry->key = heap_text(key))) return 0;
    entry->value = value;
    return !taken;
}

// Without memory the table goes on as it is, until it is full.
void grow(hashtable* table) {
    const int32_t size = doubled(table->size);
    hashtable_entry* entries = size ? allocate(size) : nullptr;
    if (!entries) return;
    for (int32_t i = 0; i < table->size; ++i) {
        const hashtable_entry& old = table->entries[i];
        // The key moves as it is: a copy could fail and lose the value.
        if (old.key) *find(entries, size, old.key) = old;
    }
    free(table->entries);
    table->entries = entries;
    table->size = size;
}

} // namespace

void hashtable_create(hashtable* table, int32_t size) {
    table->count = 0;
    table->size = size;
    table->entries = allocate(size);
}

void hashtable_set(hashtable* table, const char* key, void* value) {
    table->count += set(table->entries, table->size, key, value);
    if (int64_t{4} * table->count >= int64_t{3} * table->size) grow(table);
}

void* hashtable_get(const hashtable* table, const char* key) {
    const hashtable_entry* entry = find(table->entries, table->size, key);
    return entry && entry->key ? entry->value : nullptr;
}

void hashtable_free(hashtable* table, void (*release)(void* value)) {
    if (!table->entries) return;
    for (int32_t i = 0; i < table->size; ++i) {
        const hashtable_entry& entry = table->entries[i];
        if (!entry.key) continue;
        free(entry.key);
        if (release) release(entry.value);
    }
    heap_clear(table->entries);
}
