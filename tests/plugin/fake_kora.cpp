#include "plugin/fake_kora.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>

struct kor_string_map : std::map<std::string, void*> {};

namespace {

struct {
    kora_pool_alloc alloc;
    kora_pool_release release;
    std::map<std::string, kora_reference*> shaders;
    std::map<std::string, int> image_handles; // the address of a value is the reference
    uint64_t clock;
} pool;

app_record app;
app_services services;
data_manager data;
renderext_manager renderext;
event_manager events;
graphics_manager graphics;
resource_manager resources;
render_canvas canvas;

void unused_slot() {
    fault("a slot that the interface does not use was called");
}

template <class... T> void fill_slots(T&... tables) {
    kora_slot slots[64];
    static_assert((... && (sizeof(T) <= sizeof slots)));
    std::fill(std::begin(slots), std::end(slots), &unused_slot);
    (std::memcpy(&tables, slots, sizeof tables), ...);
}

void check_service(const void* self, const void* expected, const char* operation) {
    if (self != expected) fault("%s: the first argument is not the service", operation);
}
// A line for a service's function, after a look at its first argument.
#define HOST_CALL(service, ...) (check_service(self, &service, __func__), record(channel::host, __VA_ARGS__))

const char* app_name(const app_record* given) {
    if (given && given != &app) fault("a log call with an unknown app record");
    return given ? "app" : "null";
}

const void* data_get(data_manager* self, const char* key, int zero) {
    const auto found = host().values.find(key);
    HOST_CALL(data, "data_get \"%s\" %d", key, zero);
    return found == host().values.end() ? nullptr : &found->second;
}

int register_extension(renderext_manager* self, const renderext_descriptor* descriptor) {
    HOST_CALL(renderext, "register_extension \"%s\"", descriptor->name);
    host().extension = descriptor;
    return 77;
}

int add_listener(event_manager* self, const char* event, kora_event_callback callback, void* user) {
    HOST_CALL(events, "add_listener \"%s\"", event);
    host().listeners.push_back({event, callback, user});
    return 77;
}

int create_pool(resource_manager* self, const char* type, void* parameter, kora_pool_alloc alloc,
                kora_pool_release release, int zero) {
    HOST_CALL(resources, "create_pool \"%s\" %d %d", type,
              static_cast<int>(reinterpret_cast<intptr_t>(parameter)), zero);
    pool.alloc = alloc;
    pool.release = release;
    return 77;
}

kora_reference* build_shader(const char* name, va_list args) {
    auto& state = host();
    if (state.refused.contains(name)) return nullptr;
    const auto found = pool.shaders.find(name);
    if (found != pool.shaders.end()) return found->second;
    state.building = name;
    ++recorded().depth;
    kora_reference* made = pool.alloc(host_app(), nullptr, nullptr, name, args);
    --recorded().depth;
    state.building.clear();
    if (!made) return nullptr;
    made->host_block = std::malloc(3); // the pool's own block, freed by the release callback
    return pool.shaders[name] = made;
}

kora_reference* image_reference(const char* name) {
    if (!host().images.contains(name)) return nullptr;
    return reinterpret_cast<kora_reference*>(&pool.image_handles[name]);
}

kora_reference* get_reference(resource_manager* self, const char* type, const char* name, ...) {
    check_service(self, &resources, __func__);
    va_list args;
    va_start(args, name);
    kora_reference* reference = nullptr;
    if (std::string(type) == "shader") {
        reference = build_shader(name, args);
    } else if (std::string(type) == "image") {
        if (va_arg(args, void*) != nullptr || va_arg(args, int) != 0)
            fault("an image is acquired with (null, 0)");
        reference = image_reference(name);
    } else {
        fault("no pool \"%s\"", type);
    }
    va_end(args);
    record(channel::host, "get_reference \"%s\" \"%s\"%s", type, name, reference ? "" : " -> null");
    if (reference) ++host().held[std::string(type) + " " + name];
    return reference;
}

// "TYPE NAME" of a reference, or "" after a fault.
std::string reference_name(const kora_reference* reference, const char* operation) {
    for (const auto& [name, shader] : pool.shaders)
        if (shader == reference) return "shader " + name;
    for (const auto& [name, handle] : pool.image_handles)
        if (static_cast<const void*>(&handle) == reference) return "image " + name;
    fault("%s: not a reference of this host: %p", operation, static_cast<const void*>(reference));
    return "";
}

void discard_shader(const std::string& name) {
    kora_reference* reference = pool.shaders.extract(name).mapped();
    ++recorded().depth;
    pool.release(nullptr, nullptr, nullptr, reference);
    --recorded().depth;
}

int release_reference(resource_manager* self, kora_reference* reference) {
    check_service(self, &resources, __func__);
    const std::string name = reference_name(reference, "release");
    if (name.empty()) return 0;
    record(channel::host, "release \"%s\"", name.substr(name.find(' ') + 1).c_str());
    if (host().held[name] <= 0) fault("%s released too often", name.c_str());
    if (--host().held[name] == 0) host().held.erase(name);
    if (name.starts_with("shader ") && !host().held.contains(name) && !host().keep_shaders)
        discard_shader(name.substr(7));
    return 77;
}

void* get_data(resource_manager* self, kora_reference* reference) {
    const std::string name = reference_name(reference, "get data");
    HOST_CALL(resources, "get_data \"%s\"", name.substr(name.find(' ') + 1).c_str());
    if (name.starts_with("image ")) {
        host_image& image = host().images.at(name.substr(6));
        return image.data ? &image : nullptr;
    }
    if (name.empty() || host().without_data.contains(name.substr(7))) return nullptr;
    return reference->data && host().other_record ? host().other_record(reference->data) : reference->data;
}

char* resolve_path(resource_manager* self, const char* name) {
    HOST_CALL(resources, "resolve_path \"%s\"", name);
    if (host().unresolved.contains(name)) return nullptr;
    return host().copy((name[0] == '/' ? std::string(name) : host().root + "/" + name).c_str());
}

int describe_image(graphics_manager* self, void* object, int one, image_info* info, size_t size) {
    const auto* image = static_cast<const host_image*>(object);
    HOST_CALL(graphics, "describe_image %d %d", one, static_cast<int>(size));
    if (size != sizeof *info) fault("wrong size of an image_info");
    if (host().silent.contains("describe_image")) return 0;
    std::memset(info, 0xA5, sizeof *info);
    info->texture = image->texture;
    info->image_width = image->width;
    info->image_height = image->height;
    info->buffer_width = image->buffer_width;
    info->buffer_height = image->buffer_height;
    info->bytes_per_pixel = image->bytes_per_pixel;
    info->pixels = image->pixels.empty() ? nullptr : image->pixels.data();
    return 0; // not a sign of success
}

void get_origin(render_canvas* self, int32_t* x, int32_t* y) {
    HOST_CALL(canvas, "get_origin");
    *x = host().origin_x;
    *y = host().origin_y;
}

void display_info(render_canvas* self, float* sx, float* sy, float* tx, float* ty, int32_t* rotation) {
    HOST_CALL(canvas, "gles_display_info");
    *sx = host().sx;
    *sy = host().sy;
    *tx = host().tx;
    *ty = host().ty;
    *rotation = host().rotation;
}

kora_slot find_service(render_canvas* self, const char* name) {
    HOST_CALL(canvas, "find_service \"%s\"", name);
    return host().display_info ? reinterpret_cast<kora_slot>(&display_info) : nullptr;
}

void is_surface(render_canvas* self, int32_t* flag) {
    HOST_CALL(canvas, "is_surface");
    *flag = host().surface;
}

void timing_hook(app_record* given, const char* category, const char* phase, const char* label,
                 int64_t elapsed) {
    record(channel::host, "timing %s %s %s %s %lld", app_name(given), category, phase, label,
           static_cast<long long>(elapsed));
}

template <class T> T* unless_absent(const char* name, T& service) {
    return host().absent.contains(name) ? nullptr : &service;
}

void build_records() {
    std::memset(&app, 0xA5, sizeof app);
    std::memset(&services, 0xA5, sizeof services);
    fill_slots(data, renderext, events, graphics, resources, canvas);
    app.services = &services;
    data.get = data_get;
    renderext.register_extension = register_extension;
    events.add_listener = add_listener;
    graphics.describe_image = describe_image;
    resources.create_pool = create_pool;
    resources.get_reference = get_reference;
    resources.release = release_reference;
    resources.get_data = get_data;
    resources.resolve_path = resolve_path;
    canvas.get_origin = get_origin;
    canvas.find_service = find_service;
    canvas.is_surface = is_surface;
}

} // namespace

