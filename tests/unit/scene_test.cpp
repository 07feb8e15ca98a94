// The tree and its meshes.
#include "base/heap.h"
#include "model3d/math.h"
#include "scene/material.h"
#include "scene/scene.h"
#include "scene/trimesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <span>
#include <vector>

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

using vec3 = std::array<float, 3>;

struct mesh_fixture : trimesh {
    explicit mesh_fixture(int32_t vertex_room = 0, int32_t face_room = 0, int normals_on = 1, int sets = 1) {
        EXPECT_EQ(trimesh_create(this, "mesh", vertex_room, face_room, 0, normals_on, sets, 0, 0), 1);
    }
    ~mesh_fixture() { trimesh_free(this); }
    void face(const vec3& a, const vec3& b, const vec3& c) {
        for (const vec3& v : {a, b, c})
            trimesh_pushvertex(this, v[0], v[1], v[2]);
        const auto n = static_cast<uint32_t>(nvertices);
        trimesh_pushface(this, n - 3, n - 2, n - 1);
    }
    vec3 normal(int32_t vertex) const {
        const float* n = normals + static_cast<size_t>(vertex) * 3;
        return {n[0], n[1], n[2]};
    }
};

material* textured(float scale_u, float scale_v) {
    auto* m = heap_array<material>(1);
    material_create(m, "m");
    m->diffuseMap = new_texture("t.png");
    m->diffuseMap->scale_u = scale_u;
    m->diffuseMap->scale_v = scale_v;
    return m;
}

} // namespace

