// Textures: orientation, repetition, filtering, alpha and padded images.
#include "stage.h"

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

model sheet(const image& picture, vec uv0, vec uv1, double alpha = 1) {
    model m;
    add_paper(m, "chart.tga", picture, alpha);
    add_quad(m, {}, 1.6, 1.2, uv0, uv1);
    return m;
}

TEST_F(texture, is_upright_repeats_is_filtered_and_lends_its_alpha) {
    const struct {
        const char* name;
        int width, height;
        vec uv0, uv1;
    } rows[] = {
        {"part", 32, 16, {0.1, 0.55}, {0.6, 0.9}}, {"negative", 16, 16, {-1.7, -0.6}, {0.3, 0.8}},
        {"mirrored", 32, 16, {1, 1}, {0, 0}},      {"minified", 64, 64, {-0.2, -0.2}, {1.3, 1.1}},
        {"single-texel", 1, 1, {0, 0}, {3, 3}},
    };
    for (const auto& row : rows)
        check_models(lit_scene(sheet(chart(row.width, row.height), row.uv0, row.uv1)), row.name,
                     "model_orientation_theta=35 model_orientation_psi=10"); // it recedes
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

} // namespace
} // namespace pictures
