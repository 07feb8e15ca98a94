#include "rext/target.h"

#include "model3d/math.h"
#include "scene/bindings.h"

#include <algorithm>

namespace {

// Adds one half and truncates towards zero; 0 when the result does not fit.
int32_t pixels(float value) {
    const float rounded = value + 0.5f;
    return rounded > -2147483648.0f && rounded < 2147483648.0f ? static_cast<int32_t>(rounded) : 0;
}

// A negative size would be a GL error: such a control gets an empty viewport.
void set_viewport(int64_t x, int64_t y, int64_t width, int64_t height) {
    const auto within = [](int64_t value, int64_t least) {
        return static_cast<int>(std::clamp<int64_t>(value, least, INT32_MAX));
    };
    glViewport(within(x, INT32_MIN), within(y, INT32_MIN), within(width, 0), within(height, 0));
}

} // namespace

void target_place(render_canvas* canvas, const control_record* control, const kor_size& size,
                  const GLint host_viewport[4], const float projection[16], float out[16]) {
    app_record* const app = control->app;
    const GLint target_width = host_viewport[2];
    const GLint target_height = host_viewport[3];
    int32_t ox = 0;
    int32_t oy = 0;
    canvas->get_origin(canvas, &ox, &oy);
    const kor_rect& rect = control->rect;

    // The bottom left corner and the size in pixels of the physical display, y downwards.
    int64_t x = int64_t{ox} + rect.x1;
    int64_t y = int64_t{oy} + rect.y2;
    int64_t width = size.width;
    int64_t height = size.height;
    int32_t rotation_deg = 0;
    const auto display_info =
        reinterpret_cast<kora_display_info>(canvas->find_service(canvas, "gles_display_info"));
    if (display_info) {
        model3d_diag_log(nullptr, 8, "using gles_display_info to get screen size");
        float sx = 1.0f, sy = 1.0f, tx = 0.0f, ty = 0.0f;
        display_info(canvas, &sx, &sy, &tx, &ty, &rotation_deg);
        model3d_diag_log(nullptr, 8, "sx=%f sy=%f rotation=%d", double{sx}, double{sy}, rotation_deg);
        x = pixels(tx + sx * static_cast<float>(static_cast<double>(ox) + rect.x1));
        y = pixels(ty + sy * static_cast<float>(static_cast<double>(oy) + rect.y2));
        width = pixels(sx * static_cast<float>(width));
        height = pixels(sy * static_cast<float>(height));
    } else {
        model3d_diag_log(app, 8, "gles_display_info not available");
    }

    int32_t is_surface = 0;
    canvas->is_surface(canvas, &is_surface);
    float turn[16];
    model3d_diag_log_matrix(app, 5, "pre-transformed projection matrix", projection);
    if (is_surface) {
        model3d_diag_log(nullptr, 8, "rendering to surface");
        mat_scale(turn, 1.0f, -1.0f, 1.0f);
        glFrontFace(GL_CW); // the flip turns every triangle round
        mat_mul(turn, projection, out);
        set_viewport(int64_t{ox} + rect.x1, int64_t{oy} + rect.y1, size.width, int64_t{size.height} - 1);
        return;
    }
    model3d_diag_log(nullptr, 5, "rendering to frame buffer");
    mat_rotate_z(turn, (-static_cast<float>(rotation_deg) / 180.0f) * 3.1415927f);
    mat_mul(turn, projection, out);
    switch (rotation_deg) {
    case 180:
        set_viewport(target_width - width - x, y - height, width, height);
        break;
    case 270:
        set_viewport(y - height, x, height, width);
        break;
    case 90:
        set_viewport(target_width - y, target_height - x - width, height, width);
        break;
    default:
        set_viewport(x, target_height - y, width, height);
        break;
    }
}
