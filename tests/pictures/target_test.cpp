// Where on the render target a control is drawn: rectangles, display rotations and surfaces.
#include "stage.h"

#include <GLES2/gl2.h>
#include <gtest/gtest-spi.h>

namespace pictures {
namespace {

class target : public stage {};

TEST_F(target, places_the_control) {
    // A surface ignores the display; without a display only the origin counts.
    const struct {
        const char* name;
        kora_target target;
        kor_rect control;
        int width = 128, height = 96; // of the framebuffer
    } rows[] = {
        {"beyond-the-edges", {0, 0, 0, 0, 1, 1, 0, 0, 0}, {-30, 40, 90, 130}},
        {"origin", {11, 7, 0, 0, 1, 1, 0, 0, 0}, {20, 10, 100, 60}},
        {"odd-target", {0, 0, 0, 0, 1, 1, 0, 0, 0}, {0, 0, 101, 77}, 101, 77},
        {"display-beyond", {0, 0, 0, 1, 1, 1, 0, 0, 0}, {-30, 40, 90, 130}},
        {"rotated-90-whole", {0, 0, 0, 1, 1, 1, 0, 0, 90}, {0, 0, 96, 128}},
        {"rotated-270-tall", {0, 0, 0, 1, 1, 1, 0, 0, 270}, {60, 5, 100, 85}},
        {"scaled", {0, 0, 0, 1, 1.25f, 1.5f, 3.3f, -4.2f, 0}, {20, 10, 100, 60}},
        {"scaled-90", {11, 7, 0, 1, 0.9f, 1.2f, 4.5f, 3.5f, 90}, {20, 10, 100, 60}},
        {"scaled-180", {0, 0, 0, 1, 0.75f, 0.9f, 2, 9, 180}, {20, 10, 100, 60}},
        {"scaled-270", {0, 0, 0, 1, 0.8f, 1.2f, 1.5f, 2.5f, 270}, {20, 10, 100, 60}},
        {"surface", {0, 0, 1, 0, 1, 1, 0, 0, 0}, {0, 0, 128, 96}},
        {"surface-origin", {11, 7, 1, 0, 1, 1, 0, 0, 0}, {60, 5, 100, 85}},
        {"surface-of-display", {0, 0, 1, 1, 2, 2, 5, 5, 90}, {20, 10, 100, 60}},
    };
    for (const auto& row : rows) {
        scene s = lit_scene(landmark());
        attributes_set(s, "camera_position_z=3");
        s.target = row.target;
        s.control = row.control;
        s.width = row.width;
        s.height = row.height;
        check(s, row.name);
        // Front faces must stay front faces however the picture is turned.
        attributes_set(s, "culling_mode=back");
        check(s, std::string(row.name).append("-culled"));
    }
}

// The comparison itself must be able to fail, and so must the watch on GL errors.
TEST_F(target, checks_are_awake) {
    scene s = lit_scene(landmark());
    const image picture = reference_render(s);
    attributes_set(s, "azimuth=1");
    EXPECT_GT(image_compare(picture, reference_render(s), limits{}.tolerance).fraction, limits{}.fraction);
    EXPECT_EQ(image_compare(picture, picture, 0).fraction, 0);
    image wrong = picture;
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < wrong.width; ++x)
            wrong.at(x, y).a = static_cast<uint8_t>(wrong.at(x, y).a ^ 8);
    EXPECT_GT(image_compare(picture, wrong, limits{}.tolerance).fraction, limits{}.fraction);
    glEnable(0xBAD);
    while (glGetError() != GL_NO_ERROR) {
    } // the watch does not depend on it
    EXPECT_NONFATAL_FAILURE(stage::TearDown(), "GL_INVALID_ENUM");
}

} // namespace
} // namespace pictures
