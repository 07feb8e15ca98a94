// An extension "model3d" that fails to draw, in the way that the option text names.
#include "kora/kora.h"

#include <dlfcn.h>

#include <cstring>
#include <string_view>

namespace {

std::string_view way;

void parse(int32_t, const void*, renderext_instance*) {}

int render(render_canvas*, control_record* control, renderext_instance*) {
    if (way == "shader") kora_app_log(control->app, 0, "model3d: no shader today");
    if (way == "load") kora_app_log(control->app, 1, "model3d: could not load model: it");
    if (way == "warning") kora_app_log(control->app, 1, "only a warning");
    if (way == "gl") reinterpret_cast<void (*)(unsigned)>(dlsym(RTLD_DEFAULT, "glEnable"))(0xffff);
    return 0;
}

constexpr renderext_arg args[] = {
    {12, "filename", "1s0"}, {18, "camera_field_of_view", "4f1"}, {0, nullptr, nullptr}};
const renderext_descriptor descriptor = {"model3d", 1,       args,    parse,   render, nullptr,
                                         nullptr,   nullptr, nullptr, nullptr, nullptr};

int init(app_record* app, const char* options) {
    way = options ? options : "";
    app->services->renderext->register_extension(app->services->renderext, &descriptor);
    return 0;
}

} // namespace

extern "C" __attribute__((visibility("default"))) int kora_plugin_create(plugin_record* record) {
    *record = {strdup("failing"), nullptr, init, nullptr, {}};
    return 0;
}
