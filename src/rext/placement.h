// Camera, model and light: the matrices and the vector that follow from the attributes.
#ifndef REXT_PLACEMENT_H
#define REXT_PLACEMENT_H

#include "rext/state.h"

// model = T(position) * Rz(psi) * Ry(theta) * Rx(phi).
void update_modelmat(model3d_state* state);

// view: legacy Rx(el) * Ry(az) * T(-c), fly Rx(-el) * Ry(az) * T(-c), orbit T(-c) * Rx(el) * Ry(az).
void update_viewmat(model3d_state* state);

// The field of view of a control that was never given one.
constexpr float default_fovy_deg = 60.0f;

// projection, for a control of this size in pixels. Automatic clip planes enclose the model's radius.
void update_camera(model3d_state* state, int32_t width, int32_t height);

// Rz(azimuth) * Rx(elevation) * (0, 1, 0): towards the light.
void update_light_direction(model3d_state* state);

#endif
