#include "control.h"

#include "app.h"

#include <algorithm>

kora_control::kora_control(kora_app& owner, const char* name, const renderext_descriptor& used,
                           const kor_rect& place)
    : control_record{}, host(owner), extension(used), own_name(name ? name : ""),
      own_state(calloc(1, std::max<size_t>(used.state_size, 1))) {
    if (!own_state) throw std::bad_alloc();
    reserved0[control_name_slot] = own_name.data();
    rect = place;
    app = &host;
    instance.alpha = 255;
    instance.state = own_state.get();
    instance.control = this;
}

kora_control::~kora_control() {
    realize_context context{nullptr, &host};
    call([&] {
        if (realized && extension.unrealize) extension.unrealize(&context, nullptr, &instance);
        if (extension.free) extension.free(&instance);
    });
    host.events.drop_listeners(&instance);
}

bool kora_control::realize() {
    realize_context context{nullptr, &host};
    realized =
        call([&] { return !extension.realize || extension.realize(&context, nullptr, &instance) == 0; });
    if (!realized) host.fail("extension %s could not realize a control", extension.name);
    return realized;
}

namespace {

kora_control* keep(kora_app& app, std::unique_ptr<kora_control> control) {
    if (!control->realize()) return nullptr;
    app.controls.push_back(std::move(control));
    return app.controls.back().get();
}

} // namespace

kora_control* kora_control_create(kora_app* app, const char* name, const char* extension, int32_t x,
                                  int32_t y, int32_t width, int32_t height) {
    return attempt<kora_control*>(*app, nullptr, [&]() -> kora_control* {
        const renderext_descriptor* const descriptor = app->find_extension(extension);
        if (!descriptor) return nullptr;
        return keep(*app,
                    std::make_unique<kora_control>(*app, name, *descriptor, rect_of(x, y, width, height)));
    });
}

kora_control* kora_control_copy(kora_control* source, const char* name) {
    kora_app& app = source->host;
    return attempt<kora_control*>(app, nullptr, [&]() -> kora_control* {
        const renderext_descriptor& extension = source->extension;
        if (!extension.copy) {
            app.fail("extension %s cannot copy a control", extension.name);
            return nullptr;
        }
        auto control = std::make_unique<kora_control>(app, name, extension, source->rect);
        control->instance.alpha = source->instance.alpha;
        control->images.model_file = source->images.model_file;
        // The copy overwrites the whole state, so it comes first: what realize notes for the new instance
        // must not be lost to it.
        if (control->call([&] { return extension.copy(&control->instance, &source->instance); }) != 0) {
            app.fail("extension %s could not copy a control", extension.name);
            return nullptr;
        }
        return keep(app, std::move(control));
    });
}

void kora_control_destroy(kora_control* control) {
    if (!control) return;
    std::erase_if(control->host.controls, [control](const auto& owned) { return owned.get() == control; });
}

void kora_control_set_rect(kora_control* control, int32_t x, int32_t y, int32_t width, int32_t height) {
    control->rect = rect_of(x, y, width, height);
    instance_touch(&control->instance);
}

int kora_control_dirty(kora_control* control) {
    const renderext_descriptor& extension = control->extension;
    if (extension.dirty) control->call([&] { return extension.dirty(nullptr, nullptr, &control->instance); });
    return !control->drawn || control->instance.dirty_count != control->drawn_count;
}

void kora_control_render(kora_control* control) {
    const renderext_descriptor& extension = control->extension;
    // Taken before: what raises the count while drawing asks for one more frame.
    control->drawn_count = control->instance.dirty_count;
    control->drawn = true;
    if (!extension.render) return;
    kora_app& app = control->host;
    app.resources.drawing = &control->images;
    control->call([&] { return extension.render(&app.canvas, control, &control->instance); });
    app.resources.drawing = nullptr;
    app.images.damaged.clear();
}

control_record* kora_control_record(kora_control* control) {
    return control;
}

renderext_instance* kora_control_instance(kora_control* control) {
    return &control->instance;
}