// ---- For tests ------------------------------------------------------------------------------------

host_state& host() {
    static host_state instance;
    return instance;
}

void host_reset() {
    const int live_maps = host().live_maps;
    host() = {};
    host().live_maps = live_maps;
    build_records();
}

app_record* host_app() {
    services.data = unless_absent("data", data);
    services.renderext = unless_absent("renderext", renderext);
    services.event = unless_absent("event", events);
    services.graphics = unless_absent("graphics", graphics);
    services.resource = unless_absent("resource", resources);
    app.timing_hook = host().timing ? timing_hook : nullptr;
    return &app;
}

render_canvas* host_canvas() {
    return &canvas;
}

kora_reference* host_get_shader(const char* name, const void* description) {
    return get_reference(&resources, "shader", name, description);
}

void* host_get_data(kora_reference* reference) {
    return get_data(&resources, reference);
}

void host_release(kora_reference* reference) {
    release_reference(&resources, reference);
}

void host_purge_shaders() {
    for (const auto& [name, reference] : std::map(pool.shaders))
        if (!host().held.contains("shader " + name)) discard_shader(name);
}

void host_fire(const char* event) {
    for (const host_listener& l : host().listeners)
        if (l.event == event) l.callback(&app, nullptr, l.user);
}

// ---- The library ----------------------------------------------------------------------------------

