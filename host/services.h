// Data, extensions and events: the service tables as plug-ins see them, with what stands behind.
#ifndef HOST_SERVICES_H
#define HOST_SERVICES_H

#include "kora/kora.h"
#include "text_hash.h"

#include <string>
#include <vector>

struct data_service : data_manager {
    data_service();

    text_table<float> values;
};

struct extension_service : renderext_manager {
    extension_service();

    const renderext_descriptor* find(const char* name) const;

    std::vector<const renderext_descriptor*> descriptors; // the plug-ins' own
};

struct event_listener {
    std::string event;
    kora_event_callback callback;
    void* user;
    const renderext_instance* owner; // goes with this instance; may be null
};

struct event_service : event_manager {
    event_service();

    void send(const char* event, app_record* app);
    void drop_listeners(const renderext_instance* owner);

    std::vector<event_listener> listeners;
    const renderext_instance* caller = nullptr; // whose operation is running: it owns new listeners
};

#endif
