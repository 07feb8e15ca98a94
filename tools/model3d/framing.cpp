#include "framing.h"

#include "attributes.h"
#include "common/report.h"
#include "model3d/math.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string_view>

namespace {

// Empty space around the sphere.
constexpr float margin = 1.05f;

// The last value given, or null.
const std::string* find(const attribute_values& given, std::string_view name) {
    const auto found =
        std::find_if(given.rbegin(), given.rend(), [&](const auto& value) { return value.first == name; });
    return found == given.rend() ? nullptr : &found->second;
}

// The host has accepted the text as a number.
float number(const attribute_values& given, std::string_view name) {
    const std::string* text = find(given, name);
    return text ? strtof(text->c_str(), nullptr) : 0;
}

float radians(float deg) {
    return deg / 180 * std::numbers::pi_v<float>;
}

// A turn about x after a turn about y.
void turn(float v[3], float about_x, float about_y) {
    float rx[16], ry[16];
    mat_rotate_x(rx, about_x);
    mat_rotate_y(ry, about_y);
    mat_dirvecmul(ry, v, v);
    mat_dirvecmul(rx, v, v);
}

// The same turn backwards.
void turn_back(float v[3], float about_x, float about_y) {
    float rx[16], ry[16];
    mat_rotate_x(rx, -about_x);
    mat_rotate_y(ry, -about_y);
    mat_dirvecmul(rx, v, v);
    mat_dirvecmul(ry, v, v);
}

float distance_to_see(float radius, float fov_deg, const kor_rect& rect) {
    const float width = static_cast<float>(rect.x2 - rect.x1), height = static_cast<float>(rect.y2 - rect.y1);
    const float vertical = radians(fov_deg) / 2;
    const float horizontal = width < height ? std::atan(std::tan(vertical) * width / height) : vertical;
    return margin * radius / std::sin(horizontal);
}

} // namespace

void frame_model(const host_app& host, kora_control* control, const attribute_values& given, float radius) {
    for (const char* name : {"camera_position_x", "camera_position_y", "camera_position_z"}) {
        if (find(given, name)) return default_field_of_view(host, control, given);
    }
    float fov_deg =
        find(given, "camera_field_of_view") ? number(given, "camera_field_of_view") : framed_fov_deg;
    const kora_attribute* const fov = find_attribute(host, "camera_field_of_view");
    const bool in_range = !fov || (fov_deg > fov->minimum && fov_deg <= fov->maximum);
    if (!in_range) fov_deg = strtof(fov->initial, nullptr); // as the plug-in does
    kora_control_set_float(control, "camera_field_of_view", fov_deg);

    float distance = distance_to_see(radius, fov_deg, kora_control_record(control)->rect);
    if (!std::isfinite(distance)) notice("the model has no finite size: the camera cannot frame it");
    if (!std::isfinite(distance) || distance <= 0) distance = 1;

    const bool turned = find(given, "azimuth") || find(given, "elevation");
    std::string mode = find(given, "camera_mode") ? *find(given, "camera_mode") : "";
    if (mode.empty() && turned) {
        mode = "orbit";
        kora_control_set(control, "camera_mode", "orbit");
    }
    const float azimuth = radians(number(given, "azimuth"));
    const float elevation = radians(number(given, "elevation")) * (mode == "fly" ? -1.0f : 1.0f);

    // Orbit turns the scene before it is seen from the camera's place; the others turn the camera.
    const float model[3] = {number(given, "model_position_x"), number(given, "model_position_y"),
                            number(given, "model_position_z")};
    float centre[3] = {model[0], model[1], model[2]};
    float back[3] = {0, 0, distance};
    if (mode == "orbit") {
        turn(centre, elevation, azimuth);
    } else {
        turn_back(back, elevation, azimuth);
    }
    float camera[3];
    vec_add(centre, back, camera);
    kora_control_set_float(control, "camera_position_x", camera[0]);
    kora_control_set_float(control, "camera_position_y", camera[1]);
    kora_control_set_float(control, "camera_position_z", camera[2]);

    // Automatic clip planes go by the z coordinates alone, which is right for an untouched view only.
    const bool clip_given = find(given, "camera_clip_near") || find(given, "camera_clip_far");
    const float assumed = std::fabs(model[2] - camera[2]);
    if (!clip_given && std::fabs(assumed - distance) > 0.001f * distance) {
        kora_control_set_float(control, "camera_clip_near",
                               std::max(distance - 1.5f * radius, 0.01f * distance));
        kora_control_set_float(control, "camera_clip_far", distance + 1.5f * radius);
    }
}

void default_field_of_view(const host_app& host, kora_control* control, const attribute_values& given) {
    if (find(given, "camera_field_of_view")) return;
    const kora_attribute* const fov = find_attribute(host, "camera_field_of_view");
    if (fov && fov->initial) kora_control_set(control, fov->name, fov->initial);
}
