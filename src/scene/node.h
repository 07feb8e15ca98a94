// A child of a group: a record of any kind with the operations of that kind.
#ifndef SCENE_NODE_H
#define SCENE_NODE_H

#include "kora/kora.h"

struct model3d_state;
struct material;
struct QELF_Node;

// What loading and the data bindings need to know of the control.
struct render_context {
    model3d_state* state;
    control_record* control;
};

// Asked before each material segment is drawn; `combined` is the mesh's world matrix, `user` the
// control's state. Nonzero: draw the segment.
typedef int (*draw_callback)(const char* mesh_name, const material* segment_material,
                             const float combined[16], void* user);

typedef void (*node_load)(void* node, int use_vbos, render_context* context);
typedef void (*node_config)(void* node, render_context* context);
typedef void (*node_render)(void* node, draw_callback callback, const float parent[16], void* user);
typedef void (*node_prerender)(void* node, int unused, const float parent[16], void* user);
typedef QELF_Node* (*node_export)(void* node);
typedef void (*node_free)(void* node);

struct node_entry {
    void* node; // owned by the group
    node_load load;
    node_config config;
    node_render render;
    node_prerender prerender;
    node_export export_node;
    node_free free; // releases what the node owns, not its record; null: the group leaves the node alone
};

#endif
