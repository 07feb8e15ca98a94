// Textures: orientation, repetition, filtering, alpha, padded images and the stand-in for missing ones.
#include "stage.h"

#include <algorithm>
#include <cstdlib>

namespace pictures {
namespace {

class texture : public stage {};

// A picture that no mirroring or turning maps onto itself, smooth enough for filtering to be compared.
image chart(int width, int height, bool clear_corner = false) {
    image picture(width, height, {60, 60, 60, 255});
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            rgba& p = picture.at(x, y);
            p.r = static_cast<uint8_t>(30 + 200 * x / width);
            p.g = static_cast<uint8_t>(220 - 180 * y / height);
            if (4 * x < width && 3 * y < height) p.b = 250;
            if (clear_corner) p.a = static_cast<uint8_t>(255 - 200 * x / width);
        }
    return picture;
}

// A material with a map, and the file for it.
void add_paper(model& m, const char* map, const image& picture, double alpha = 1) {
    add_material(m, {0.4, 0.4, 0.4}, {0.9, 0.8, 0.7}, {0.2, 0.2, 0.2}, 15, alpha, map);
    m.textures[map] = picture;
}

model sheet(const image& picture, vec2 uv0, vec2 uv1, double alpha = 1) {
    model m;
    add_paper(m, "chart.tga", picture, alpha);
    add_quad(m, {}, 1.6, 1.2, uv0, uv1);
    return m;
}

TEST_F(texture, is_upright_repeats_and_is_filtered) {
    const struct {
        const char* name;
        int width, height;
        vec2 uv0, uv1;
    } rows[] = {
        {"whole", 32, 16, {0, 0}, {1, 1}},
        {"part", 32, 16, {0.1, 0.55}, {0.6, 0.9}},
        {"repeated", 16, 16, {0, 0}, {2.5, 1.5}},
        {"negative", 16, 16, {-1.7, -0.6}, {0.3, 0.8}},
        {"mirrored", 32, 16, {1, 1}, {0, 0}},
        {"magnified", 4, 4, {0, 0}, {1, 1}},
        {"minified", 64, 64, {-0.2, -0.2}, {1.3, 1.1}},
        {"single-texel", 1, 1, {0, 0}, {3, 3}},
    };
    for (const auto& row : rows)
        check_models(lit_scene(sheet(chart(row.width, row.height), row.uv0, row.uv1)), row.name,
                     "model_orientation_theta=35 model_orientation_psi=10"); // it recedes
}

TEST_F(texture, lends_its_alpha) {
    check_models(lit_scene(sheet(chart(32, 16, true), {0, 0}, {1, 1}, 0.8)), "clear", "alpha=150");
}

TEST_F(texture, goes_with_its_material) {
    model m;
    add_paper(m, "chart.tga", chart(32, 16));
    add_box(m, {-0.9, 0.2, 0}, {0.5, 0.5, 0.5}, true);
    add_material(m, {0.3, 0.3, 0.3}, {0.2, 0.7, 0.3}, {0.6, 0.6, 0.6}, 25);
    add_box(m, {0.1, -0.5, 0.2}, {0.4, 0.4, 0.4}, true);
    add_paper(m, "check.tga", chart(8, 64));
    add_box(m, {1, 0.3, 0}, {0.4, 0.6, 0.4}, true);
    check_models(lit_scene(m), "boxes", "camera_mode=orbit azimuth=30 elevation=25");
}

// An image that fills only a part of its buffer must look as if it filled all of it. The coordinates keep
// half a texel away from the edge, where a repeating texture would bring in the opposite one.
TEST_F(texture, looks_the_same_from_a_padded_buffer) {
    const image picture = chart(50, 20);
    scene s = lit_scene(sheet(picture, {0.5 / 50, 0.5 / 20}, {1 - 0.5 / 50, 1 - 0.5 / 20}));
    attributes_set(s, "shading_model=flat model_orientation_theta=-25");
    // A sheet of another texture that fills its buffer shares nothing of the scale.
    add_paper(s.content, "small.tga", chart(16, 16));
    add_quad(s.content, {0.5, 0.5, 0.4}, 0.5, 0.4, {-0.5, 0}, {1, 2});
    check(s, "never");
    s.npot = KORA_NPOT_AUTO;
    check(s, "auto");
    const image plain = draw(s, "plain");
    s.npot = KORA_NPOT_ALWAYS;
    check(s, "always");
    compare(plain, draw(s, "padded"), "padded-as-plain", {0.005, 4});
}

// One texel a pixel: the picture is the stand-in itself. Every square of the checkerboard carries two
// lines of small text in the colour of the other squares, the second one shorter.
TEST_F(texture, that_is_missing_shows_a_checkerboard_that_says_so) {
    constexpr int size = 512;
    static const int edges[] = {0, 86, 172, 259, 345, 431, 512};
    model m;
    add_material(m, {0, 0, 0}, {1, 1, 1}, {0, 0, 0}, 1, 1, "nowhere.png");
    add_quad(m, {}, 1, 1);
    scene s;
    s.content = m;
    s.width = s.height = size;
    s.control = {0, 0, size, size};
    // Twice the arc tangent of a half makes the sheet fill the view.
    attributes_set(s, "camera_position_z=2 camera_field_of_view=53.13010235 shading_model=flat "
                      "control_lightness=1");
    const image picture = draw(s, "missing");
    ASSERT_EQ(missing_.size(), 1u);
    EXPECT_NE(missing_[0].find("nowhere.png"), std::string::npos) << missing_[0];
    missing_.clear();

    int wrong_channel = 0, wrong_square = 0;
    for (int row = 0; row < 6; ++row)
        for (int column = 0; column < 6; ++column) {
            const bool white = (row + column) % 2 == 0;
            const int left = edges[column], top = edges[row], width = edges[column + 1] - left;
            int ink[2] = {0, 0}, first[2] = {width, width}, last[2] = {0, 0};
            for (int y = top; y < edges[row + 1]; ++y)
                for (int x = left; x < left + width; ++x) {
                    const rgba p = picture.at(x, y);
                    wrong_channel += p.r < 249 || p.a < 249 || std::abs(p.g - p.b) > 6;
                    const bool written = white ? p.g < 128 : p.g > 128;
                    const bool plain = white ? p.g > 249 : p.g < 6;
                    const int line = y - top >= 34 && y - top < 46   ? 0
                                     : y - top >= 47 && y - top < 59 ? 1
                                                                     : -1;
                    if (line < 0 || x - left < width / 2 - 36 || x - left >= width / 2 + 36) {
                        wrong_square += !plain;
                    } else if (written) {
                        ++ink[line];
                        first[line] = std::min(first[line], x - left);
                        last[line] = std::max(last[line], x - left);
                    }
                }
            SCOPED_TRACE(testing::Message() << "square " << column << ", " << row);
            for (int line = 0; line < 2; ++line) {
                const int length = last[line] - first[line] + 1, expected = line ? 30 : 60;
                EXPECT_GT(ink[line], length); // more than one stroke high
                EXPECT_NEAR(length, expected, 10);
                EXPECT_NEAR((first[line] + last[line] + 1) / 2.0, width / 2.0, 4);
            }
        }
    EXPECT_EQ(wrong_channel, 0);
    EXPECT_EQ(wrong_square, 0);
}

} // namespace
} // namespace pictures
