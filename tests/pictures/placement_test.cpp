// Camera, placement of the model and of what a scene file holds, clip planes and culling against the
// formulas.
#include "stage.h"

namespace pictures {
namespace {

class placement : public stage {};

// A plate with an arm, a ball on the arm, a lantern on the ball, and a sky of two lamps. No matrix commutes
// with another, and every group has a matrix and a movement.
scene tree() {
    const auto group = [](vec translation, vec rotation, vec scaling = {1, 1, 1}) {
        model m;
        m.mesh_matrix = {{{0.8, -0.3, 0, 0.2}, {0.6, 0.4, 0, -0.1}, {0, 0, 1.2, 0.1}, {0, 0, 0, 1}}};
        m.matrix = {{{0.96, 0, 0.28, 0.1}, {0, 1, 0, 0.2}, {-0.28, 0, 0.96, 0.3}, {0, 0, 0, 1}}};
        m.translation = translation;
        m.rotation = rotation;
        m.scaling = scaling;
        return m;
    };
    model plate = group({-0.1, -0.2, -0.2}, {-20, 15, 10}, {1.1, 0.9, 0.8});
    add_material(plate, {0.2, 0.2, 0.2}, {0.8, 0.8, 0.8}, {0.2, 0.2, 0.2}, 10);
    add_box(plate, {}, {1.2, 1, 0.1}, true);
    model arm = group({-0.4, 0.3, 0.5}, {30, 20, -40}, {0.6, 1, 0.8});
    add_material(arm, {0.2, 0, 0}, {0.8, 0.5, 0.4}, {0.3, 0.3, 0.3}, 20);
    arm.materials.back().emissive = {0.1, 0, 0.2};
    add_prism(arm, {}, 0.4, 0.6, 5, true);
    model ball = group({0.7, -0.4, 0.3}, {10, 50, 25}, {0.7, 0.9, 1.3});
    add_material(ball, {0, 0.2, 0}, {0.5, 0.9, 0.6}, {0.5, 0.5, 0.5}, 30);
    add_sphere(ball, {}, 0.5, 16, 8, true);
    model lantern = group({0.5, 0.7, 0.8}, {0, 40, 0});
    lantern.lamps = {{lamp::point, {1, 0.8, 0.2}, 60}};
    model sky = group({-0.9, 0.4, 1.2}, {60, -20, 70});
    sky.lamps = {{lamp::directional, {0.3, 0.5, 1}, 70}, {lamp::point, {1, 0.2, 0.4}, 50}};
    ball.groups = {lantern};
    arm.groups = {ball};
    plate.groups = {arm, sky};
    plate.lamps = {{lamp::directional, {1, 1, 1}, 25}};
    scene s = small_scene(plate);
    s.file = "model.qel";
    attributes_set(s, "camera_clip_near=1 camera_clip_far=9");
    return s;
}

TEST_F(placement, follows_every_attribute_of_camera_and_model) {
    // clang-format off
    const struct {
        const char *name, *given, *shown; // what is shown has to make a difference to what is given
    } rows[] = {
        // A field of view that is none is replaced by 60 degrees.
        {"camera-aside", "camera_position_z=3 camera_field_of_view=0", "camera_position_x=0.7 camera_position_y=-0.5"},
        {"legacy-around", "camera_position_z=0.3 camera_clip_near=1 camera_clip_far=9", "azimuth=90 camera_position_x=-4 elevation=8"},
        {"fly-aside", "camera_field_of_view=181", "camera_mode=fly azimuth=10 elevation=-7 camera_position_y=0.4"},
        {"orbit-behind", "", "camera_mode=orbit azimuth=190 elevation=30"},
        {"orbit-offset", "camera_mode=orbit", "azimuth=30 camera_position_x=0.5 elevation=-25"},
        {"wide", "camera_position_z=2.4", "camera_field_of_view=90"},
        {"moved", "camera_field_of_view=-20", "model_position_x=0.4 model_position_y=0.3 model_position_z=-1 "
                  "model_orientation_phi=30 model_orientation_theta=50 model_orientation_psi=-20"},
        {"slice", "camera_mode=orbit azimuth=50", "camera_clip_near=3.7 camera_clip_far=4.2"},
        // The far plane is then at twice the distance of the near one.
        {"near-alone", "model_position_z=1.5", "camera_clip_near=1.3"},
        // The automatic planes follow the distance along z, not along the view.
        {"automatic-far", "camera_position_z=2", "camera_position_y=3 elevation=56"},
        {"automatic-moved", "camera_field_of_view=30", "model_position_z=-3"},
        // The camera is inside the model: vertices behind it must not turn up in front.
        {"inside", "camera_position_x=0.1 camera_field_of_view=100", "camera_position_z=0.4"},
    };
    // clang-format on
    for (const auto& row : rows) {
        scene s = lit_scene(landmark());
        attributes_set(s, row.given);
        check_models(s, row.name, row.shown);
    }
}

TEST_F(placement, of_groups_and_lamps) {
    for (const char* shown : {"", "zero_deformers=1", "zero_deformers=1 ignore_bind_transforms=0",
                              "ignore_bind_transforms=0 lighting_mode=model",
                              "lighting_mode=model model_orientation_theta=30 model_position_x=0.3"})
        check_models(tree(), shown, shown, {"gouraud", "blinn-phong"});
}

// Two controls take turns with the same programs, so neither may rely on what it sent to them last.
TEST_F(placement, survives_new_values_between_frames) {
    struct player {
        scene shown;
        kora_control* control;
    } players[2] = {{tree(), nullptr}, {lit_scene({}), nullptr}};
    add_material(players[1].shown.content, {0.2, 0.2, 0.5}, {0.3, 0.8, 0.9}, {0.7, 0.3, 0.3}, 40, 0.6);
    add_sphere(players[1].shown.content, {0.2, 0, 0}, 1, 12, 6, false);
    for (player& p : players) {
        const std::string name = "model" + std::to_string(&p - players);
        p.control = open(p.shown, write(p.shown.content, name, p.shown.file), name.c_str());
    }
    static const char* const steps[][2] = {
        {"", "shading_model=flat"},
        {"camera_mode=orbit azimuth=50 ignore_bind_transforms=0", "shading_model=gouraud alpha=100"},
        {"shading_model=flat model_orientation_psi=30 zero_deformers=1", "shading_model=blinn-phong"},
        {"shading_model=blinn-phong light_internal_azimuth=10 alpha=200", "control_lightness=0.5"},
        {"camera_mode=legacy azimuth=5 culling_mode=back lighting_mode=model zero_deformers=0",
         "camera_position_z=5"},
    };
    int number = 0;
    for (const auto& step : steps) {
        for (player& p : players) {
            attributes_set(p.shown, step[&p - players]);
            for (const auto& [name, value] : p.shown.attributes)
                ASSERT_TRUE(kora_control_set(p.control, name.c_str(), value.c_str())) << kora_app_error(app_);
            compare(reference_render(p.shown), frame(p.shown, p.control), "frame" + std::to_string(number++));
        }
    }
    for (player& p : players)
        kora_control_destroy(p.control);
}

} // namespace
} // namespace pictures
