#include "scene/scene.h"

#include "base/heap.h"

namespace {

// Stores an element and grows the list when that filled it, so that it keeps a free slot. A list left
// full by a failed growth tries again first.
template <class T> int push(T**& list, int32_t& count, int32_t& capacity, T* element) {
    if (count >= capacity && !heap_double(list, capacity)) return 0;
    list[count++] = element;
    return count == capacity ? heap_double(list, capacity) : 1;
}

} // namespace

int scene_create(scene* s) {
    *s = {};
    s->textures_capacity = 4;
    s->lights_capacity = 8;
    s->animations_capacity = 4;
    s->textures = heap_array<texture*>(4);
    if (!s->textures) return 0;
    s->lights = heap_array<light*>(8);
    if (!s->lights) return 0;
    s->animations = heap_array<void*>(4);
    if (!s->animations) return 0;
    return group_create(&s->root, 1);
}

int scene_pushtexture(scene* s, texture* t) {
    return push(s->textures, s->ntextures, s->textures_capacity, t);
}

int scene_pushlight(scene* s, light* l) {
    return push(s->lights, s->nlights, s->lights_capacity, l);
}

int scene_pushanimation(scene* s, void* animation) {
    return push(s->animations, s->nanimations, s->animations_capacity, animation);
}

int scene_growtextures(scene* s) {
    return heap_double(s->textures, s->textures_capacity);
}

int scene_growlights(scene* s) {
    return heap_double(s->lights, s->lights_capacity);
}

int scene_growanimations(scene* s) {
    return heap_double(s->animations, s->animations_capacity);
}

void scene_free(scene* s) {
    if (s->textures) {
        for (int32_t i = 0; i < s->ntextures; ++i) {
            if (s->textures[i]) texture_free(s->textures[i]);
        }
        heap_clear(s->textures);
    }
    heap_clear(s->lights);
    heap_clear(s->animations);
    group_free(&s->root);
    // The lights belonged to the tree, and nothing may be counted that is gone.
    s->ntextures = s->nlights = s->nanimations = 0;
    s->root.nnodes = 0;
}
