#include "services.h"

#include "guard.h"

#include <cstring>

namespace {

const void* data_get(data_manager* self, const char* key, int) {
    const auto& values = static_cast<data_service*>(self)->values;
    const auto found = key ? values.find(key) : values.end();
    return found == values.end() ? nullptr : &found->second;
}

int extension_register(renderext_manager* self, const renderext_descriptor* descriptor) {
    auto* service = static_cast<extension_service*>(self);
    if (!descriptor || !descriptor->name) return 0;
    if (const renderext_descriptor* other = service->find(descriptor->name)) {
        if (other == descriptor) return 1;
        kora_app_log(nullptr, 1, "kora: a second extension named %s is ignored", descriptor->name);
        return 0;
    }
    return guarded(0, [&] {
        service->descriptors.push_back(descriptor);
        return 1;
    });
}

int event_add_listener(event_manager* self, const char* event, kora_event_callback callback, void* user) {
    auto* service = static_cast<event_service*>(self);
    if (!event || !callback) return 0;
    return guarded(0, [&] {
        service->listeners.push_back({event, callback, user, service->caller});
        return 1;
    });
}

} // namespace

data_service::data_service() : data_manager{} {
    get = data_get;
}

extension_service::extension_service() : renderext_manager{} {
    register_extension = extension_register;
}

const renderext_descriptor* extension_service::find(const char* name) const {
    for (const renderext_descriptor* descriptor : descriptors)
        if (strcmp(descriptor->name, name) == 0) return descriptor;
    return nullptr;
}

event_service::event_service() : event_manager{} {
    add_listener = event_add_listener;
}

void event_service::send(const char* event, app_record* app) {
    // A listener may add listeners: those wait for the next event.
    const size_t count = listeners.size();
    for (size_t i = 0; i < count; ++i) {
        if (listeners[i].event != event) continue;
        const kora_event_callback callback = listeners[i].callback;
        callback(app, nullptr, listeners[i].user);
    }
}

void event_service::drop_listeners(const renderext_instance* owner) {
    std::erase_if(listeners, [owner](const event_listener& listener) {
        return listener.owner == owner || listener.user == owner;
    });
}
