#include "model.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <numbers>

namespace pictures {
namespace {

constexpr double pi = std::numbers::pi;

// Adds a face around the origin, moved to `centre`. One normal may do for all corners; none, or no texture
// coordinates: not given. Positions are rounded to what the file holds, so that both sides see the same
// numbers.
void push_face(model& m, vec centre, const std::vector<vec>& positions, const std::vector<vec>& normals,
               const std::vector<vec>& texcoords = {}) {
    const auto rounded = [](double v) { return std::round(v * 1e5) / 1e5; };
    face f{static_cast<int>(m.materials.size()) - 1, {}};
    for (size_t i = 0; i < positions.size(); ++i) {
        const vec& p = positions[i];
        corner c{{rounded(centre.x + p.x), rounded(centre.y + p.y), rounded(centre.z + p.z)}, {}, {}};
        if (!normals.empty()) c.normal = normals[normals.size() > 1 ? i : 0];
        if (!texcoords.empty()) c.texcoord = texcoords[i];
        f.corners.push_back(c);
    }
    m.faces.push_back(std::move(f));
}

std::vector<vec> only_if(bool wanted, vec normal) {
    return wanted ? std::vector{normal} : std::vector<vec>{};
}

std::string line(const char* format, auto... values) {
    char text[200];
    snprintf(text, sizeof text, format, values...);
    return text;
}

std::string material_name(int index) {
    return line("m%d", index);
}

std::string colour_line(const char* keyword, vec c, vec usual) {
    return c == usual ? "" : line("%s %.6f %.6f %.6f\n", keyword, c.x, c.y, c.z);
}

} // namespace

void add_material(model& m, vec ambient, vec diffuse, vec specular, double exponent, double alpha,
                  const std::string& map) {
    m.materials.push_back({ambient, diffuse, specular, {}, exponent, alpha, map});
}

void add_sphere(model& m, vec centre, double radius, int slices, int stacks, bool normals) {
    const auto direction = [&](int slice, int stack) {
        const double around = 2 * pi * (slice % slices) / slices, down = pi * stack / stacks;
        return vec{std::sin(down) * std::sin(around), std::cos(down), std::sin(down) * std::cos(around)};
    };
    for (int slice = 0; slice < slices; ++slice)
        for (int stack = 0; stack < stacks; ++stack) {
            std::vector<vec> directions, positions;
            directions = {direction(slice, stack), direction(slice, stack + 1)};
            if (stack + 1 < stacks) directions.push_back(direction(slice + 1, stack + 1));
            if (stack > 0) directions.push_back(direction(slice + 1, stack));
            for (const vec& d : directions)
                positions.push_back({radius * d.x, radius * d.y, radius * d.z});
            if (!normals) directions.clear();
            push_face(m, centre, positions, directions);
        }
}

void add_box(model& m, vec centre, vec half, bool normals) {
    // Corner i lies on the positive side of x, y, z where bit 0, 1, 2 of i is set.
    static const struct {
        int corners[4];
        vec normal;
    } sides[6] = {{{4, 5, 7, 6}, {0, 0, 1}},  {{1, 0, 2, 3}, {0, 0, -1}}, {{5, 1, 3, 7}, {1, 0, 0}},
                  {{0, 4, 6, 2}, {-1, 0, 0}}, {{6, 7, 3, 2}, {0, 1, 0}},  {{0, 1, 5, 4}, {0, -1, 0}}};
    std::vector<vec> texcoords;
    if (!m.materials.empty() && !m.materials.back().map.empty()) texcoords = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    for (const auto& side : sides) {
        std::vector<vec> positions;
        for (const int i : side.corners)
            positions.push_back(
                {i & 1 ? half.x : -half.x, i & 2 ? half.y : -half.y, i & 4 ? half.z : -half.z});
        push_face(m, centre, positions, only_if(normals, side.normal), texcoords);
    }
}

void add_prism(model& m, vec centre, double radius, double half_length, int n, bool normals) {
    const auto add = [&](const std::vector<vec>& positions, vec normal) {
        push_face(m, centre, positions, only_if(normals, normal));
    };
    const auto edge = [&](int i, double z) {
        const double angle = 2 * pi * (i % n) / n;
        return vec{radius * std::cos(angle), radius * std::sin(angle), z};
    };
    std::vector<vec> front, back;
    for (int i = 0; i < n; ++i) {
        front.push_back(edge(i, half_length));
        back.push_back(edge(n - 1 - i, -half_length));
        const double middle = 2 * pi * (i + 0.5) / n;
        add({edge(i, half_length), edge(i, -half_length), edge(i + 1, -half_length),
             edge(i + 1, half_length)},
            {std::cos(middle), std::sin(middle), 0});
    }
    add(front, {0, 0, 1});
    add(back, {0, 0, -1});
}

void add_quad(model& m, vec centre, double half_width, double half_height, vec uv0, vec uv1) {
    const double w = half_width, h = half_height;
    push_face(m, centre, {{-w, -h, 0}, {w, -h, 0}, {w, h, 0}, {-w, h, 0}}, {{0, 0, 1}},
              {uv0, {uv1.x, uv0.y}, uv1, {uv0.x, uv1.y}});
}

double model::radius() const {
    double farthest = 0;
    for (const face& f : faces)
        for (const corner& c : f.corners)
            farthest = std::max(farthest, std::hypot(c.position.x, c.position.y, c.position.z));
    return farthest;
}

bool model_write(const model& m, const std::string& folder) {
    std::ofstream obj(folder + "/model.obj"), mtl(folder + "/model.mtl");
    if (!m.materials.empty()) obj << "mtllib model.mtl\n";
    int current = -1, positions = 0, texcoords = 0, normals = 0;
    for (const face& f : m.faces) {
        std::string corners;
        for (const auto& [p, n, t] : f.corners) {
            obj << line("v %.5f %.5f %.5f\n", p.x, p.y, p.z);
            if (n) obj << line("vn %.8f %.8f %.8f\n", n->x, n->y, n->z);
            if (t) obj << line("vt %.6f %.6f\n", t->x, t->y);
            corners += line(" %d", ++positions);
            if (t || n) corners += '/';
            if (t) corners += line("%d", ++texcoords);
            if (n) corners += line("/%d", ++normals);
        }
        if (f.material != current) obj << "usemtl " << material_name(f.material) << '\n';
        current = f.material;
        obj << 'f' << corners << '\n';
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
