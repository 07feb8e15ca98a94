// How a frame comes about:
//   triangles  faces fan out from their first corner; normals are computed when the file has none
//   vertices   model, view and projection matrices; Gouraud lighting
//   pixels     homogeneous edge functions give perspective-correct weights without clipping: a pixel
//              belongs to a triangle where all three weights are positive and to the view volume where
//              its depth is, which is what clipping at the near and far planes amounts to
//   blending   into 8-bit colours, layer by layer, as the framebuffer holds them
#include "reference.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <ranges>

namespace pictures {
namespace {

vec operator+(vec a, vec b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w};
}
vec operator-(vec a, vec b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w};
}
vec operator*(vec a, vec b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z, a.w * b.w};
}
vec operator*(vec a, double s) {
    return {a.x * s, a.y * s, a.z * s, a.w * s};
}
// Of directions, as cross and normalized: w has no part in them.
double dot(vec a, vec b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
vec cross(vec a, vec b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
vec normalized(vec a) {
    const double length = std::sqrt(dot(a, a));
    return length > 0 ? a * (1 / length) : vec{};
}

mat4 operator*(const mat4& a, const mat4& b) {
    mat4 out{};
    for (size_t r = 0; r < 4; ++r)
        for (size_t c = 0; c < 4; ++c)
            for (size_t k = 0; k < 4; ++k)
                out[r][c] += a[r][k] * b[k][c];
    return out;
}

vec transformed(const mat4& m, vec v, double w) {
    const auto row = [&](size_t r) { return m[r][0] * v.x + m[r][1] * v.y + m[r][2] * v.z + m[r][3] * w; };
    return {row(0), row(1), row(2), row(3)};
}

mat4 scale(double x, double y, double z) {
    return {{{x, 0, 0, 0}, {0, y, 0, 0}, {0, 0, z, 0}, {0, 0, 0, 1}}};
}
mat4 translate(vec t) {
    return {{{1, 0, 0, t.x}, {0, 1, 0, t.y}, {0, 0, 1, t.z}, {0, 0, 0, 1}}};
}
// About the axis 'x', 'y' or 'z'.
mat4 rotate(char axis, double angle) {
    const auto from = static_cast<size_t>(axis - 'x' + 1) % 3, to = (from + 1) % 3;
    mat4 m = identity;
    m[from][from] = m[to][to] = std::cos(angle);
    m[to][from] = std::sin(angle);
    m[from][to] = -m[to][from];
    return m;
}

struct vertex {
    vec position, normal, texcoord; // v downwards, so that row 0 of a picture is at v 0
};

struct triangle {
    std::array<size_t, 3> vertices;
    const material* surface; // null: not drawn
};

struct geometry {
    mat4 to_world;
    std::vector<vertex> vertices;
    std::vector<triangle> triangles;
};

// Every triangle has vertices of its own, but for the fan's first, whose normal is the last triangle's.
// Without given normals, vertices at the same place then share the mean of theirs.
geometry triangulate(const model& m, const mat4& to_world) {
    geometry g{to_world, {}, {}};
    bool given = false;
    // A mesh without materials has a default of its own; faces before the first material are lost.
    static const material plain{{0.2, 0.2, 0.2}, {1, 1, 1}, {}, {}, 1, 1, ""};
    const bool segments =
        !m.materials.empty() && std::ranges::any_of(m.faces, [](const face& f) { return f.material >= 0; });
    for (const face& f : m.faces) {
        const material* surface = !segments        ? &plain
                                  : f.material < 0 ? nullptr
                                                   : &m.materials[static_cast<size_t>(f.material)];
        const auto add = [&](const corner& c) {
            const vec uv = c.texcoord.value_or(vec{0, 1});
            g.vertices.push_back({c.position, c.normal.value_or(vec{}), {uv.x, 1 - uv.y}});
            given = given || c.normal;
            return g.vertices.size() - 1;
        };
        const size_t first = add(f.corners[0]);
        for (size_t k = 1; k + 1 < f.corners.size(); ++k)
            g.triangles.push_back({{first, add(f.corners[k]), add(f.corners[k + 1])}, surface});
    }
    if (given) return g;
    for (const triangle& t : g.triangles) {
        const vec a = g.vertices[t.vertices[0]].position, b = g.vertices[t.vertices[1]].position;
        for (const size_t i : t.vertices)
            g.vertices[i].normal = normalized(cross(b - a, g.vertices[t.vertices[2]].position - a));
    }
    std::map<vec, vec> sums;
    for (const vertex& v : g.vertices)
        sums[v.position] = sums[v.position] + v.normal;
    for (vertex& v : g.vertices)
        v.normal = normalized(sums[v.position]);
    return g;
}

class frame {
  public:
    explicit frame(const scene& s) : s_(s) {
        place_camera();
        place_viewport();
        const double az = angle("light_internal_azimuth"), el = angle("light_internal_elevation", 90);
        if (!is("lighting_mode", "model"))
            lights_.push_back({{-std::sin(az) * std::cos(el), std::cos(az) * std::cos(el), std::sin(el), 0},
                               {1, 1, 1},
                               number("light_internal_intensity", 1)});
        place_group(s.content, identity);
        picture_ = image(s.width, s.height, s.background);
        depth_.assign(picture_.pixels.size(), 1.0);
    }

    image draw() {
        for (const geometry& g : meshes_)
            for (const triangle& t : g.triangles)
                if (t.surface) draw_triangle(g, t);
        return picture_;
    }

  private:
    // In the world; w 0: the direction towards the light.
    struct light {
        vec place, colour;
        double intensity;
    };

    struct projected {
        vec clip, world, normal, diffuse, specular, texcoord;
    };

    double number(const char* name, double usual = 0) const {
        const auto found = s_.attributes.find(name);
        return found == s_.attributes.end() ? usual : strtod(found->second.c_str(), nullptr);
    }
    bool is(const char* name, const char* keyword) const {
        const auto found = s_.attributes.find(name);
        return found != s_.attributes.end() && found->second == keyword;
    }
    static double radians(double degrees) { return degrees / 180 * 3.14159; }
    double angle(const char* name, double usual = 0) const { return radians(number(name, usual)); }

    // The lights of a scene shine in its own world, its meshes stand in that of the control's model.
    void place_group(const model& m, const mat4& parent) {
        mat4 world = parent;
        if (is("ignore_bind_transforms", "0")) world = world * m.matrix;
        if (!is("zero_deformers", "1"))
            world = world * translate(m.translation) * rotate('x', radians(m.rotation.x)) *
                    rotate('y', radians(m.rotation.y)) * rotate('z', radians(m.rotation.z)) *
                    scale(m.scaling.x, m.scaling.y, m.scaling.z);
        meshes_.push_back(triangulate(m, model_ * world * m.mesh_matrix));
        for (const lamp& l : m.lamps)
            if (is("lighting_mode", "model"))
                lights_.push_back(
                    {l.type == lamp::point ? transformed(world, {}, 1) : transformed(world, {0, 1, 0}, 0),
                     l.colour, l.percent / 100});
        for (const model& below : m.groups)
            place_group(below, world);
    }

    void place_camera() {
        camera_ = {number("camera_position_x"), number("camera_position_y"), number("camera_position_z")};
        const vec at{number("model_position_x"), number("model_position_y"), number("model_position_z")};
        model_ = translate(at) * rotate('z', angle("model_orientation_psi")) *
                 rotate('y', angle("model_orientation_theta")) * rotate('x', angle("model_orientation_phi"));
        const double az = angle("azimuth"), el = angle("elevation");
        const mat4 away = translate(camera_ * -1);
        const mat4 view = is("camera_mode", "fly")     ? rotate('x', -el) * rotate('y', az) * away
                          : is("camera_mode", "orbit") ? away * rotate('x', el) * rotate('y', az)
                                                       : rotate('x', el) * rotate('y', az) * away;

        double near = number("camera_clip_near"), far = number("camera_clip_far");
        if (near == 0 && far == 0) {
            const double radius = s_.content.radius(), distance = std::abs(at.z - camera_.z);
            near = distance - 1.5 * radius;
            far = distance + 1.5 * radius;
        }
        if (!(near > 0)) near = 0.1;
        if (far < near) far = 2 * near;
        double fov = number("camera_field_of_view", 60);
        if (!(fov > 0) || fov > 180) fov = 60;
        const double f = 1 / std::tan(fov / 360 * 3.1415927);
        const double aspect = static_cast<double>(s_.control.x2 - s_.control.x1) /
                              static_cast<double>(s_.control.y2 - s_.control.y1);
        const mat4 perspective = {{{f / aspect, 0, 0, 0},
                                   {0, f, 0, 0},
                                   {0, 0, (far + near) / (near - far), 2 * far * near / (near - far)},
                                   {0, 0, -1, 0}}};
        const mat4 turned =
            s_.target.is_surface ? scale(1, -1, 1) : rotate('z', -rotation() / 180 * 3.1415927);
        proj_view_ = turned * perspective * view;
    }

    double rotation() const { return s_.target.has_display_info ? s_.target.rotation_deg : 0; }

    void place_viewport() {
        const kora_target& t = s_.target;
        const kor_rect& r = s_.control;
        const int width = r.x2 - r.x1, height = r.y2 - r.y1;
        if (t.is_surface) {
            viewport_ = {t.origin_x + r.x1, t.origin_y + r.y1, width, height - 1};
            return;
        }
        int x = t.origin_x + r.x1, y = t.origin_y + r.y2, w = width, h = height;
        if (t.has_display_info) {
            x = static_cast<int>(t.translate_x + t.scale_x * static_cast<float>(x) + 0.5f);
            y = static_cast<int>(t.translate_y + t.scale_y * static_cast<float>(y) + 0.5f);
            w = static_cast<int>(t.scale_x * static_cast<float>(width) + 0.5f);
            h = static_cast<int>(t.scale_y * static_cast<float>(height) + 0.5f);
        }
        const int vw = s_.width, vh = s_.height;
        viewport_ = {x, vh - y, w, h};
        if (rotation() == 90) viewport_ = {vw - y, vh - x - w, h, w};
        if (rotation() == 180) viewport_ = {vw - w - x, y - h, w, h};
        if (rotation() == 270) viewport_ = {y - h, x, h, w};
    }

    // Adds what the lights give at a point to a diffuse and a specular sum.
    void illuminate(const material& s, vec point, vec normal, vec& diffuse, vec& specular) const {
        const vec n = normalized(normal);
        for (const light& l : lights_) {
            const vec towards = normalized(l.place - point * l.place.w);
            const vec half = normalized(towards + normalized(camera_ - point));
            diffuse = diffuse + s.diffuse * l.colour * (std::max(0.0, dot(n, towards)) * l.intensity);
            specular =
                specular + s.specular * (std::pow(std::max(0.0, dot(n, half)), s.exponent) * l.intensity);
        }
    }

    vec texel(const image& picture, double u, double v) const {
        const double x = u * picture.width - 0.5, y = v * picture.height - 0.5;
        const double x0 = std::floor(x), y0 = std::floor(y);
        const auto wrapped = [](double i, int size) {
            const int k = static_cast<int>(i) % size;
            return k < 0 ? k + size : k;
        };
        vec sum{};
        for (const auto& [dx, dy] : {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 1}}) {
            const double weight = (dx ? x - x0 : 1 - (x - x0)) * (dy ? y - y0 : 1 - (y - y0)) / 255;
            const rgba& p = picture.at(wrapped(x0 + dx, picture.width), wrapped(y0 + dy, picture.height));
            sum = {sum.x + weight * p.r, sum.y + weight * p.g, sum.z + weight * p.b, sum.w + weight * p.a};
        }
        return sum;
    }

    projected project(const vertex& v, const mat4& to_world, const material& s) const {
        projected p;
        p.world = transformed(to_world, v.position, 1);
        p.clip = transformed(proj_view_, p.world, 1);
        p.normal = normalized(transformed(to_world, v.normal, 0));
        p.texcoord = v.texcoord;
        illuminate(s, p.world, p.normal, p.diffuse, p.specular);
        return p;
    }

    // Colour and alpha of a pixel from the interpolated values, neither clamped.
    vec shade(const projected& p, const material& s) const {
        vec t{1, 1, 1, 1};
        if (!s.map.empty()) t = texel(s_.content.textures.at(s.map), p.texcoord.x, p.texcoord.y);
        vec colour = s.ambient * t * number("control_ambient") + s.emissive;
        if (is("shading_model", "flat")) {
            colour = colour + s.diffuse * t;
        } else if (is("shading_model", "blinn-phong")) {
            vec diffuse, specular;
            illuminate(s, p.world, p.normal, diffuse, specular);
            colour = colour + diffuse * t + specular;
        } else {
            colour = colour + p.diffuse * t + p.specular;
        }
        colour = colour * number("control_lightness", 0.75);
        return {colour.x, colour.y, colour.z, t.w * s.alpha * number("alpha", 255) / 255};
    }

    static uint8_t stored(double value) {
        return static_cast<uint8_t>(std::floor(std::clamp(value, 0.0, 1.0) * 255 + 0.5));
    }

    static rgba blended(rgba below, vec c) {
        const double a = std::clamp(c.w, 0.0, 1.0);
        const auto over = [&](double source, uint8_t old) {
            return stored(std::clamp(source, 0.0, 1.0) * a + (1 - a) * old / 255);
        };
        return {over(c.x, below.r), over(c.y, below.g), over(c.z, below.b), stored(a + below.a / 255.0)};
    }

    void draw_triangle(const geometry& g, const triangle& t) {
        std::array<projected, 3> v;
        for (size_t i = 0; i < 3; ++i)
            v[i] = project(g.vertices[t.vertices[i]], g.to_world, *t.surface);

        // Edge i is a linear function of the position that is zero on the line through the other two
        // vertices. Its exact antisymmetry lets neighbours agree on a pixel that lies on their edge.
        std::array<vec, 3> edge;
        for (size_t i = 0; i < 3; ++i) {
            const vec &a = v[(i + 1) % 3].clip, &b = v[(i + 2) % 3].clip;
            edge[i] = cross({a.x, a.y, a.w}, {b.x, b.y, b.w});
        }
        const double area = dot({v[0].clip.x, v[0].clip.y, v[0].clip.w}, edge[0]);
        if (area == 0) return;
        const bool front = s_.target.is_surface ? area < 0 : area > 0;
        if (is("culling_mode", "back") && !front) return;

        // Pixels along an axis whose centres are in the view volume and, unless a vertex is behind the
        // camera, between the vertices.
        const bool in_front = std::ranges::all_of(v, [](const projected& p) { return p.clip.w > 0; });
        const auto pixels = [&](double vec::*axis, int start, int size, int limit) {
            double low = 1, high = -1;
            for (const projected& p : v) {
                low = std::min(low, in_front ? p.clip.*axis / p.clip.w : -1);
                high = std::max(high, in_front ? p.clip.*axis / p.clip.w : 1);
            }
            const auto pixel = [&](double ndc) {
                return std::clamp(start + (std::clamp(ndc, -1.0, 1.0) + 1) / 2 * size - 0.5, -1.0,
                                  1.0 * limit);
            };
            const int first = std::max(0, static_cast<int>(std::ceil(pixel(low))));
            const int end = std::min(limit, static_cast<int>(std::floor(pixel(high))) + 1);
            return std::views::iota(first, std::max(first, end));
        };
        for (const int y : pixels(&vec::y, viewport_.y, viewport_.height, s_.height))
            for (const int x : pixels(&vec::x, viewport_.x, viewport_.width, s_.width))
                draw_pixel(x, y, v, edge, area, *t.surface);
    }

    void draw_pixel(int x, int y, const std::array<projected, 3>& v, const std::array<vec, 3>& edge,
                    double area, const material& s) {
        const vec at{2 * (x + 0.5 - viewport_.x) / viewport_.width - 1,
                     2 * (y + 0.5 - viewport_.y) / viewport_.height - 1, 1};
        std::array<double, 3> weight; // of the vertices, divided by w
        for (size_t i = 0; i < 3; ++i) {
            const double side = dot(edge[i], at) * (area > 0 ? 1 : -1);
            const vec e = edge[i] * (area > 0 ? 1 : -1);
            if (side < 0 || (side == 0 && !(e.x > 0 || (e.x == 0 && e.y > 0)))) return;
            weight[i] = side / std::abs(area);
        }
        const double per_w = weight[0] + weight[1] + weight[2];
        const double depth = weight[0] * v[0].clip.z + weight[1] * v[1].clip.z + weight[2] * v[2].clip.z;
        if (!(per_w > 0) || depth < -1 || depth > 1) return;
        const size_t index = static_cast<size_t>((s_.height - 1 - y) * s_.width + x);
        const double window_depth = depth / 2 + 0.5;
        if (!(window_depth < depth_[index])) return;
        depth_[index] = window_depth;

        projected p;
        for (size_t i = 0; i < 3; ++i) {
            const double k = weight[i] / per_w;
            for (const auto member : {&projected::world, &projected::normal, &projected::diffuse,
                                      &projected::specular, &projected::texcoord})
                p.*member = p.*member + v[i].*member * k;
        }
        picture_.pixels[index] = blended(picture_.pixels[index], shade(p, s));
    }

    struct rectangle {
        int x, y, width, height;
    };

    const scene& s_;
    std::vector<geometry> meshes_;
    std::vector<light> lights_;
    image picture_;
    std::vector<double> depth_;
    vec camera_;
    mat4 model_{}, proj_view_{};
    rectangle viewport_{};
};

} // namespace

image reference_render(const scene& s) {
    return frame(s).draw();
}

} // namespace pictures
