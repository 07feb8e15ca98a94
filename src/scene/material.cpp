#include "scene/material.h"

#include "base/heap.h"

namespace {

// All maps, in the order they stand in the record. Only the diffuse map is ever drawn.
texture* material::*const maps[] = {
    &material::diffuseMap, &material::specularMap, &material::ambientMap,    &material::emissiveMap,
    &material::bumpMap,    &material::normalMap,   &material::reflectionMap,
};

void set_grey(float color[3], float value) {
    color[0] = color[1] = color[2] = value;
}

} // namespace

void material_create(material* m, const char* name) {
    *m = {};
    m->name = heap_text(name);
    set_grey(m->ambient, 0.2f);
    set_grey(m->diffuse, 0.8f);
    set_grey(m->specular, 1.0f);
    m->alpha = 1.0f;
}

int material_copy(material* dst, material* src) {
    *dst = *src;
    dst->name = heap_text(src->name);
    bool complete = !dst->name == !src->name;
    for (const auto map : maps) {
        dst->*map = texture_copy(src->*map);
        complete &= !(dst->*map) == !(src->*map);
    }
    src->used = 1;
    return complete;
}

void material_load(material* m, render_context* context) {
    for (const auto map : maps) {
        texture* t = m->*map;
        if (!t) continue;
        const int loaded = texture_load(t, context);
        if (!loaded && map == &material::diffuseMap) texture_load_fallback_texture(t);
    }
}

void material_free(material* m) {
    heap_clear(m->name);
    for (const auto map : maps) {
        if (m->*map) texture_free(m->*map);
        m->*map = nullptr;
    }
    free(m);
}

void freematerial(void* m) {
    material_free(static_cast<material*>(m));
}