TEST(group, grows_as_soon_as_it_is_full_and_frees_what_it_owns) {
    group g = {};
    ASSERT_EQ(group_create(&g, 1), 1);
    for (int32_t i = 1; i <= 5; ++i) {
        // The third child has no free operation: the group leaves it and its record alone.
        static int record;
        void* node = i == 3 ? &record : malloc(1);
        const auto free_node = i == 3 ? nullptr : count_free;
        ASSERT_EQ(group_push(&g, node, nullptr, nullptr, nullptr, nullptr, nullptr, free_node), 1);
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
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(scene_pushtexture(&s, i == 0 ? shared : nullptr), 1);
    EXPECT_EQ(s.textures_capacity, 8);
    scene_free(&s);
    EXPECT_EQ(shared->refcount, 1);
    texture_free(shared);
    scene_free(&s); // nothing left to free
}

TEST(material, copies_deeply) {
    auto* m = heap_array<material>(1);
    auto* copy = heap_array<material>(1);
    material_create(m, "steel");
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

TEST(trimesh, arrays_grow_when_they_are_full_and_shrink_to_what_they_hold) {
    mesh_fixture empty;
    EXPECT_EQ(empty.vertex_capacity, 1);
    EXPECT_EQ(empty.face_capacity, 1);
    EXPECT_EQ(empty.material_capacity, 1);

    mesh_fixture mesh(4, 2, 1, 2);
    for (int i = 0; i < 11; ++i) {
        ASSERT_EQ(trimesh_pushvertex(&mesh, static_cast<float>(i), 0, 0), 1);
        trimesh_settexcoordn(&mesh, 1, i, static_cast<float>(-i), 1);
        trimesh_settexcoordn(&mesh, 2, i, 7, 7); // no such set
        ASSERT_EQ(trimesh_pushface(&mesh, 0, 1, static_cast<uint32_t>(i)), 1);
        ASSERT_EQ(trimesh_pushmaterial(&mesh, nullptr), 1);
        EXPECT_EQ(mesh.vertex_capacity, i < 4 ? 5 : i < 9 ? 10 : 20);
        EXPECT_EQ(mesh.face_capacity, i < 2 ? 3 : i < 5 ? 6 : 12);
    }
    trimesh_trim(&mesh);
    EXPECT_EQ(mesh.vertex_capacity, 12);
    EXPECT_EQ(mesh.face_capacity, 12);
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(mesh.vertices[i * 3], static_cast<float>(i));
        EXPECT_EQ(mesh.texcoords[0][i * 2], 0.0f);
        EXPECT_EQ(mesh.texcoords[1][i * 2], static_cast<float>(-i));
        EXPECT_EQ(mesh.indices[i * 3 + 2], static_cast<uint32_t>(i));
        EXPECT_EQ(mesh.materials[i].startIndex, i + 1);
        EXPECT_EQ(mesh.normal(i), (vec3{0, 0, 0}));
    }
}

TEST(trimesh, sizes_that_cannot_be_had_are_refused) {
    for (const auto& [vertices, faces, materials] :
         {std::array{INT32_MAX, 0, 0}, {0, INT32_MAX, 0}, {0, 0, INT32_MAX}}) {
        trimesh mesh;
        EXPECT_EQ(trimesh_create(&mesh, "m", vertices, faces, materials, 1, 1, 1, 1), 0);
        trimesh_free(&mesh);
        trimesh_free(&mesh);
    }
}

TEST(trimesh, one_normal_given_means_none_computed) {
    mesh_fixture mesh;
    mesh.face({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
    trimesh_setnormal(&mesh, 1, 0, 1, 0);
    trimesh_calculatenormals(&mesh);
    EXPECT_EQ(mesh.normal(0), (vec3{0, 0, 0}));
    EXPECT_EQ(mesh.normal(1), (vec3{0, 1, 0}));

    mesh_fixture without(0, 0, 0);
    without.face({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
    trimesh_calculatenormals(&without);
    EXPECT_EQ(without.calc_normals, 0);
}

// To the bit, summed in the order of indices: the mean over all vertices at the very same place. There are
// places that many share, and so many others that some of them meet in any table.
TEST(trimesh, computed_normals_are_means_over_equal_positions) {
    std::mt19937 random(3);
    const float coordinates[] = {-1.0f, -0.0f, 0.0f, 1.0f, std::nextafter(1.0f, 2.0f), NAN};
    std::vector<vec3> places(20000);
    for (size_t i = 0; i < places.size(); ++i) {
        for (float& x : places[i])
            x = i < 500 ? coordinates[random() % (i < 20 ? 6 : 5)] : static_cast<float>(random() % 65536);
    }
    mesh_fixture mesh;
    const auto place = [&] { return places[random() % (random() % 8 == 0 ? 500 : places.size())]; };
    for (int i = 0; i < 8000; ++i)
        mesh.face(place(), place(), place());
    std::vector<vec3> positions(static_cast<size_t>(mesh.nvertices)), expected;
    memcpy(positions.data(), mesh.vertices, positions.size() * sizeof(vec3));
    std::map<vec3, std::vector<size_t>> sharers; // by place: the vertices there
    for (size_t i = 0; i < positions.size(); ++i) {
        const vec3* const v = &positions[i - i % 3];
        vec3 ab, ac, normal;
        vec_sub(v[1].data(), v[0].data(), ab.data());
        vec_sub(v[2].data(), v[0].data(), ac.data());
        vec_cross(ab.data(), ac.data(), normal.data());
        vec_normalize(normal.data());
        expected.push_back(normal);
        if (positions[i] == positions[i]) sharers[positions[i]].push_back(i); // no NaN
    }
    for (const auto& [shared, vertices] : sharers) {
        if (vertices.size() < 2) continue;
        vec3 sum = {};
        for (const size_t i : vertices)
            vec_add(sum.data(), expected[i].data(), sum.data());
        vec_normalize(sum.data());
        for (const size_t i : vertices)
            expected[i] = sum;
    }
    EXPECT_EQ(trimesh_calculatenormals(&mesh), 1);
    const std::span actual(mesh.normals, expected.size() * 3), wanted(expected[0].data(), actual.size());
    const auto same = [](float x, float y) {
        return std::bit_cast<uint32_t>(x) == std::bit_cast<uint32_t>(y) || (std::isnan(x) && std::isnan(y));
    };
    EXPECT_EQ(std::ranges::mismatch(actual, wanted, same).in1 - actual.begin(), std::ssize(actual));
}

TEST(trimesh, texture_scaling_touches_each_vertex_once) {
    mesh_fixture mesh;
    for (int i = 0; i < 5; ++i) {
        trimesh_pushvertex(&mesh, 0, 0, 0);
        trimesh_settexcoord(&mesh, i, 1, 1);
    }
    trimesh_pushface(&mesh, 0, 1, 2);               // before any segment: not scaled
    trimesh_pushmaterial(&mesh, textured(0.5f, 1)); // faces 1 and 2 share vertex 1
    trimesh_pushface(&mesh, 1, 1, 3);
    trimesh_pushface(&mesh, 1, 3, 3);
    trimesh_pushmaterial(&mesh, textured(0.25f, 0.5f));
    trimesh_pushface(&mesh, 3, 4, 4);
    trimesh_scaletexcoords(&mesh);
    const float expected[] = {1, 1, 0.5f, 1, 1, 1, 0.5f, 1, 0.25f, 0.5f};
    EXPECT_EQ(memcmp(mesh.texcoords[0], expected, sizeof(expected)), 0);
}
