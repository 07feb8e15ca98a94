// Smooth normals for meshes that come without any.

#include "base/heap.h"
#include "model3d/math.h"
#include "scene/trimesh.h"

#include <algorithm>

int cmp_vertices(const void* p, const void* q) {
    const auto* a = static_cast<const vertex_record*>(p);
    const auto* b = static_cast<const vertex_record*>(q);
    if (a->x != b->x) return a->x < b->x ? -1 : 1;
    if (a->y != b->y) return a->y < b->y ? -1 : 1;
    if (a->z != b->z) return a->z < b->z ? -1 : 1;
    return 0;
}

namespace {

// A whole number that orders floats as their values do, both zeros alike. NaNs get places too: a sort
// needs a total order, which cmp_vertices is not when there are any.
uint32_t order_key(float value) {
    const float positive_zero = value + 0.0f;
    uint32_t bits = 0;
    memcpy(&bits, &positive_zero, sizeof(bits));
    return bits & 0x80000000u ? ~bits : bits | 0x80000000u;
}

bool in_order(const vertex_record& a, const vertex_record& b) {
    const float* const p[] = {&a.x, &a.y, &a.z};
    const float* const q[] = {&b.x, &b.y, &b.z};
    for (int i = 0; i < 3; i++) {
        const uint32_t key_a = order_key(*p[i]);
        const uint32_t key_b = order_key(*q[i]);
        if (key_a != key_b) return key_a < key_b;
    }
    // By index within a position: sums are then made in the same order on every machine.
    return a.index < b.index;
}

void face_normals(trimesh* mesh) {
    for (size_t f = 0; f < static_cast<size_t>(mesh->nfaces); f++) {
        const uint32_t* const face = mesh->indices + f * 3;
        const float* const a = mesh->vertices + size_t{face[0]} * 3;
        float ab[3], ac[3], normal[3];
        vec_sub(mesh->vertices + size_t{face[1]} * 3, a, ab);
        vec_sub(mesh->vertices + size_t{face[2]} * 3, a, ac);
        vec_cross(ab, ac, normal);
        vec_normalize(normal);
        for (int corner = 0; corner < 3; corner++) {
            memcpy(mesh->normals + size_t{face[corner]} * 3, normal, sizeof(normal));
        }
    }
}

// Gives every vertex of a run at one position the mean direction of their normals.
void smooth_run(trimesh* mesh, const vertex_record* begin, const vertex_record* end) {
    float sum[3] = {0.0f, 0.0f, 0.0f};
    for (const auto* record = begin; record != end; record++) {
        vec_add(sum, mesh->normals + size_t{record->index} * 3, sum);
    }
    vec_normalize(sum);
    for (const auto* record = begin; record != end; record++) {
        memcpy(mesh->normals + size_t{record->index} * 3, sum, sizeof(sum));
    }
}

} // namespace

void trimesh_calculatenormals(trimesh* mesh) {
    if (!mesh->calc_normals) return;
    mesh->calc_normals = 0;
    if (!mesh->use_normals) return;
    face_normals(mesh);

    const auto count = static_cast<size_t>(mesh->nvertices);
    const heap_ptr<vertex_record> records{heap_array<vertex_record>(count)};
    if (!records) return; // the face normals stay
    vertex_record* const end = records.get() + count;
    for (size_t i = 0; i < count; i++) {
        const float* const v = mesh->vertices + i * 3;
        records.get()[i] = {v[0], v[1], v[2], static_cast<uint32_t>(i)};
    }
    std::sort(records.get(), end, in_order);

    for (vertex_record* run = records.get(); run != end;) {
        vertex_record* next = run + 1;
        while (next != end && cmp_vertices(run, next) == 0) {
            next++;
        }
        if (next - run > 1) smooth_run(mesh, run, next);
        run = next;
    }
}
