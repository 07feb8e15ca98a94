// Smooth normals for meshes that come without any.

#include "base/heap.h"
#include "model3d/math.h"
#include "scene/trimesh.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

int cmp_vertices(const void* p, const void* q) {
    const auto* a = static_cast<const vertex_record*>(p);
    const auto* b = static_cast<const vertex_record*>(q);
    if (a->x != b->x) return a->x < b->x ? -1 : 1;
    if (a->y != b->y) return a->y < b->y ? -1 : 1;
    if (a->z != b->z) return a->z < b->z ? -1 : 1;
    return 0;
}

namespace {

// Vertices at one position have one hash. Few others share it, however many there are in a real model.
struct hashed_vertex {
    uint32_t hash;
    uint32_t index;
};

constexpr uint32_t digit_bits = 8; // as many places to write to as a small cache has lines for
constexpr uint32_t digit_count = 1u << digit_bits;
constexpr uint32_t hash_digits = 3;

uint32_t hash_position(const float position[3]) {
    uint64_t hash = 0;
    for (int i = 0; i < 3; ++i) {
        hash ^= std::bit_cast<uint32_t>(position[i] + 0.0f); // makes both zeros one
        hash *= 0x9e3779b97f4a7c15u;
        hash ^= hash >> 32;
    }
    return static_cast<uint32_t>(hash) & ((1u << digit_bits * hash_digits) - 1);
}

uint32_t digit(uint32_t hash, uint32_t place) {
    return hash >> place * digit_bits & (digit_count - 1);
}

// Room for all vertices, twice: sorting goes from one to the other.
struct workspace {
    hashed_vertex* vertices;
    hashed_vertex* spare;
};

// Fills in the vertices in the order of their hashes, and of their indices within each. Returns how many
// there are: a vertex that is not even equal to itself is left out.
size_t sort_by_hash(const trimesh* mesh, workspace* work) {
    uint32_t starts[hash_digits][digit_count] = {};
    size_t count = 0;
    for (uint32_t i = 0; i < static_cast<uint32_t>(mesh->nvertices); ++i) {
        const float* const p = mesh->vertices + size_t{i} * 3;
        if (std::isnan(p[0]) || std::isnan(p[1]) || std::isnan(p[2])) continue;
        const uint32_t hash = hash_position(p);
        work->vertices[count++] = {hash, i};
        for (uint32_t place = 0; place < hash_digits; ++place) {
            ++starts[place][digit(hash, place)];
        }
    }
    for (uint32_t place = 0; place < hash_digits; ++place) {
        std::exclusive_scan(starts[place], starts[place] + digit_count, starts[place], 0u);
        const hashed_vertex* const from = work->vertices;
        for (size_t i = 0; i < count; ++i) {
            work->spare[starts[place][digit(from[i].hash, place)]++] = from[i];
        }
        std::swap(work->vertices, work->spare);
    }
    return count;
}

int compare(const trimesh* mesh, hashed_vertex a, hashed_vertex b) {
    const auto record = [mesh](uint32_t index) {
        const float* const p = mesh->vertices + size_t{index} * 3;
        return vertex_record{p[0], p[1], p[2], index};
    };
    const vertex_record p = record(a.index), q = record(b.index);
    return cmp_vertices(&p, &q);
}

void face_normals(trimesh* mesh) {
    for (size_t f = 0; f < static_cast<size_t>(mesh->nfaces); ++f) {
        const uint32_t* const face = mesh->indices + f * 3;
        const float* const a = mesh->vertices + size_t{face[0]} * 3;
        float ab[3], ac[3], normal[3];
        vec_sub(mesh->vertices + size_t{face[1]} * 3, a, ab);
        vec_sub(mesh->vertices + size_t{face[2]} * 3, a, ac);
        vec_cross(ab, ac, normal);
        vec_normalize(normal);
        for (int corner = 0; corner < 3; ++corner) {
            memcpy(mesh->normals + size_t{face[corner]} * 3, normal, sizeof(normal));
        }
    }
}

// Calls `visit` with each run of vertices at one position, in the order of their indices.
template <class Visit>
void visit_positions(const trimesh* mesh, hashed_vertex* begin, hashed_vertex* end, Visit visit) {
    while (begin != end) {
        hashed_vertex* next = begin + 1;
        bool one_position = true;
        for (; next != end && next->hash == begin->hash; ++next) {
            one_position &= compare(mesh, *begin, *next) == 0;
        }
        if (!one_position) {
            // Positions made to have one hash must not cost more than any others.
            std::sort(begin, next, [mesh](hashed_vertex a, hashed_vertex b) {
                const int order = compare(mesh, a, b);
                return order != 0 ? order < 0 : a.index < b.index;
            });
        }
        while (begin != next) {
            hashed_vertex* const first = begin++;
            while (begin != next && (one_position || compare(mesh, *first, *begin) == 0)) {
                ++begin;
            }
            visit(first, begin);
        }
    }
}

// The first of several vertices at a position.
constexpr uint32_t leads = UINT32_MAX;

// Gives all vertices at a position the mean direction of their normals. `first` has for each vertex the
// first at its position, itself when it is alone there, or `leads`. Sums are made in the order of indices,
// so that they are the same on every machine.
void smooth(trimesh* mesh, const hashed_vertex* first) {
    static constexpr float zero[3] = {};
    const auto normal = [mesh](uint32_t vertex) { return mesh->normals + size_t{vertex} * 3; };
    const auto count = static_cast<uint32_t>(mesh->nvertices);
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t f = first[i].index;
        if (f == leads) {
            vec_add(zero, normal(i), normal(i));
        } else if (f != i) {
            vec_add(normal(f), normal(i), normal(f));
        }
    }
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t f = first[i].index;
        if (f == leads) {
            vec_normalize(normal(i));
        } else if (f != i) {
            memcpy(normal(i), normal(f), 3 * sizeof(float));
        }
    }
}

} // namespace

int trimesh_calculatenormals(trimesh* mesh) {
    if (!mesh->calc_normals) return 1;
    mesh->calc_normals = 0;
    if (!mesh->use_normals) return 1;
    face_normals(mesh);

    const auto count = static_cast<size_t>(mesh->nvertices);
    const heap_ptr<hashed_vertex> room{heap_array<hashed_vertex>(count * 2)};
    if (!room) return 0; // the face normals stay
    workspace work = {room.get(), room.get() + count};
    const size_t sorted = sort_by_hash(mesh, &work);

    hashed_vertex* const first = work.spare;
    for (size_t i = 0; i < count; ++i) {
        first[i].index = static_cast<uint32_t>(i);
    }
    const auto note = [first](const hashed_vertex* begin, const hashed_vertex* end) {
        if (end - begin < 2) return;
        first[begin->index].index = leads;
        for (const hashed_vertex* v = begin + 1; v != end; ++v) {
            first[v->index].index = begin->index;
        }
    };
    visit_positions(mesh, work.vertices, work.vertices + sorted, note);
    smooth(mesh, first);
    return 1;
}
