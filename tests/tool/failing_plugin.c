/* An extension "model3d" that fails to draw, in the way that the option text names. */
#define _GNU_SOURCE /* RTLD_DEFAULT */
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>

#include "kora/kora.h"

static const char* way;

static void parse(int32_t id, const void* value, renderext_instance* rext) {
    (void)id, (void)value, (void)rext;
}

static int render(render_canvas* canvas, control_record* control, renderext_instance* rext) {
    (void)canvas, (void)rext;
    if (strcmp(way, "shader") == 0) kora_app_log(control->app, 0, "model3d: no shader today");
    if (strcmp(way, "load") == 0) kora_app_log(control->app, 1, "model3d: could not load model: it");
    if (strcmp(way, "warning") == 0) kora_app_log(control->app, 1, "only a warning");
    if (strcmp(way, "gl") == 0) {
        void (*enable)(unsigned);
        *(void**)&enable = dlsym(RTLD_DEFAULT, "glEnable");
        enable(0xffff);
    }
    return 0;
}

static const renderext_arg args[] = {
    {12, "filename", "1s0"}, {18, "camera_field_of_view", "4f1"}, {0, NULL, NULL}};
static const renderext_descriptor descriptor = {
    .name = "model3d", .state_size = 1, .args = args, .parse = parse, .render = render};

static int init(app_record* app, const char* options) {
    way = options ? options : "";
    app->services->renderext->register_extension(app->services->renderext, &descriptor);
    return 0;
}

__attribute__((visibility("default"))) int kora_plugin_create(plugin_record* record) {
    memset(record, 0, sizeof *record);
    record->name = strdup("failing");
    record->init = init;
    return 0;
}
