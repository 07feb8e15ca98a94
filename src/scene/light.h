// A light of the tree. It has no matrix of its own and shines down its group's -y axis.
#ifndef SCENE_LIGHT_H
#define SCENE_LIGHT_H

#include "scene/node.h"

enum light_type : int32_t { light_none = 0, light_directional = 1, light_point = 2 };

struct light {
    char* name;
    int32_t type; // light_type, or a kind that is kept and not lit
    float color[3];
    float intensity;    // percent
    float position[3];  // world position of a point light, set by light_prerender
    float direction[3]; // world direction of a directional light, set by light_prerender
};

// Returns 1.
int light_create(light* l, const char* name);

// Node operations. All but light_free are defined with the frame driver.
void light_load(void* node, int use_vbos, render_context* context);
void light_config(void* node, render_context* context);
void light_render(void* node, draw_callback callback, const float parent[16], void* user);
void light_prerender(void* node, int unused, const float parent[16], void* user);
void light_free(void* node);

#endif
