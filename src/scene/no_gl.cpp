// Stands in for what draws, where trees are only built and looked at: in tools and without any GL.

#include "scene/bindings.h"
#include "scene/light.h"
#include "scene/texture.h"
#include "scene/trimesh.h"

void group_store(const char*, group*, render_context*) {}
void group_config(void*, render_context*) {}

void light_load(void*, int, render_context*) {}
void light_config(void*, render_context*) {}
void light_render(void*, draw_callback, const float[16], void*) {}
void light_prerender(void*, int, const float[16], void*) {}

void trimesh_load(void*, int, render_context*) {}
void trimesh_config(void*, render_context*) {}
void trimesh_render(void*, draw_callback, const float[16], void*) {}
void trimesh_prerender(void*, int, const float[16], void*) {}
void trimesh_delete(trimesh*) {}

int texture_load(texture*, render_context*) {
    return 0;
}
int texture_load_fallback_texture(texture*) {
    return 0;
}
void texture_delete(texture*) {}
