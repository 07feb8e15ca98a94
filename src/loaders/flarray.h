// Growable array of floats.
#ifndef LOADERS_FLARRAY_H
#define LOADERS_FLARRAY_H

#include <cstdint>

struct flarray {
    int32_t count;
    int32_t capacity;
    float* data; // owned; data[0] to data[count - 1] are valid
};

// An empty array with room for 16 floats, or for `capacity` (at least 1). 1; 0 when the storage could not
// be allocated: the array is then empty, and a push stores nothing.
int flarray_create(flarray* array);
int flarray_create_with_capacity(flarray* array, int32_t capacity);

// Doubles the storage. False when that fails; the array is then as it was.
bool flarray_grow(flarray* array);

// Appends a value, or does nothing when the array is full and cannot grow: `count` tells.
inline void flarray_push(flarray* array, float value) {
    if (array->count == array->capacity && !flarray_grow(array)) return;
    array->data[array->count++] = value;
}

// Empties the array and keeps its storage.
void flarray_clear(flarray* array);

// Releases the storage; the array must be created again before any other use.
void flarray_free(flarray* array);

#endif
