#include "base/heap.h"
#include "model3d/math.h"
#include "scene/material.h"
#include "scene/scene.h"
#include "scene/trimesh.h"

#include <gtest/gtest.h>

namespace {

int frees = 0;

void count_free(void*) {
    ++frees;
}

texture* new_texture(const char* path) {
    auto* t = heap_zeroed<texture>();
    EXPECT_EQ(texture_create(t, path), 1);
    return t;
}

} // namespace

TEST(group, grows_as_soon_as_it_is_full_and_frees_what_it_owns) {
    group g = {};
    ASSERT_EQ(group_create(&g, 1), 1);
    for (int32_t i = 1; i <= 5; ++i) {
        // The third child has no free operation: the group leaves it and its record alone.
        static int record;
        void* node = i == 3 ? &record : malloc(1);
        ASSERT_EQ(
            group_push(&g, node, nullptr, nullptr, nullptr, nullptr, nullptr, i == 3 ? nullptr : count_free),
            1);
        EXPECT_EQ(g.nnodes, i);
        EXPECT_EQ(g.capacity, i < 2 ? 2 : i < 4 ? 4 : 8);
    }
    EXPECT_EQ(group_getnode(&g, -1), nullptr);
    EXPECT_EQ(group_getnode(&g, 5), nullptr);
    EXPECT_EQ(group_getnode(&g, 4), g.nodes + 4);
    g.name = heap_text("root");
    frees = 0;
    group_free(&g);
    EXPECT_EQ(frees, 4);
    EXPECT_EQ(g.name, nullptr);
    group_free(&g);
    EXPECT_EQ(frees, 4);
}

TEST(group, transform_scales_then_turns_z_y_x_then_moves) {
    group g = {};
    group_create(&g, 1);
    float parent[16], world[16], point[3];
    mat_rotate_y(parent, 0.4f);
    group_transform(&g, parent, world);
    EXPECT_TRUE(std::equal(parent, parent + 16, world));

    const float half_pi = 1.57079633f;
    const struct {
        float rotation[3], from[3], to[3];
    } cases[] = {
        {{0, 0, half_pi}, {1, 0, 0}, {1, 2, 0}},
        {{half_pi, 0, half_pi}, {1, 0, 0}, {1, 0, 2}}, // z turns x to y, then x turns y to z
        {{0, half_pi, half_pi}, {0, 1, 0}, {1, 0, 2}}, // z turns y to -x, then y turns -x to z
        {{half_pi, half_pi, 0}, {1, 0, 0}, {1, 2, 0}}, // y turns x to -z, then x turns -z to y
    };
    mat_identity(parent);
    g.translation[0] = 1;
    g.scaling[0] = g.scaling[1] = g.scaling[2] = 2;
    for (const auto& c : cases) {
        std::copy_n(c.rotation, 3, g.rotation);
        group_transform(&g, parent, world);
        mat_pointvecmul(world, c.from, point);
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(point[i], c.to[i], 1e-5f) << "case " << &c - cases << " axis " << i;
        }
    }
    group_free(&g);
}

TEST(scene, lists_keep_a_free_slot_and_free_drops_references) {
    scene s = {};
    ASSERT_EQ(scene_create(&s), 1);
    light lights[9];
    for (int i = 0; i < 9; ++i) {
        ASSERT_EQ(scene_pushlight(&s, &lights[i]), 1);
        EXPECT_EQ(s.lights_capacity, i < 7 ? 8 : 16);
    }
    texture* shared = texture_getref(new_texture("a\\b.png"));
    EXPECT_STREQ(shared->filename, "a/b.png");
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(scene_pushtexture(&s, i == 0 ? shared : nullptr), 1);
    }
    EXPECT_EQ(s.textures_capacity, 8);
    scene_free(&s);
    EXPECT_EQ(shared->refcount, 1);
    texture_free(shared);
    scene_free(&s); // nothing left to free
}

TEST(material, starts_with_its_defaults_and_copies_deeply) {
    auto* m = heap_array<material>(1);
    auto* copy = heap_array<material>(1);
    material_create(m, "steel");
    EXPECT_EQ(m->ambient[2], 0.2f);
    EXPECT_EQ(m->diffuse[1], 0.8f);
    EXPECT_EQ(m->specular[0], 1.0f);
    EXPECT_EQ(m->emissive[0] + m->spec_exp + m->reflectivity, 0.0f);
    EXPECT_EQ(m->alpha, 1.0f);
    m->diffuseMap = new_texture("d.png");
    m->reflectionMap = new_texture("r.png");
    EXPECT_EQ(texture_set_base_filename(m->reflectionMap, "base"), 1);
    material_copy(copy, m);
    EXPECT_EQ(m->used, 1);
    EXPECT_EQ(copy->used, 0);
    EXPECT_NE(copy->name, m->name);
    EXPECT_NE(copy->diffuseMap, m->diffuseMap);
    EXPECT_EQ(copy->specularMap, nullptr);
    EXPECT_STREQ(copy->reflectionMap->base_filename, "base");
    material_free(m);
    EXPECT_STREQ(copy->diffuseMap->filename, "d.png");
    freematerial(copy);
}
