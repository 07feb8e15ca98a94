#include "app.h"

#include "control.h"
#include "guard.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

// How many applications of the process use each plug-in, whose caches they share.
std::vector<const kora_app*> all_apps;

bool used_elsewhere(const kora_app& app, void* library) {
    return std::any_of(all_apps.begin(), all_apps.end(), [&](const kora_app* other) {
        return other != &app && std::ranges::find(other->libraries, library) != other->libraries.end();
    });
}

template <class F> F find_symbol(void* library, const char* name) {
    return reinterpret_cast<F>(dlsym(library, name));
}

} // namespace

kora_app::kora_app() : app_record{}, resources(this), images{&resources, &libraries} {
    app_record::services = &services;
    services.data = &data;
    services.renderext = &extensions;
    services.event = &events;
    services.graphics = &graphics;
    services.resource = &resources;
    if (!images_create_pool(resources, &images)) throw std::bad_alloc();
    all_apps.push_back(this);
}

kora_app::~kora_app() {
    while (!controls.empty())
        controls.pop_back();
    resources.clear();
    std::erase(all_apps, this);
    for (auto plugin = plugins.rbegin(); plugin != plugins.rend(); ++plugin) {
        if (plugin->clear_caches && !used_elsewhere(*this, plugin->library)) plugin->clear_caches();
        if (plugin->record.fini) plugin->record.fini();
        free(plugin->record.name);
    }
}

void kora_app::fail(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vsnprintf(error, sizeof error, format, args);
    va_end(args);
    std::replace(error, error + sizeof error, '\n', ' ');
}

// A library is never closed again once its entry has run: the GL driver, the log and other applications
// of the process may still hold addresses inside it, and its caches outlive any one application.
bool kora_app::load_plugin(const char* path, const char* options) {
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        fail("%s", dlerror());
        return false;
    }
    const auto create = find_symbol<kora_plugin_create_fn>(library, "kora_plugin_create");
    if (!create || std::ranges::find(libraries, library) != libraries.end()) {
        fail("%s: %s", path, create ? "is already loaded" : "is no plug-in: it has no kora_plugin_create");
        dlclose(library);
        return false;
    }

    plugins.reserve(plugins.size() + 1);
    libraries.reserve(libraries.size() + 1);
    plugin_record record{};
    if (const int result = create(&record); result != 0) {
        fail("%s: kora_plugin_create failed with %d", path, result);
        free(record.name);
        return false;
    }
    const auto get_query = find_symbol<decltype(&model3d_get_query)>(library, "model3d_get_query");
    plugins.push_back({library, record, find_symbol<void (*)()>(library, "lum_gl_clearprogramcaches"),
                       get_query ? get_query(MODEL3D_QUERY_VERSION) : nullptr});
    libraries.push_back(library);

    // Nobody but the host registers the pool that the plug-in's programs come from.
    using create_pool_fn = void (*)(app_record*, void*);
    const auto create_shader_pool = find_symbol<create_pool_fn>(library, "lum_gl_create_shader_pool");
    if (create_shader_pool) create_shader_pool(this, nullptr);
    const size_t extensions_before = extensions.descriptors.size();
    const int result = record.init ? record.init(this, options) : 0;
    if (result == 0) return true;
    extensions.descriptors.resize(extensions_before);
    plugins.back().record.fini = nullptr;
    fail("%s: the plug-in's init failed with %d", path, result);
    return false;
}

const renderext_descriptor* kora_app::find_extension(const char* name) {
    const renderext_descriptor* found = name ? extensions.find(name) : nullptr;
    if (!found) fail("no loaded plug-in has an extension named %s", name ? name : "(null)");
    return found;
}

kora_app* kora_app_create(void) {
    return guarded<kora_app*>(nullptr, [] { return new kora_app(); });
}

void kora_app_destroy(kora_app* app) {
    delete app;
}

const char* kora_app_error(const kora_app* app) {
    return app ? app->error : "there is no application";
}

app_record* kora_app_record(kora_app* app) {
    return app;
}

int kora_app_load_plugin(kora_app* app, const char* path, const char* options) {
    return attempt(*app, 0, [&]() -> int {
        if (path) return app->load_plugin(path, options);
        app->fail("a plug-in needs a path");
        return 0;
    });
}

int kora_app_add_resource_root(kora_app* app, const char* folder) {
    return attempt(*app, 0, [&] {
        app->resources.paths.roots.push_back(folder ? folder : "");
        return 1;
    });
}

void kora_app_set_npot_mode(kora_app* app, kora_npot_mode mode) {
    if (app->images.padding.mode == mode) return;
    app->images.padding.mode = mode;
    // Images made the other way must not be handed out again.
    app->resources.drop_idle();
}

void kora_app_set_image_limits(kora_app* app, size_t image_bytes, size_t control_bytes) {
    app->images.picture_bytes = image_bytes;
    app->images.control_bytes = control_bytes;
}

void kora_app_set_timing_hook(kora_app* app, kora_timing_hook hook) {
    app->timing_hook = hook;
}

void kora_app_set_missing_callback(kora_app* app, kora_missing_callback callback, void* user) {
    app->resources.paths.missing = callback;
    app->resources.paths.missing_user = user;
}

void kora_app_set_found_callback(kora_app* app, kora_found_callback callback, void* user) {
    app->resources.paths.found = callback;
    app->resources.paths.found_user = user;
}

int kora_app_set_data(kora_app* app, const char* key, float value) {
    return attempt(*app, 0, [&] {
        if (!key) {
            app->fail("a data value needs a key");
            return 0;
        }
        auto& values = app->data.values;
        if (const auto found = values.find(key); found != values.end())
            found->second = value;
        else
            values.emplace(key, value);
        return 1;
    });
}

void kora_app_remove_data(kora_app* app, const char* key) {
    auto& values = app->data.values;
    if (const auto found = key ? values.find(key) : values.end(); found != values.end()) values.erase(found);
}

void kora_app_presleep(kora_app* app) {
    app->events.send("kora.presleep", app);
    app->resources.drop_idle();
    for (const loaded_plugin& plugin : app->plugins)
        if (plugin.clear_caches) plugin.clear_caches();
    app->images.padding.driver = -1;
    for (const auto& control : app->controls) {
        control->drawn = false;
        control->images.bytes = 0;
    }
}

const renderext_arg* kora_app_extension_args(const kora_app* app, const char* extension) {
    const renderext_descriptor* descriptor = extension ? app->extensions.find(extension) : nullptr;
    return descriptor ? descriptor->args : nullptr;
}

void kora_app_set_target(kora_app* app, const kora_target* target) {
    app->canvas.target = *target;
    for (const auto& control : app->controls)
        control->drawn = false;
}
