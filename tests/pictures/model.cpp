#include "model.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <numbers>

namespace pictures {
namespace {

// Positions are rounded to what the file holds, so that both sides see the same numbers.
double rounded(double v) {
    return std::round(v * 1e5) / 1e5;
}

int push_position(model& m, vec3 p) {
    m.positions.push_back({rounded(p.x), rounded(p.y), rounded(p.z)});
    return static_cast<int>(m.positions.size());
}

int push_normal(model& m, vec3 n) {
    m.normals.push_back(n);
    return static_cast<int>(m.normals.size());
}

void push_face(model& m, std::vector<corner> corners) {
    m.faces.push_back({static_cast<int>(m.materials.size()) - 1, std::move(corners)});
}

std::string line(const char* format, auto... values) {
    char text[200];
    snprintf(text, sizeof text, format, values...);
    return text;
}

std::string material_name(int index) {
    return line("m%d", index);
}

std::string colour_line(const char* keyword, vec3 c, vec3 usual) {
    if (c.x == usual.x && c.y == usual.y && c.z == usual.z) return "";
    return line("%s %.6f %.6f %.6f\n", keyword, c.x, c.y, c.z);
}

} // namespace

void add_material(model& m, vec3 ambient, vec3 diffuse, vec3 specular, double exponent, double alpha,
                  const std::string& map) {
    m.materials.push_back({ambient, diffuse, specular, {}, exponent, alpha, map});
}

void add_sphere(model& m, vec3 centre, double radius, int slices, int stacks, bool normals) {
    constexpr double pi = std::numbers::pi;
    const auto point = [&](int slice, int stack) {
        const double around = 2 * pi * slice / slices, down = pi * stack / stacks;
        const vec3 n{std::sin(down) * std::sin(around), std::cos(down), std::sin(down) * std::cos(around)};
        const vec3 p{centre.x + radius * n.x, centre.y + radius * n.y, centre.z + radius * n.z};
        return corner{push_position(m, p), 0, normals ? push_normal(m, n) : 0};
    };
    // Rings between the poles; the last column of a ring is its first again.
    std::vector<std::vector<corner>> rings;
    for (int stack = 1; stack < stacks; ++stack) {
        rings.emplace_back();
        for (int slice = 0; slice < slices; ++slice)
            rings.back().push_back(point(slice, stack));
        rings.back().push_back(rings.back().front());
    }
    const corner north = point(0, 0), south = point(0, stacks);
    for (size_t s = 0; s < static_cast<size_t>(slices); ++s) {
        push_face(m, {north, rings.front()[s], rings.front()[s + 1]});
        for (size_t ring = 0; ring + 1 < rings.size(); ++ring)
            push_face(m, {rings[ring][s], rings[ring + 1][s], rings[ring + 1][s + 1], rings[ring][s + 1]});
        push_face(m, {south, rings.back()[s + 1], rings.back()[s]});
    }
}

void add_box(model& m, vec3 centre, vec3 half, bool normals) {
    // Corner i lies on the positive side of x, y, z where bit 0, 1, 2 of i is set.
    int position[8];
    for (int i = 0; i < 8; ++i)
        position[i] =
            push_position(m, {centre.x + (i & 1 ? half.x : -half.x), centre.y + (i & 2 ? half.y : -half.y),
                              centre.z + (i & 4 ? half.z : -half.z)});
    static const struct {
        int corners[4];
        vec3 normal;
    } sides[6] = {{{4, 5, 7, 6}, {0, 0, 1}},  {{1, 0, 2, 3}, {0, 0, -1}}, {{5, 1, 3, 7}, {1, 0, 0}},
                  {{0, 4, 6, 2}, {-1, 0, 0}}, {{6, 7, 3, 2}, {0, 1, 0}},  {{0, 1, 5, 4}, {0, -1, 0}}};
    for (const auto& side : sides) {
        const int normal = normals ? push_normal(m, side.normal) : 0;
        std::vector<corner> corners;
        for (const int i : side.corners)
            corners.push_back({position[i], 0, normal});
        if (!m.materials.empty() && !m.materials.back().map.empty())
            for (size_t i = 0; i < 4; ++i) {
                m.texcoords.push_back({i == 1 || i == 2 ? 1. : 0., i >= 2 ? 1. : 0.});
                corners[i].texcoord = static_cast<int>(m.texcoords.size());
            }
        push_face(m, corners);
    }
}

void add_prism(model& m, vec3 centre, double radius, double half_length, int n, bool normals) {
    std::vector<corner> front, back;
    const int front_normal = normals ? push_normal(m, {0, 0, 1}) : 0;
    const int back_normal = normals ? push_normal(m, {0, 0, -1}) : 0;
    for (int i = 0; i < n; ++i) {
        const double angle = 2 * std::numbers::pi * i / n;
        const double x = centre.x + radius * std::cos(angle), y = centre.y + radius * std::sin(angle);
        front.push_back({push_position(m, {x, y, centre.z + half_length}), 0, front_normal});
        back.insert(back.begin(), {push_position(m, {x, y, centre.z - half_length}), 0, back_normal});
    }
    push_face(m, front);
    push_face(m, back);
    for (int i = 0; i < n; ++i) {
        const int j = (i + 1) % n;
        const double middle = 2 * std::numbers::pi * (i + 0.5) / n;
        const int normal = normals ? push_normal(m, {std::cos(middle), std::sin(middle), 0}) : 0;
        const auto at = [&](const std::vector<corner>& end, int k) {
            return corner{end[static_cast<size_t>(k)].position, 0, normal};
        };
        push_face(m, {at(front, i), at(back, n - 1 - i), at(back, n - 1 - j), at(front, j)});
    }
}

void add_quad(model& m, vec3 centre, double half_width, double half_height, vec2 uv0, vec2 uv1) {
    const int normal = push_normal(m, {0, 0, 1});
    std::vector<corner> corners;
    for (const auto& [right, top] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
        m.texcoords.push_back({right ? uv1.x : uv0.x, top ? uv1.y : uv0.y});
        const vec3 p{centre.x + (right ? half_width : -half_width),
                     centre.y + (top ? half_height : -half_height), centre.z};
        corners.push_back({push_position(m, p), static_cast<int>(m.texcoords.size()), normal});
    }
    push_face(m, corners);
}

bool model_write(const model& m, const std::string& folder) {
    std::ofstream obj(folder + "/model.obj"), mtl(folder + "/model.mtl");
    if (!m.materials.empty()) obj << "mtllib model.mtl\n";
    for (const vec3& p : m.positions)
        obj << line("v %.5f %.5f %.5f\n", p.x, p.y, p.z);
    for (const vec3& n : m.normals)
        obj << line("vn %.8f %.8f %.8f\n", n.x, n.y, n.z);
    for (const vec2& t : m.texcoords)
        obj << line("vt %.6f %.6f\n", t.x, t.y);
    int current = -1;
    for (const face& f : m.faces) {
        if (f.material != current) obj << "usemtl " << material_name(f.material) << '\n';
        current = f.material;
        obj << 'f';
        for (const corner& c : f.corners) {
            obj << ' ' << c.position;
            if (c.texcoord || c.normal) obj << '/';
            if (c.texcoord) obj << c.texcoord;
            if (c.normal) obj << '/' << c.normal;
        }
        obj << '\n';
    }
    const material usual;
    for (size_t i = 0; i < m.materials.size(); ++i) {
        const material& s = m.materials[i];
        mtl << "newmtl " << material_name(static_cast<int>(i)) << '\n'
            << colour_line("Ka", s.ambient, usual.ambient) << colour_line("Kd", s.diffuse, usual.diffuse)
            << colour_line("Ks", s.specular, usual.specular);
        if (s.exponent != usual.exponent) mtl << line("Ns %.6f\n", s.exponent);
        if (s.alpha != usual.alpha) mtl << line("d %.6f\n", s.alpha);
        if (!s.map.empty()) mtl << "map_Kd " << s.map << '\n';
    }
    bool written = obj.flush() && mtl.flush();
    for (const auto& [name, picture] : m.textures)
        written = image_write_tga(picture, folder + "/" + name) && written;
    return written;
}

} // namespace pictures
