// The C++ heap of the program and of the libraries that it loads, as part of the scarce one.
#include "scarce_heap.h"

#include <cstdlib>
#include <new>

bool new_is_scarce() {
    // Not in line, where the others would be replaced.
    void* (*volatile obtain)(size_t) = ::operator new;
    void (*volatile give_back)(void*) = ::operator delete;
    const long before = heap.calls;
    give_back(obtain(1));
    return heap.calls > before;
}

void* operator new(size_t size) {
    void* p = malloc(size ? size : 1);
    if (!p) throw std::bad_alloc();
    return p;
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return malloc(size ? size : 1);
}
void* operator new[](size_t size) {
    return operator new(size);
}
void operator delete(void* p) noexcept {
    free(p);
}
void operator delete(void* p, size_t) noexcept {
    free(p);
}
void operator delete[](void* p) noexcept {
    free(p);
}
void operator delete[](void* p, size_t) noexcept {
    free(p);
}
