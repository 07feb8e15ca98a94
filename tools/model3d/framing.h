// Where the camera stands when nobody says: far enough away to see the whole model.
#ifndef TOOLS_MODEL3D_FRAMING_H
#define TOOLS_MODEL3D_FRAMING_H

#include <string>
#include <utility>
#include <vector>

#include "kora/host.h"

using attribute_values = std::vector<std::pair<std::string, std::string>>;

// Field of view of a framed model, degrees, unless it is given.
constexpr float framed_fov_deg = 40;

// Field of view otherwise.
constexpr float plain_fov_deg = 60;

// Places the camera of a control that has all `given` attributes, so that the sphere of `radius` about
// the model's position fills it. Does nothing when a camera position is given.
void frame_model(kora_control* control, const attribute_values& given, float radius);

// Gives the control the field of view it has when none was set.
void default_field_of_view(kora_control* control, const attribute_values& given);

#endif
