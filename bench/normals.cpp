// Normals of a million vertices, three a face, beside one sort of their positions.

#include "measure.h"
#include "scene/trimesh.h"

#include <cmath>
#include <cstdio>
#include <random>
#include <tuple>
#include <vector>

namespace {

constexpr int32_t nfaces = 333333;
constexpr size_t nvertices = size_t{nfaces} * 3;

std::vector<vertex_record> distinct() {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> coordinate(-1, 1);
    std::vector<vertex_record> vertices(nvertices);
    for (vertex_record& v : vertices) {
        v = {coordinate(random), coordinate(random), coordinate(random), 0};
    }
    return vertices;
}

// Each inner position is that of six vertices.
std::vector<vertex_record> sheet() {
    const int side = static_cast<int>(std::sqrt(nvertices / 6));
    const auto at = [](int column, int row) {
        const float x = static_cast<float>(column), y = static_cast<float>(row);
        return vertex_record{x, y, std::sin(x / 9) * std::cos(y / 7), 0};
    };
    std::vector<vertex_record> vertices;
    for (int i = 0; vertices.size() < nvertices; ++i) {
        const int x = i % side, y = i / side;
        const vertex_record a = at(x, y), b = at(x + 1, y), c = at(x + 1, y + 1), d = at(x, y + 1);
        vertices.insert(vertices.end(), {a, b, c, a, c, d});
    }
    vertices.resize(nvertices);
    return vertices;
}

bool before(const vertex_record& a, const vertex_record& b) {
    return std::tie(a.x, a.y, a.z) < std::tie(b.x, b.y, b.z);
}

void measure(const char* name, const std::vector<vertex_record>& vertices) {
    trimesh mesh;
    if (!trimesh_create(&mesh, name, nvertices, nfaces, 0, 1, 0, 0, 0)) abort();
    for (uint32_t i = 0; i < nvertices; ++i) {
        trimesh_pushvertex(&mesh, vertices[i].x, vertices[i].y, vertices[i].z);
        if (i % 3 == 2) trimesh_pushface(&mesh, i - 2, i - 1, i);
    }
    std::vector<vertex_record> sorted;
    const auto [sort, normals] = medians(
        [&] {
            sorted = vertices;
            return milliseconds([&] { std::sort(sorted.begin(), sorted.end(), before); });
        },
        [&] {
            mesh.calc_normals = 1;
            return milliseconds([&] { trimesh_calculatenormals(&mesh); });
        });
    trimesh_free(&mesh);
    printf("%-18s %9.1f %11.1f %7.2f\n", name, sort, normals, normals / sort);
}

} // namespace

int main() {
    printf("%-18s %9s %11s %7s\n", "positions", "sort ms", "normals ms", "ratio");
    std::vector<vertex_record> vertices = distinct();
    measure("all distinct", vertices);
    std::sort(vertices.begin(), vertices.end(), before);
    measure("distinct, sorted", vertices);
    std::reverse(vertices.begin(), vertices.end());
    measure("distinct, reversed", vertices);
    vertices = sheet();
    measure("sheet", vertices);
    std::shuffle(vertices.begin(), vertices.end(), std::mt19937(1));
    measure("sheet, shuffled", vertices);
    measure("all one", std::vector<vertex_record>(nvertices, {0.5f, 0.5f, 0.5f, 0}));
    measure("no numbers", std::vector<vertex_record>(nvertices, {NAN, NAN, NAN, 0}));
}
