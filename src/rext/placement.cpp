#include "rext/placement.h"

#include "model3d/math.h"
#include "scene/bindings.h"

#include <cmath>

void update_modelmat(model3d_state* state) {
    const float* const p = state->model_position;
    float move[16], rx[16], ry[16], rz[16], zy[16], zyx[16];
    mat_translate(move, p[0], p[1], p[2]);
    mat_rotate_x(rx, state->model_orientation[0]);
    mat_rotate_y(ry, state->model_orientation[1]);
    mat_rotate_z(rz, state->model_orientation[2]);
    mat_mul(rz, ry, zy);
    mat_mul(zy, rx, zyx);
    mat_mul(move, zyx, state->model);
}

void update_viewmat(model3d_state* state) {
    switch (state->camera_mode) {
    case camera_legacy:
        mat_look(state->view, state->camera_position, state->azimuth, state->elevation);
        break;
    case camera_fly:
        mat_look(state->view, state->camera_position, state->azimuth, -state->elevation);
        break;
    case camera_orbit:
        mat_look_orbit(state->view, state->camera_position, state->azimuth, state->elevation);
        break;
    default:
        break;
    }
}

void update_camera(model3d_state* state, int32_t width, int32_t height) {
    const float aspect = static_cast<float>(width) / static_cast<float>(height);
    float near = state->clip_near;
    float far = state->clip_far;
    if (near == 0.0f && far == 0.0f) {
        const float distance = fabsf(state->model_position[2] - state->camera_position[2]);
        const float reach = 1.5f * state->scene.root.radius;
        near = distance - reach;
        far = distance + reach;
    }
    if (!(near > 0.0f)) near = 0.1f;
    if (far < near) far = 2.0f * near;
    model3d_diag_log(nullptr, 6, "camera parameters: aspect: %f, near=%f, far=%f", double{aspect},
                     double{near}, double{far});
    const float fovy_deg = state->fovy_deg == 0.0f ? default_fovy_deg : state->fovy_deg;
    mat_persp(state->projection, fovy_deg, aspect, near, far);
}

void update_light_direction(model3d_state* state) {
    const float up[3] = {0.0f, 1.0f, 0.0f};
    float rx[16], rz[16], turn[16];
    mat_rotate_x(rx, state->light_elevation);
    mat_rotate_z(rz, state->light_azimuth);
    mat_mul(rz, rx, turn);
    mat_dirvecmul(turn, up, state->light_direction);
}
