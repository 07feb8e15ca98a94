// Heap memory without exceptions: owners, growth that loses nothing, copies of text.
#ifndef BASE_HEAP_H
#define BASE_HEAP_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>

struct heap_free {
    void operator()(void* p) const { free(p); }
};

// Holds malloc()ed memory inside a function; release() marks the hand-over.
template <class T> using heap_ptr = std::unique_ptr<T, heap_free>;

// Room for `count` elements, uninitialised, or null. A count of 0 gets room for one.
template <class T> T* heap_array(size_t count) {
    static_assert(std::is_trivial_v<T>);
    size_t bytes = 0;
    if (__builtin_mul_overflow(count ? count : 1, sizeof(T), &bytes)) return nullptr;
    return static_cast<T*>(malloc(bytes));
}

// One zero-filled record, or null.
template <class T> T* heap_zeroed() {
    static_assert(std::is_trivial_v<T>);
    return static_cast<T*>(calloc(1, sizeof(T)));
}

// Resizes an array to `count` elements. On failure returns false and the array is as it was.
template <class T> bool heap_resize(T*& array, size_t count) {
    static_assert(std::is_trivial_v<T>);
    size_t bytes = 0;
    if (__builtin_mul_overflow(count ? count : 1, sizeof(T), &bytes)) return false;
    void* larger = realloc(array, bytes);
    if (!larger) return false;
    array = static_cast<T*>(larger);
    return true;
}

// Twice the capacity of a growable array, or 0 when it does not fit.
inline int32_t doubled(int32_t capacity) {
    int32_t larger = 0;
    return capacity > 0 && !__builtin_mul_overflow(capacity, 2, &larger) ? larger : 0;
}

// Doubles a growable array and its capacity. On failure returns false and nothing has changed.
template <class T> bool heap_double(T*& array, int32_t& capacity) {
    const int32_t larger = doubled(capacity);
    if (larger == 0 || !heap_resize(array, static_cast<size_t>(larger))) return false;
    capacity = larger;
    return true;
}

// A copy of a text, or null; null for null.
inline char* heap_text(const char* text) {
    return text ? strdup(text) : nullptr;
}

// Frees and nulls.
template <class T> void heap_clear(T*& p) {
    free(p);
    p = nullptr;
}

#endif
