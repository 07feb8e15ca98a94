// Inner node of the tree: places its children.
#ifndef SCENE_GROUP_H
#define SCENE_GROUP_H

#include "scene/node.h"

// Radians. The plain transform and the three values after it are what the frame uses; the bind_ ones
// keep what the file gave.
struct group {
    char* name; // owned, may be null
    float transform[16];
    float bind_transform[16];
    float rotation[3];
    float translation[3];
    float scaling[3];
    float bind_rotation[3];
    float bind_translation[3];
    float bind_scaling[3];
    node_entry* nodes; // owned
    int32_t nnodes;
    int32_t capacity;
    float radius; // bounding radius about the group's origin
};

// Initialises everything but the name. 1, or 0 when the child array could not be allocated.
int group_create(group* g, int32_t capacity);

// Appends a heap-allocated node, which then belongs to the group. Mind the order: prerender before
// render. 1; 0 when the array could not be grown afterwards (the node is stored), or when there was no
// slot left from an earlier failure and growing fails again (the node is not stored).
int group_push(group* g, void* node, node_load load, node_config config, node_prerender prerender,
               node_render render, node_export export_node, node_free free);

// Doubles the child array. On failure returns 0 and the group is as it was.
int group_grow(group* g);

// The entry, or null when the index is out of range.
node_entry* group_getnode(group* g, int32_t index);

// out = parent * transform * T * Rx * Ry * Rz * S.
void group_transform(const group* g, const float parent[16], float out[16]);

// Node operations. group_config is the bindings' (scene/bindings.h).
void group_load(void* node, int use_vbos, render_context* context);
void group_render(void* node, draw_callback callback, const float parent[16], void* user);
void group_prerender(void* node, int unused, const float parent[16], void* user);
void group_free(void* node);

#endif
