// Light, materials and blending against the formulas, in all shading models.
#include "stage.h"

namespace pictures {
namespace {

class shading : public stage {};

void add_plastic(model& m) {
    add_material(m, {0.3, 0.1, 0.1}, {0.6, 0.4, 0.2}, {0.5, 0.5, 0.6}, 20);
}

// A ball of the material added last.
model ball(model m) {
    add_sphere(m, {}, 1.3, 24, 12, true);
    return m;
}

// Turned, so that no face looks straight at the camera.
scene turned(model m) {
    scene s = lit_scene(std::move(m));
    attributes_set(s, "model_orientation_phi=25 model_orientation_theta=-35");
    return s;
}

TEST_F(shading, of_solids_with_given_and_with_computed_normals) {
    std::map<std::string, model> solids;
    for (const bool given : {true, false}) {
        const auto solid = [&](const char* name) -> model& {
            model& m = solids[std::string(given ? "" : "smooth-") + name];
            add_plastic(m);
            return m;
        };
        // Coarse where the normals are computed, so that every face counts.
        add_sphere(solid("sphere"), {}, 1.2, given ? 24 : 9, given ? 12 : 5, given);
        add_box(solid("box"), {}, {0.9, 0.7, 0.8}, given);
        add_prism(solid("prism"), {}, 1, 0.6, given ? 7 : 5, given);
        // Solids that touch share positions, hence computed normals, also across materials.
        model& pair = solid("pair");
        add_box(pair, {-0.6, 0, 0}, {0.6, 0.6, 0.6}, given);
        add_material(pair, {}, {0.1, 0.3, 0.8}, {1, 1, 1}, 50);
        add_box(pair, {0.6, 0, 0}, {0.6, 0.6, 0.6}, given);
    }
    for (const auto& [name, content] : solids)
        check_models(turned(content), name);
}

TEST_F(shading, of_materials_that_say_little) {
    model bare; // no library: white, without highlights
    add_sphere(bare, {}, 1.2, 16, 8, true);
    // Faces before the first material are lost as soon as there is one.
    model late = bare;
    add_plastic(late);
    add_box(late, {0, 0, 1.3}, {0.4, 0.8, 0.2}, true);
    check_models(turned(bare), "bare");
    check_models(turned(late), "late");
    // The default exponent, 0, lights everything, also what is turned away: 0 to the power of 0 is 1.
    model defaults;
    defaults.materials.emplace_back();
    check_models(turned(ball(defaults)), "defaults");
}

TEST_F(shading, of_highlights_by_exponent) {
    for (const double exponent : {0.5, 1.0, 5.0, 30.0, 200.0, 1000.0}) {
        model m;
        add_material(m, {}, {0.1, 0.1, 0.3}, {0.7, 0.6, 0.3}, exponent);
        scene s = lit_scene(ball(m));
        attributes_set(s, "light_internal_elevation=75");
        check_models(s, std::to_string(exponent), "", {"gouraud", "blinn-phong"});
    }
}

TEST_F(shading, follows_the_attributes_of_light_and_control) {
    const struct {
        const char *name, *changes;
    } rows[] = {
        {"light-from-below-right", "light_internal_azimuth=-150 light_internal_elevation=20"},
        {"light-from-behind", "light_internal_azimuth=50 light_internal_elevation=-40"},
        {"light-too-bright", "light_internal_intensity=2.5"},
        {"light-off", "light_internal_intensity=0"},
        {"lights-of-a-model-without", "lighting_mode=model"},
        {"ambient-beyond", "control_ambient=2"},
        {"lightness-none", "control_lightness=0"},
        {"lightness-beyond", "control_lightness=1.8"},
        {"alpha-30", "alpha=30"},
    };
    scene usual; // the light stands behind the camera
    add_plastic(usual.content);
    add_sphere(usual.content, {}, 1.3, 24, 12, true);
    attributes_set(usual, "camera_position_z=4"); // with the default field of view
    for (const auto& row : rows)
        check_models(usual, row.name, row.changes, {"gouraud", "blinn-phong"});
    check(usual, "flat", "shading_model=flat control_lightness=0.5 control_ambient=0.9");
}

TEST_F(shading, of_transparent_layers_in_the_order_of_the_file) {
    // Two sheets in front of a ball, the nearer one first: it hides what is drawn behind it later, although
    // it lets the background through. The third sheet comes on top of everything.
    model m;
    add_material(m, {0.2, 0.2, 0.2}, {0.9, 0.1, 0.1}, {0, 0, 0}, 1, 0.5);
    add_quad(m, {-0.7, 0.2, 0.8}, 0.5, 0.8);
    add_plastic(m);
    add_sphere(m, {}, 1, 20, 10, true);
    add_material(m, {0, 0, 0}, {0.1, 0.8, 0.3}, {0.3, 0.3, 0.3}, 8, 0.25);
    add_quad(m, {0.4, -0.3, 1.2}, 0.9, 0.5);
    add_material(m, {0, 0, 0}, {0.2, 0.2, 1}, {0, 0, 0}, 8, 0.7);
    add_quad(m, {0.6, 0.1, 1.5}, 0.3, 0.7);
    add_quad(m, {0.6, 0.1, 1.5}, 0.3, 0.7); // the same place again: not nearer, so not drawn
    scene s = lit_scene(m);
    check_models(s, "opaque-control");
    check_models(s, "half-control", "alpha=128");
    s.background = {0, 0, 0, 0};
    check_models(s, "clear-background");
}

} // namespace
} // namespace pictures
