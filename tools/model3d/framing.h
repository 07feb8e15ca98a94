// Where the camera stands when nobody says: far enough away to see the whole model.
#ifndef TOOLS_MODEL3D_FRAMING_H
#define TOOLS_MODEL3D_FRAMING_H

#include "common/report.h"

#include <string>
#include <utility>
#include <vector>

using attribute_values = std::vector<std::pair<std::string, std::string>>;

// Field of view of a framed model, degrees, unless it is given.
constexpr float framed_fov_deg = 40;

// Places the camera of a control that has all `given` attributes, so that the sphere of `radius` about
// the model's position fills it. Does nothing when a camera position is given.
void frame_model(const host_app& host, kora_control* control, const attribute_values& given, float radius);

// Sets the field of view to its default when it is not given.
void default_field_of_view(const host_app& host, kora_control* control, const attribute_values& given);

#endif
