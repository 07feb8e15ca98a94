// The sample models against pictures kept in the tree. They also notice what the formulas allow for, such
// as a different mesh. MODEL3D_UPDATE_GOLDEN=1 in the environment writes them anew: look at them, and
// commit them with the change that made them differ.
#include "stage.h"

#ifdef PICTURES_HAVE_PNG

#include <cstdlib>
#include <filesystem>

namespace pictures {
namespace {

class golden : public stage {};

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
            const std::string name = std::string(row.folder) + "-" + shading_model;
            const std::string stem = std::string(PICTURES_GOLDEN) + "/" + name;
            const image actual = draw_file(s, std::string(row.folder) + "/" + row.file);
            if (getenv("MODEL3D_UPDATE_GOLDEN")) {
                std::filesystem::create_directories(PICTURES_GOLDEN);
                ASSERT_NE(image_write(actual, stem), "") << stem;
            }
            const image expected = image_read_png(stem + ".png");
            ASSERT_EQ(expected.width, s.width) << "no golden picture " << stem << ".png";
            compare(expected, actual, name, allowed);
        }
}

} // namespace
} // namespace pictures

#endif