extern "C" {

void kora_app_vlog(app_record* given, int level, const char* format, va_list args) {
    const std::string text = vprint(format, args);
    if (level == -1)
        record(channel::diag, "%s %s", app_name(given), text.c_str());
    else
        record(channel::log, "%d %s %s", level, app_name(given), text.c_str());
}

void kora_app_log(app_record* given, int level, const char* format, ...) {
    va_list args;
    va_start(args, format);
    kora_app_vlog(given, level, format, args);
    va_end(args);
}

void kor_renderext_common_parse(int32_t id, const void* value, renderext_instance* rext) {
    record(channel::host, "common_parse %d", id);
    if (id == 9 && value) rext->alpha = get<uint32_t>(value, 0);
}

void kor_rect_to_size(const kor_rect* rect, kor_size* size) {
    record(channel::host, "rect_to_size");
    *size = {rect->x2 - rect->x1, rect->y2 - rect->y1};
}

uint64_t kor_snapshot_time(void) {
    record(channel::host, "snapshot_time");
    // Beyond 32 bits, so that a narrowed difference shows.
    return pool.clock += 0x100000007ull;
}

void kor_create_control_data_key(const control_record*, const char* name, char* buffer, size_t size) {
    if (size != 256) fault("data key buffer of %d bytes", static_cast<int>(size));
    std::snprintf(buffer, size, "ctl.%s", name);
}

kor_string_map* kor_string_map_create(int32_t initial_size) {
    record(channel::map, "map_create %d", initial_size);
    if (host().silent.contains("string_map_create")) return nullptr;
    ++host().live_maps;
    return new kor_string_map;
}

void kor_string_map_set(kor_string_map* map, const char* key, void* value) {
    record(channel::map, "map_set \"%s\"", key);
    // Nothing is kept under an empty key.
    if (map && *key && !host().silent.contains("string_map_set")) (*map)[key] = value;
}

void* kor_string_map_get(kor_string_map* map, const char* key) {
    record(channel::lookup, "map_get \"%s\"", key);
    if (!map) return nullptr;
    const auto found = map->find(key);
    return found == map->end() ? nullptr : found->second;
}

void kor_string_map_traverse(kor_string_map* map, kor_string_map_callback callback, void* user, int zero) {
    record(channel::map, "map_traverse %d", zero);
    if (!map) return fault("a null map cannot be walked");
    for (const auto& [key, value] : *map)
        if (callback(key.c_str(), value, user)) break;
}

void kor_string_map_destroy(kor_string_map* map, kor_string_map_callback callback, void* user) {
    record(channel::map, "map_destroy");
    if (!map || !callback) return fault("a map is destroyed with a callback for each entry");
    for (const auto& [key, value] : *map)
        callback(key.c_str(), value, user);
    delete map;
    --host().live_maps;
}

} // extern "C"
