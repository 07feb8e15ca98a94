// The application behind host.h, and what every operation on it does about failures.
#ifndef HOST_APP_H
#define HOST_APP_H

#include "canvas.h"
#include "images.h"
#include "kora/host.h"
#include "model3d/model3d_query.h"
#include "resources.h"
#include "services.h"

#include <deque>
#include <exception>
#include <memory>
#include <string>
#include <vector>

struct loaded_plugin {
    void* library;
    plugin_record record;
    void (*clear_caches)(void); // may be null
    const model3d_query* query; // may be null
};

// What kora_app_attributes has handed out.
struct attribute_list {
    const renderext_descriptor* extension;
    std::vector<kora_attribute> rows;
    std::deque<std::string> numbers; // texts of rows
};

struct kora_app : app_record {
    kora_app();
    ~kora_app();
    kora_app(const kora_app&) = delete;
    kora_app& operator=(const kora_app&) = delete;

    // Notes why an operation failed. Takes no memory, so it works when there is none.
    void fail(const char* format, ...) KORA_PRINTF(2, 3);

    bool load_plugin(const char* path, const char* options);

    // Null, and the reason noted, for an unknown one.
    const renderext_descriptor* find_extension(const char* name);

    app_services services{};
    data_service data;
    extension_service extensions;
    event_service events;
    graphics_service graphics;
    resource_service resources;
    image_source images;
    target_canvas canvas;
    std::vector<loaded_plugin> plugins;
    std::vector<void*> libraries; // the plug-ins' handles
    std::vector<std::unique_ptr<kora_control>> controls;
    std::deque<attribute_list> attribute_lists;
    char error[512] = "";
};

// Runs an operation of host.h. `failed` when it throws; the reason is kept in any case.
template <class T, class F> T attempt(kora_app& app, T failed, F&& body) noexcept {
    app.error[0] = '\0';
    try {
        return body();
    } catch (const std::bad_alloc&) {
        app.fail("out of memory");
    } catch (const std::exception& problem) {
        app.fail("%s", problem.what());
    }
    return failed;
}

#endif
