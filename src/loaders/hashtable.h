// Table of values by text: open addressing with linear probing, nothing is ever removed.
#ifndef LOADERS_HASHTABLE_H
#define LOADERS_HASHTABLE_H

#include <cstdint>

struct hashtable_entry {
    char* key;   // the table's own copy; null: the slot is empty
    void* value; // the caller's
};

struct hashtable {
    int32_t count;            // keys stored
    int32_t size;             // slots
    hashtable_entry* entries; // owned; null when the slots could not be allocated: nothing is then stored
};

// An empty table of `size` slots, at least 1.
void hashtable_create(hashtable* table, int32_t size);

// Stores a value or replaces the one that is there, which is then the caller's to release. Without
// memory nothing is stored; a lookup tells.
void hashtable_set(hashtable* table, const char* key, void* value);

// The value, or null.
void* hashtable_get(const hashtable* table, const char* key);

// Releases the slots and hands every value to `release`, unless that is null. A second call does nothing.
void hashtable_free(hashtable* table, void (*release)(void* value));

#endif
