// What a control shows: a tree, and lists of what is in it.
#ifndef SCENE_SCENE_H
#define SCENE_SCENE_H

#include "scene/group.h"
#include "scene/light.h"
#include "scene/texture.h"

// Every list keeps room for one element more than it holds.
struct scene {
    int32_t ntextures;
    int32_t textures_capacity;
    texture** textures; // one reference each
    int32_t nlights;
    int32_t lights_capacity;
    light** lights; // owned by the tree
    int32_t nanimations;
    int32_t animations_capacity;
    void** animations;
    group root;
};

// 1, or 0 when an allocation failed; free with scene_free in both cases. The root has no name.
int scene_create(scene* s);

// 1; 0 when the list could not be grown afterwards (the element is stored), or had no slot left (the
// element is not stored).
int scene_pushtexture(scene* s, texture* t);
int scene_pushlight(scene* s, light* l);
int scene_pushanimation(scene* s, void* animation);

// Double a list. On failure return 0 and the list is as it was.
int scene_growtextures(scene* s);
int scene_growlights(scene* s);
int scene_growanimations(scene* s);

// Releases everything and leaves a record that may be freed again. A zero-filled scene is fine.
void scene_free(scene* s);

#endif
