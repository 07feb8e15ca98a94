// A control and its one instance of a render extension.
#ifndef HOST_CONTROL_H
#define HOST_CONTROL_H

#include "app.h"
#include "kora/host.h"

#include <cstdlib>
#include <memory>
#include <string>

// Where a control record keeps its name, as a text or null.
constexpr size_t control_name_slot = 0;

// Sizes below 0 count as 0; edges stop at the 32-bit limits.
kor_rect rect_of(int64_t x, int64_t y, int64_t width, int64_t height);

// Asks for the control to be drawn again.
void instance_touch(renderext_instance* rext);

struct state_free {
    void operator()(void* state) const { free(state); }
};

struct kora_control : control_record {
    // Throws std::bad_alloc. Nothing of the extension has run yet.
    kora_control(kora_app& owner, const char* name, const renderext_descriptor& used, const kor_rect& place);
    // Undoes realize, when that was done, and lets the extension free its state.
    ~kora_control();
    kora_control(const kora_control&) = delete;
    kora_control& operator=(const kora_control&) = delete;

    // Runs an operation of the extension; listeners added meanwhile belong to this instance.
    template <class F> auto call(F&& operation);
    bool realize();

    kora_app& host;
    const renderext_descriptor& extension;
    std::string own_name;
    std::unique_ptr<void, state_free> own_state;
    image_account images;
    renderext_instance instance{};
    int32_t drawn_count = 0; // dirty count at the last frame
    bool drawn = false;
    bool realized = false;
};

template <class F> auto kora_control::call(F&& operation) {
    struct restore {
        const renderext_instance*& place;
        const renderext_instance* before;
        ~restore() { place = before; }
    } const restore{host.events.caller, host.events.caller};
    host.events.caller = &instance;
    return operation();
}

#endif
