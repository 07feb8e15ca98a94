#include "loaders/flarray.h"

#include "base/heap.h"

int flarray_create(flarray* array) {
    return flarray_create_with_capacity(array, 16);
}

int flarray_create_with_capacity(flarray* array, int32_t capacity) {
    array->count = 0;
    array->data = heap_array<float>(static_cast<size_t>(capacity));
    array->capacity = array->data ? capacity : 0;
    return array->data != nullptr;
}

bool flarray_grow(flarray* array) {
    return heap_double(array->data, array->capacity);
}

void flarray_clear(flarray* array) {
    array->count = 0;
}

void flarray_free(flarray* array) {
    free(array->data);
}
