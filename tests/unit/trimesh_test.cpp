#include "base/heap.h"
#include "model3d/math.h"
#include "scene/material.h"
#include "scene/trimesh.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <vector>

namespace {

using vec3 = std::array<float, 3>;

struct mesh_fixture : trimesh {
    explicit mesh_fixture(int32_t vertex_room = 0, int32_t face_room = 0, int normals_on = 1, int sets = 1) {
        EXPECT_EQ(trimesh_create(this, "mesh", vertex_room, face_room, 0, normals_on, sets, 0, 0), 1);
    }
    ~mesh_fixture() { trimesh_free(this); }
    void face(const vec3& a, const vec3& b, const vec3& c) {
        for (const vec3& v : {a, b, c}) {
            trimesh_pushvertex(this, v[0], v[1], v[2]);
        }
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
    m->diffuseMap = heap_zeroed<texture>();
    texture_create(m->diffuseMap, "t.png");
    m->diffuseMap->scale_u = scale_u;
    m->diffuseMap->scale_v = scale_v;
    return m;
}

} // namespace

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
    const struct {
        int32_t vertices, faces, materials;
    } cases[] = {{INT32_MAX, 0, 0}, {0, INT32_MAX, 0}, {0, 0, INT32_MAX}};
    for (const auto& c : cases) {
        trimesh mesh;
        EXPECT_EQ(trimesh_create(&mesh, "m", c.vertices, c.faces, c.materials, 1, 1, 1, 1), 0);
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
        for (float& x : places[i]) {
            x = i < 500 ? coordinates[random() % (i < 20 ? 6 : 5)] : static_cast<float>(random() % 65536);
        }
    }
    mesh_fixture mesh;
    const auto place = [&] { return places[random() % (random() % 8 == 0 ? 500 : places.size())]; };
    for (int i = 0; i < 8000; ++i) {
        mesh.face(place(), place(), place());
    }
    std::map<vec3, vec3> sums;
    std::map<vec3, int> counts;
    std::vector<vec3> expected(static_cast<size_t>(mesh.nvertices)); // from the faces, then smoothed
    std::vector<vec3> positions(expected.size());
    memcpy(positions.data(), mesh.vertices, positions.size() * sizeof(vec3));
    const auto is_place = [](const vec3& p) { return p == p; };
    for (size_t i = 0; i < expected.size(); ++i) {
        const vec3* const v = &positions[i - i % 3];
        vec3 ab, ac;
        vec_sub(v[1].data(), v[0].data(), ab.data());
        vec_sub(v[2].data(), v[0].data(), ac.data());
        vec_cross(ab.data(), ac.data(), expected[i].data());
        vec_normalize(expected[i].data());
        if (!is_place(positions[i])) continue;
        vec3& sum = sums[positions[i]];
        vec_add(sum.data(), expected[i].data(), sum.data());
        ++counts[positions[i]];
    }
    EXPECT_EQ(trimesh_calculatenormals(&mesh), 1);
    for (size_t i = 0; i < expected.size(); ++i) {
        if (is_place(positions[i]) && counts[positions[i]] > 1) {
            expected[i] = sums[positions[i]];
            vec_normalize(expected[i].data());
        }
        const vec3 normal = mesh.normal(static_cast<int32_t>(i));
        for (size_t k = 0; k < 3; ++k) {
            ASSERT_TRUE(std::bit_cast<uint32_t>(normal[k]) == std::bit_cast<uint32_t>(expected[i][k]) ||
                        (std::isnan(normal[k]) && std::isnan(expected[i][k])))
                << "vertex " << i;
        }
    }
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
