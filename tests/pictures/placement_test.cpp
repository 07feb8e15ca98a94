// Camera, model placement, clip planes and culling against the formulas.
#include "stage.h"

namespace pictures {
namespace {

class placement : public stage {};

TEST_F(placement, follows_every_attribute_of_camera_and_model) {
    // `shown` has to make a difference, to what `given` says already.
    const struct {
        const char *name, *given, *shown;
    } rows[] = {
        {"camera-aside",  "camera_position_z=3",                                        "camera_position_x=0.7 camera_position_y=-0.5"                 },
        {"legacy",        "camera_mode=legacy",                                         "azimuth=-9 elevation=8"                                       },
        {"legacy-around", "camera_position_z=0.3 camera_clip_near=1 camera_clip_far=9",
         "azimuth=90 camera_position_x=-4"                                                                                                             },
        {"fly",           "",                                                           "camera_mode=fly elevation=9"                                  },
        {"fly-aside",     "",                                                           "camera_mode=fly azimuth=10 elevation=-7 camera_position_y=0.4"},
        {"orbit-side",    "camera_mode=orbit",                                          "azimuth=70"                                                   },
        {"orbit-behind",  "",                                                           "camera_mode=orbit azimuth=190 elevation=30"                   },
        {"orbit-above",   "camera_mode=orbit",                                          "azimuth=-40 elevation=60"                                     },
        {"orbit-offset",  "camera_mode=orbit",                                          "azimuth=30 camera_position_x=0.5 elevation=-25"               },
        {"narrow",        "",                                                           "camera_field_of_view=30"                                      },
        {"wide",          "camera_position_z=2.4",                                      "camera_field_of_view=90"                                      },
        {"moved",         "",                                                           "model_position_x=0.4 model_position_y=0.3 model_position_z=-1"},
        {"phi",           "",                                                           "model_orientation_phi=40"                                     },
        {"theta",         "",                                                           "model_orientation_theta=-50"                                  },
        {"psi",           "",                                                           "model_orientation_psi=75"                                     },
        {"all-angles",    "model_position_x=0.3",
         "model_orientation_phi=30 model_orientation_theta=50 model_orientation_psi=-20"                                                               },
        {"culled",        "",                                                           "culling_mode=back"                                            },
        {"near-plane",    "camera_clip_far=9",                                          "camera_clip_near=3.8"                                         },
        {"far-plane",     "camera_clip_near=1",                                         "camera_clip_far=3.9"                                          },
        {"slice",         "camera_mode=orbit azimuth=50",                               "camera_clip_near=3.7 camera_clip_far=4.2"                     },
 // The far plane is then at twice the distance of the near one.
        {"near-alone",    "model_position_z=1.5",                                       "camera_clip_near=1.3"                                         },
 // The automatic planes follow the distance along z, not along the view.
        {"automatic-far", "camera_position_z=2",                                        "camera_position_y=3 elevation=56"                             },
 // The camera is inside the model: vertices behind it must not turn up in front.
        {"inside",        "camera_position_x=0.1 camera_field_of_view=100",             "camera_position_z=0.4"                                        },
    };
    for (const auto& row : rows) {
        scene s = lit_scene(landmark());
        attributes_set(s, row.given);
        check_models(s, row.name, row.shown);
    }
}

TEST_F(placement, replaces_a_field_of_view_that_is_none) {
    for (const char* value : {"", "0", "-20", "181"}) {
        scene s = lit_scene(landmark());
        s.attributes.erase("camera_field_of_view");
        if (*value) s.attributes["camera_field_of_view"] = value;
        check(s, std::string("fov") + value);
    }
}

TEST_F(placement, survives_new_values_between_frames) {
    scene s = lit_scene(landmark());
    ASSERT_TRUE(model_write(s.content, folder_));
    kora_control* control = kora_control_create(app_, "", "model3d", 0, 0, s.width, s.height);
    ASSERT_TRUE(control) << kora_app_error(app_);
    ASSERT_TRUE(kora_control_set(control, "filename", "model.obj"));
    const char* const steps[] = {
        "",
        "camera_mode=orbit azimuth=50",
        "shading_model=flat model_orientation_psi=30",
        "shading_model=blinn-phong light_internal_azimuth=10 alpha=200",
        "camera_mode=legacy azimuth=5 culling_mode=back",
    };
    int number = 0;
    for (const char* step : steps) {
        attributes_set(s, step);
        for (const auto& [name, value] : s.attributes)
            ASSERT_TRUE(kora_control_set(control, name.c_str(), value.c_str())) << kora_app_error(app_);
        ASSERT_TRUE(gl_->begin(s.width, s.height, s.background));
        kora_control_render(control);
        compare(reference_render(s), gl_->read(), "step" + std::to_string(number++));
    }
    kora_app_presleep(app_); // everything on the GPU goes, and comes back with the next frame
    ASSERT_TRUE(gl_->begin(s.width, s.height, s.background));
    kora_control_render(control);
    compare(reference_render(s), gl_->read(), "after-presleep");
    kora_control_destroy(control);
}

} // namespace
} // namespace pictures
