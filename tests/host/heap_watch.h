// Watches and disturbs the C++ heap, which is also the host library's.
#ifndef TESTS_HOST_HEAP_WATCH_H
#define TESTS_HOST_HEAP_WATCH_H

#include <cstddef>

struct heap_watch {
    size_t allocations = 0;
    size_t largest = 0;
    long fail_at = -1; // this allocation throws; -1: none

    // Counts from construction to the end of its life. One at a time.
    explicit heap_watch(long fail_at = -1);
    ~heap_watch();
    heap_watch(const heap_watch&) = delete;
    heap_watch& operator=(const heap_watch&) = delete;
};

// False where the heap is another's, as under valgrind: what needs to watch it must be skipped.
bool heap_is_watched();

#endif
