#include "scarce_heap.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

heap_state heap;

namespace {

shortage* current;

} // namespace

shortage::shortage(long successes, long count) : older(current), left(successes), failures(count) {
    current = this;
}

shortage::~shortage() {
    current = older;
}

bool shortage::refuses() {
    if (left-- > 0 || failures == 0) return false;
    --failures;
    errno = ENOMEM;
    return failed = true;
}

bool shortage::end() {
    failures = 0;
    return failed;
}

namespace {

// The lowest number that an open file would get: whatever is left open raises it.
int next_descriptor() {
    const int descriptor = dup(STDERR_FILENO);
    close(descriptor);
    return descriptor;
}

} // namespace

int fail_every_allocation(const std::function<void(shortage&)>& action) {
    int runs = 0;
    for (const long failures : {1L, 2L, LONG_MAX}) {
        bool failed = true;
        for (long successes = 0; failed; ++successes, ++runs) {
            SCOPED_TRACE("allocations before the failure: " + std::to_string(successes) +
                         ", failing: " + std::to_string(failures));
            const long blocks = heap.blocks;
            const int descriptor = next_descriptor();
            shortage here(successes, failures);
            action(here);
            failed = here.end();
            EXPECT_EQ(heap.blocks, blocks);
            EXPECT_EQ(next_descriptor(), descriptor);
        }
    }
    return runs;
}

// The linker sends the program's own calls here (--wrap).
extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* p, size_t size);
char* __real_strdup(const char* text);
char* __real_strndup(const char* text, size_t size);
void __real_free(void* p);
void* __wrap_malloc(size_t size);
void* __wrap_calloc(size_t count, size_t size);
void* __wrap_realloc(void* p, size_t size);
char* __wrap_strdup(const char* text);
char* __wrap_strndup(const char* text, size_t size);
void __wrap_free(void* p);
}

namespace {

bool refused(size_t size) {
    ++heap.calls;
    heap.largest = std::max(heap.largest, size);
    return current && current->refuses();
}

template <class T> T* counted(T* p) {
    heap.blocks += p != nullptr;
    return p;
}

} // namespace

void* __wrap_malloc(size_t size) {
    return refused(size) ? nullptr : counted(__real_malloc(size));
}

void* __wrap_calloc(size_t count, size_t size) {
    return refused(count * size) ? nullptr : counted(__real_calloc(count, size));
}

void* __wrap_realloc(void* p, size_t size) {
    if (refused(size)) return nullptr;
    return p ? __real_realloc(p, size) : counted(__real_realloc(p, size));
}

char* __wrap_strdup(const char* text) {
    return refused(strlen(text) + 1) ? nullptr : counted(__real_strdup(text));
}

char* __wrap_strndup(const char* text, size_t size) {
    return refused(strnlen(text, size) + 1) ? nullptr : counted(__real_strndup(text, size));
}

void __wrap_free(void* p) {
    heap.blocks -= p != nullptr;
    __real_free(p);
}
