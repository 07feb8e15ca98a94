// Pictures kept in the tree: the sample models, which also notice what the formulas allow for, such as a
// different mesh, and the stand-in for missing textures. MODEL3D_UPDATE_GOLDEN=1 in the environment writes
// them anew: look at them, and commit them with the change that made them differ.
#include "stage.h"

#include <cstdlib>

namespace pictures {
namespace {

class golden : public stage {
  protected:
    void compare_with_golden(const image& actual, const std::string& name, [[maybe_unused]] limits allowed) {
        const std::string stem = std::string(PICTURES_GOLDEN) + "/" + name;
        if (getenv("MODEL3D_UPDATE_GOLDEN")) {
            ASSERT_NE(image_write(actual, stem), "") << stem;
        }
#ifdef PICTURES_HAVE_PNG
        const image expected = image_read_png(stem + ".png");
        ASSERT_EQ(expected.width, actual.width) << "no golden picture " << stem << ".png";
        compare(expected, actual, name, allowed);
#endif
    }
};

#ifdef PICTURES_HAVE_PNG
TEST_F(golden, sample_models_look_as_before) {
    const struct {
        const char *folder, *file, *camera;
    } rows[] = {
        {"gauge", "gauge.obj", "camera_position_z=2.6 azimuth=-15 elevation=10"},
        {"piston", "piston.obj", "camera_position_z=6.4 azimuth=35 elevation=20"},
        {"shell", "shell.obj", "camera_position_z=2 azimuth=30 elevation=20"},
        {"polyhedra", "polyhedra.obj", "camera_position_z=5 azimuth=20 elevation=25"},
        {"car", "car.obj", "camera_position_z=4.6 azimuth=40 elevation=20"},
    };
    ASSERT_TRUE(kora_app_add_resource_root(app_, PICTURES_ASSETS));
    // The pictures are llvmpipe's; other rasterisers decide differently along the edges.
    const limits allowed = gl_->is_llvmpipe() ? limits{0.005, 4} : limits{0.02, 6};
    for (const auto& row : rows)
        for (const char* shading_model : {"gouraud", "blinn-phong", "flat"}) {
            scene s;
            s.width = 160;
            s.height = 120;
            s.control = {0, 0, 160, 120};
            s.background = {30, 40, 50, 255};
            attributes_set(s, "camera_mode=orbit camera_field_of_view=45 light_internal_azimuth=30 "
                              "light_internal_elevation=50 control_ambient=0.5 control_lightness=1");
            attributes_set(s, row.camera);
            s.attributes["shading_model"] = shading_model;
            compare_with_golden(draw_file(s, std::string(row.folder) + "/" + row.file),
                                std::string(row.folder) + "-" + shading_model, allowed);
        }
}
#endif

// One texel a pixel: the picture is the stand-in itself.
TEST_F(golden, missing_texture_says_so) {
    scene s;
    s.width = s.height = 512;
    s.control = {0, 0, 512, 512};
    add_material(s.content, {0, 0, 0}, {1, 1, 1}, {0, 0, 0}, 1, 1, "nowhere.png");
    add_quad(s.content, {}, 1, 1);
    // Twice the arc tangent of a half makes the sheet fill the view.
    attributes_set(s, "camera_position_z=2 camera_field_of_view=53.13010235 shading_model=flat "
                      "control_lightness=1");
    const image picture = draw(s, "missing");
    EXPECT_EQ(picture.at(10, 10), (rgba{255, 255, 255, 255}));
    EXPECT_EQ(picture.at(100, 10), (rgba{255, 0, 0, 255}));
    compare_with_golden(picture, "missing-texture", {0, 6});
    ASSERT_EQ(missing_.size(), 1u);
    EXPECT_NE(missing_[0].find("nowhere.png"), std::string::npos) << missing_[0];
    missing_.clear();
}

} // namespace
} // namespace pictures
