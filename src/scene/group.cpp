#include "scene/group.h"

#include "base/heap.h"
#include "model3d/math.h"
#include "scene/bindings.h"

#include <algorithm>

int group_create(group* g, int32_t capacity) {
    mat_identity(g->transform);
    mat_identity(g->bind_transform);
    for (int i = 0; i < 3; ++i) {
        g->rotation[i] = g->bind_rotation[i] = 0.0f;
        g->translation[i] = g->bind_translation[i] = 0.0f;
        g->scaling[i] = g->bind_scaling[i] = 1.0f;
    }
    g->nnodes = 0;
    g->capacity = capacity;
    g->nodes = heap_array<node_entry>(static_cast<size_t>(std::max(capacity, 0)));
    if (!g->nodes) return 0;
    g->radius = 0.0f;
    return 1;
}

int group_push(group* g, void* node, node_load load, node_config config, node_prerender prerender,
               node_render render, node_export export_node, node_free free) {
    if (g->nnodes >= g->capacity && !group_grow(g)) return 0;
    g->nodes[g->nnodes++] = {node, load, config, render, prerender, export_node, free};
    return g->nnodes == g->capacity ? group_grow(g) : 1;
}

int group_grow(group* g) {
    return heap_double(g->nodes, g->capacity);
}

node_entry* group_getnode(group* g, int32_t index) {
    return index >= 0 && index < g->nnodes ? &g->nodes[index] : nullptr;
}

void group_transform(const group* g, const float parent[16], float out[16]) {
    float factors[6][16];
    memcpy(factors[0], g->transform, sizeof(factors[0]));
    mat_translate(factors[1], g->translation[0], g->translation[1], g->translation[2]);
    mat_rotate_x(factors[2], g->rotation[0]);
    mat_rotate_y(factors[3], g->rotation[1]);
    mat_rotate_z(factors[4], g->rotation[2]);
    mat_scale(factors[5], g->scaling[0], g->scaling[1], g->scaling[2]);

    float product[16];
    memcpy(out, parent, sizeof(product));
    for (const auto& factor : factors) {
        mat_mul(out, factor, product);
        memcpy(out, product, sizeof(product));
    }
}

void group_load(void* node, int use_vbos, render_context* context) {
    auto* g = static_cast<group*>(node);
    group_store(g->name, g, context);
    for (int32_t i = 0; i < g->nnodes; ++i) {
        g->nodes[i].load(g->nodes[i].node, use_vbos, context);
    }
}

void group_render(void* node, draw_callback callback, const float parent[16], void* user) {
    const auto* g = static_cast<group*>(node);
    float world[16];
    group_transform(g, parent, world);
    for (int32_t i = 0; i < g->nnodes; ++i) {
        g->nodes[i].render(g->nodes[i].node, callback, world, user);
    }
}

void group_prerender(void* node, int unused, const float parent[16], void* user) {
    const auto* g = static_cast<group*>(node);
    float world[16];
    group_transform(g, parent, world);
    for (int32_t i = 0; i < g->nnodes; ++i) {
        g->nodes[i].prerender(g->nodes[i].node, unused, world, user);
    }
}

void group_free(void* node) {
    auto* g = static_cast<group*>(node);
    heap_clear(g->name);
    if (!g->nodes) return;
    for (int32_t i = 0; i < g->nnodes; ++i) {
        const node_entry& entry = g->nodes[i];
        if (!entry.free) continue;
        entry.free(entry.node);
        free(entry.node);
    }
    heap_clear(g->nodes);
}
