#include "attributes.h"

#include <algorithm>
#include <cstdio>

#include "common/json.h"

namespace {

struct attribute_row {
    const char* name;
    const char* type;
    const char* unit;
    const char* initial;
    const char* meaning; // of a keyword attribute: its keywords
};

constexpr char keyword[] = "keyword";

// In the order of the plug-in's own table.
constexpr attribute_row rows[] = {
    {"x", "int", "pixels", "0", "left edge of the control"},
    {"y", "int", "pixels", "0", "top edge of the control"},
    {"width", "unsigned", "pixels", "the picture's", "width of the control"},
    {"height", "unsigned", "pixels", "the picture's", "height of the control"},
    {"color", "unsigned", "0xRRGGBB", "0", "not used by models"},
    {"valign", "unsigned", "", "0", "not used by models"},
    {"halign", "unsigned", "", "0", "not used by models"},
    {"rotation", "float", "degrees", "0", "not used by models"},
    {"linewidth", "unsigned", "pixels", "0", "not used by models"},
    {"alpha", "unsigned", "0 to 255", "255", "opacity of the whole control"},
    {"rot_center_x", "float", "pixels", "0", "not used by models"},
    {"rot_center_y", "float", "pixels", "0", "not used by models"},
    {"filename", "text", "path", "", "the model"},
    {"camera_position_x", "float", "model units", "0", "camera position"},
    {"camera_position_y", "float", "model units", "0", "camera position"},
    {"camera_position_z", "float", "model units", "0", "camera position"},
    {"azimuth", "float", "degrees", "0", "turn of the camera about the vertical axis"},
    {"elevation", "float", "degrees", "0", "turn of the camera about its horizontal axis"},
    {"camera_field_of_view", "float", "degrees", "60", "vertical; outside (0, 180]: 60"},
    {"model_position_x", "float", "model units", "0", "place of the model"},
    {"model_position_y", "float", "model units", "0", "place of the model"},
    {"model_position_z", "float", "model units", "0", "place of the model"},
    {"model_orientation_phi", "float", "degrees", "0", "turn of the model about x, first"},
    {"model_orientation_theta", "float", "degrees", "0", "turn of the model about y, second"},
    {"model_orientation_psi", "float", "degrees", "0", "turn of the model about z, last"},
    {"light_internal_azimuth", "float", "degrees", "0", "direction of the internal light"},
    {"light_internal_elevation", "float", "degrees", "90", "direction of the internal light"},
    {"light_internal_intensity", "float", "factor", "1", "brightness of the internal light"},
    {"shading_model", "text", keyword, "gouraud", "gouraud, blinn-phong, flat"},
    {"lighting_mode", "text", keyword, "internal", "internal, model"},
    {"camera_mode", "text", keyword, "legacy", "legacy, fly, orbit"},
    {"control_ambient", "float", "factor", "0", "ambient light"},
    {"control_lightness", "float", "factor", "0.75", "brightness of the whole picture"},
    {"culling_mode", "text", keyword, "off", "off, back"},
    {"ignore_bind_transforms", "int", "0 or 1", "1", "1: groups start without the file's matrices"},
    {"zero_deformers", "int", "0 or 1", "0", "1: groups start without the file's movements"},
    {"camera_clip_near", "float", "model units", "0", "near clip plane; both 0: by the radius"},
    {"camera_clip_far", "float", "model units", "0", "far clip plane; both 0: by the radius"},
};

} // namespace

void run_attributes(bool as_json) {
    if (as_json) {
        json list = json::array();
        for (const attribute_row& row : rows) {
            list.push_back({{"name", row.name},
                            {"type", row.type},
                            {"unit", row.unit},
                            {"default", row.initial},
                            {"description", row.meaning}});
        }
        print_json(list);
        return;
    }
    constexpr const char* line = "%-25s %-9s %-12s %-14s %s\n";
    printf(line, "NAME", "TYPE", "UNIT", "DEFAULT", "MEANING");
    for (const attribute_row& row : rows) {
        printf(line, row.name, row.type, row.unit, row.initial, row.meaning);
    }
    finish_output();
}

void check_attribute(std::string_view name, std::string_view value) {
    const auto* row =
        std::find_if(std::begin(rows), std::end(rows), [&](const auto& r) { return name == r.name; });
    if (row == std::end(rows)) {
        throw failure(exit_usage, "--set: unknown attribute \"" + std::string(name) +
                                      "\"; 'model3d attributes' lists them all");
    }
    if (row->unit != keyword) return;
    const std::string listed = ", " + std::string(row->meaning) + ", ";
    if (listed.find(", " + std::string(value) + ", ") == listed.npos) {
        notice("--set: " + std::string(name) + " knows no \"" + std::string(value) +
               "\" and stays as it was; " + "it takes one of " + row->meaning);
    }
}
