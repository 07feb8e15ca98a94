#include "heap_watch.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

heap_watch* current = nullptr;

} // namespace

heap_watch::heap_watch(long failing) : fail_at(failing) {
    current = this;
}

heap_watch::~heap_watch() {
    current = nullptr;
}

bool heap_is_watched() {
    const heap_watch watch;
    // Not in line, where the others would be replaced.
    void* (*volatile obtain)(size_t) = ::operator new;
    void (*volatile give_back)(void*) = ::operator delete;
    give_back(obtain(1));
    return watch.allocations == 1;
}

namespace {

void* allocate(size_t size) noexcept {
    if (current) {
        current->largest = std::max(current->largest, size);
        if (static_cast<long>(current->allocations++) == current->fail_at) return nullptr;
    }
    return malloc(size ? size : 1);
}

} // namespace

void* operator new(size_t size) {
    void* p = allocate(size);
    if (!p) throw std::bad_alloc();
    return p;
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
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
