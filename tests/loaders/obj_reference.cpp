#include "obj_reference.h"

#include <fcntl.h>
#include <locale.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <map>

namespace {

bool line_end(char c) {
    return c == 10 || c == 13;
}
bool blank(char c) {
    return line_end(c) || c == 9 || c == 32;
}

void read_lines(int fd, bool backslashes, const std::function<void(char*)>& handle) {
    char buffer[1024] = {};
    for (;;) {
        const ssize_t n = read(fd, buffer, 1023);
        if (n <= 0) return;
        buffer[n] = 0;
        ssize_t i = 0;
        for (;;) {
            while (i < n && blank(buffer[i])) {
                ++i;
            }
            if (i == n) break;
            const ssize_t start = i;
            while (i < n && !line_end(buffer[i])) {
                if (backslashes && buffer[i] == '\\') {
                    buffer[i] = ' ';
                    while (i + 1 < n && line_end(buffer[i + 1])) {
                        buffer[++i] = ' ';
                    }
                }
                ++i;
            }
            if (i == n) {
                char test;
                if (read(fd, &test, 1) != 1) return;
                if (n - start <= 1021) lseek(fd, -(n - start + 1), SEEK_CUR);
                break;
            }
            buffer[i] = 0;
            for (ssize_t k = i - 1; k >= start && buffer[k] == ' '; --k) {
                buffer[k] = 0;
            }
            handle(buffer + start);
            ++i;
        }
    }
}

// How many of the format's numbers there are.
int scan(const char* line, const char* format, float values[3]) {
    static const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
    const locale_t before = uselocale(c_locale);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int count = sscanf(line, format, &values[0], &values[1], &values[2]);
#pragma GCC diagnostic pop
    uselocale(before);
    return count > 0 ? count : 0;
}

// All of them or none.
bool scan_all(const char* line, const char* format, int count, float* values) {
    float v[3];
    if (scan(line, format, v) != count) return false;
    memcpy(values, v, sizeof(float) * static_cast<size_t>(count));
    return true;
}

bool begins(const char* line, const char* word) {
    return strncmp(line, word, strlen(word)) == 0;
}

std::string eighth_on(const char* line) {
    return strlen(line) < 7 ? "" : line + 7;
}

int32_t saturated(const std::string& field) {
    const bool negative = field[0] == '-';
    long double value = 0;
    for (size_t i = negative; i < field.size() && field[i] >= '0' && field[i] <= '9'; ++i) {
        value = value * 10 + (field[i] - '0');
    }
    if (negative) value = -value;
    if (value >= std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
    if (value <= std::numeric_limits<int32_t>::min()) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(value);
}

struct corner {
    int64_t position = 0, texcoord = 0, normal = 0;
};

// Reads one corner from *p on, which is left where it stopped.
corner read_corner(const char** p) {
    enum { start, position, texcoord, normal, complete } state = start;
    corner c;
    std::string field;
    for (;; ++*p) {
        const char byte = **p;
        if ((byte >= '0' && byte <= '9') || byte == '-') {
            if (field.size() < 63) field += byte;
            if (state == start) state = position;
        } else if (byte == '/' || byte == ' ' || byte == 0) {
            if (state == position) {
                c.position = saturated(field);
                state = texcoord;
            } else if (state == texcoord) {
                if (!field.empty()) c.texcoord = saturated(field);
                state = normal;
            } else if (state == normal) {
                if (!field.empty()) c.normal = saturated(field);
                state = complete;
            }
            field.clear();
            if (byte == 0) return c;
            if (byte == ' ' && state != start) return c;
            if (state == complete) {
                ++*p;
                return c;
            }
        }
    }
}

struct loader {
    std::string directory;
    std::vector<float> positions, normals, texcoords;
    std::map<std::string, reference_material> materials;
    reference_model model;

    void push(int64_t position) {
        for (int i = 0; i < 3; ++i) {
            model.vertices.push_back(positions[static_cast<size_t>(position * 3 + i)]);
            model.normals.push_back(0);
        }
        model.texcoords.insert(model.texcoords.end(), {0, 0});
    }

    void face(const char* line) {
        size_t count = 0;
        for (const char* p = line; *p; ++p) {
            count += *p == ' ' && p[1] != ' ';
        }
        if (count < 3) return;
        std::vector<corner> corners;
        const char* p = line;
        while (corners.size() < count) {
            if (*p == 0) return;
            corners.push_back(read_corner(&p));
            if (corners.back().position == 0) return;
        }
        const auto npositions = static_cast<int64_t>(positions.size() / 3);
        const auto ntexcoords = static_cast<int64_t>(texcoords.size() / 2);
        const auto nnormals = static_cast<int64_t>(normals.size() / 3);
        const auto zero_based = [](int64_t& n, int64_t total) { n = n > 0 ? n - 1 : n < 0 ? total + n : -1; };
        for (corner& c : corners) {
            zero_based(c.position, npositions);
            zero_based(c.texcoord, ntexcoords);
            zero_based(c.normal, nnormals);
        }
        const auto outside = [](int64_t n, int64_t total) { return n < 0 || n >= total; };
        if (outside(corners[0].position, npositions)) return;
        push(corners[0].position);
        const auto first = static_cast<uint32_t>(model.vertices.size() / 3 - 1);
        for (size_t k = 1; k + 1 < count; ++k) {
            const corner triangle[] = {corners[0], corners[k], corners[k + 1]};
            if (outside(triangle[1].position, npositions) || outside(triangle[2].position, npositions))
                return;
            push(triangle[1].position);
            push(triangle[2].position);
            const auto last = static_cast<uint32_t>(model.vertices.size() / 3 - 1);
            const uint32_t vertices[] = {first, last - 1, last};
            model.indices.insert(model.indices.end(), vertices, vertices + 3);
            bool textured = true, lit = true;
            for (const corner& c : triangle) {
                textured = textured && !outside(c.texcoord, ntexcoords);
                lit = lit && !outside(c.normal, nnormals);
            }
            for (int i = 0; i < 3; ++i) {
                if (textured)
                    std::copy_n(&texcoords[static_cast<size_t>(triangle[i].texcoord * 2)], 2,
                                &model.texcoords[vertices[i] * 2]);
                if (lit)
                    std::copy_n(&normals[static_cast<size_t>(triangle[i].normal * 3)], 3,
                                &model.normals[vertices[i] * 3]);
            }
            if (lit) model.normals_given = true;
        }
    }

    void library(const std::string& name) {
        const int fd = open((directory + "/" + name).c_str(), O_RDONLY);
        if (fd < 0) return;
        reference_material* current = nullptr;
        read_lines(fd, false, [&](const char* line) {
            if (begins(line, "newmtl")) {
                const std::string material_name = line[6] == ' ' ? line + 7 : "";
                current = &(materials[material_name] = {});
                current->name = material_name;
            } else if (!current) {
                return;
            } else if (line[0] == 'd') {
                scan_all(line, "d %f", 1, &current->alpha);
            } else if (begins(line, "Ka")) {
                scan_all(line, "Ka %f %f %f", 3, current->ambient);
            } else if (begins(line, "Kd")) {
                scan_all(line, "Kd %f %f %f", 3, current->diffuse);
            } else if (begins(line, "Ks")) {
                scan_all(line, "Ks %f %f %f", 3, current->specular);
            } else if (begins(line, "Ns")) {
                scan_all(line, "Ns %f", 1, &current->spec_exp);
            } else if (begins(line, "map_Kd") && !eighth_on(line).empty()) {
                std::string path = directory + "/" + eighth_on(line);
                for (char& c : path) {
                    if (c == '\\') c = '/';
                }
                current->diffuse_map = path;
            }
        });
        close(fd);
    }

    void handle(const char* line) {
        float v[3];
        if (begins(line, "mtllib")) {
            library(eighth_on(line));
        } else if (begins(line, "usemtl")) {
            const auto found = materials.find(eighth_on(line));
            if (found == materials.end()) return;
            model.segments.push_back({found->second, static_cast<int32_t>(model.indices.size() / 3)});
        } else if (begins(line, "v ")) {
            if (!scan_all(line, "v %f %f %f", 3, v)) return;
            positions.insert(positions.end(), v, v + 3);
            const float r = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
            if (r > model.radius && (model.radius == 0 || r / model.radius < 1.0e9f)) model.radius = r;
        } else if (begins(line, "vn")) {
            if (scan_all(line, "vn %f %f %f", 3, v)) normals.insert(normals.end(), v, v + 3);
        } else if (begins(line, "vt")) {
            if (scan_all(line, "vt %f %f", 2, v)) texcoords.insert(texcoords.end(), {v[0], 1.0f - v[1]});
        } else if (line[0] == 'f') {
            face(line);
        }
    }
};

} // namespace

std::optional<reference_model> reference_load(const std::string& filename) {
    const int fd = open(filename.c_str(), O_RDONLY);
    if (fd < 0) return std::nullopt;
    loader l;
    const size_t slash = filename.rfind('/');
    l.directory = slash == std::string::npos ? "./" : filename.substr(0, slash);
    read_lines(fd, true, [&](const char* line) { l.handle(line); });
    close(fd);
    return l.model;
}

int reference_scan(const char* text, float* values, int count) {
    static const char* const formats[] = {"%f", "%f %f", "%f %f %f"};
    float v[3];
    const int there = scan(text, formats[count - 1], v);
    memcpy(values, v, sizeof(float) * static_cast<size_t>(there));
    return there;
}
