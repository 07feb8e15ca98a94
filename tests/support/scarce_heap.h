// A heap that runs out on request. It serves the program's own code, not the libraries it loads: to `new` and
// to streams memory is never short, but where scarce_new is linked, too.
#ifndef TESTS_SCARCE_HEAP_H
#define TESTS_SCARCE_HEAP_H

#include <climits>
#include <cstddef>
#include <functional>

struct heap_state {
    long calls = 0;     // to malloc, calloc, realloc, strdup and strndup
    long blocks = 0;    // alive
    size_t largest = 0; // request in bytes
};
extern heap_state heap;

// While it lives, `failures` allocations fail after `successes` others. Of several the youngest counts.
class shortage {
  public:
    explicit shortage(long successes, long failures = LONG_MAX);
    ~shortage();
    shortage(const shortage&) = delete;
    shortage& operator=(const shortage&) = delete;
    bool refuses(); // the next allocation
    // Memory is plenty from here on. Returns whether any allocation failed.
    bool end();

  private:
    shortage* const older;
    long left;
    long failures;
    bool failed = false;
};

// Runs `action` with its first allocation failing, with its second, and so on until none fails; then with two
// in a row failing, and with all that follow. Expects that each run gives back its memory and closes its
// files. Returns the number of runs.
int fail_every_allocation(const std::function<void(shortage&)>& action);

// With scarce_new. False where `new` is another's, as under valgrind: what needs it scarce must be skipped.
bool new_is_scarce();

#endif
