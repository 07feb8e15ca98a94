// The C edge: exceptions stop here.
#ifndef HOST_GUARD_H
#define HOST_GUARD_H

// Runs `body`; `failed` when it throws, which in this library means that memory is short.
template <class T, class F> T guarded(T failed, F&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return failed;
    }
}

#endif
