#include "canvas.h"

#include <cstring>

namespace {

const kora_target& target_of(render_canvas* self) {
    return static_cast<target_canvas*>(self)->target;
}

void canvas_get_origin(render_canvas* self, int32_t* x, int32_t* y) {
    *x = target_of(self).origin_x;
    *y = target_of(self).origin_y;
}

void canvas_is_surface(render_canvas* self, int32_t* flag) {
    *flag = target_of(self).is_surface != 0;
}

void display_info(render_canvas* self, float* sx, float* sy, float* tx, float* ty, int32_t* rotation_deg) {
    const kora_target& target = target_of(self);
    *sx = target.scale_x;
    *sy = target.scale_y;
    *tx = target.translate_x;
    *ty = target.translate_y;
    *rotation_deg = target.rotation_deg;
}

kora_slot canvas_find_service(render_canvas* self, const char* name) {
    if (!name || strcmp(name, "gles_display_info") != 0 || !target_of(self).has_display_info) return nullptr;
    return reinterpret_cast<kora_slot>(display_info);
}

} // namespace

target_canvas::target_canvas() : render_canvas{} {
    target.scale_x = 1;
    target.scale_y = 1;
    get_origin = canvas_get_origin;
    find_service = canvas_find_service;
    is_surface = canvas_is_surface;
}
