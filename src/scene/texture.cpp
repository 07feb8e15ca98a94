#include "scene/texture.h"

#include "base/heap.h"

int texture_create(texture* t, const char* path) {
    *t = {};
    t->refcount = 1;
    t->filename = heap_text(path);
    if (!t->filename) return 0;
    for (char* c = t->filename; *c; ++c) {
        if (*c == '\\') *c = '/';
    }
    return 1;
}

int texture_set_base_filename(texture* t, const char* name) {
    char* copy = heap_text(name);
    if (!copy) return 0;
    free(t->base_filename);
    t->base_filename = copy;
    return 1;
}

texture* texture_getref(texture* t) {
    ++t->refcount;
    return t;
}

texture* texture_copy(const texture* t) {
    if (!t) return nullptr;
    auto* copy = heap_array<texture>(1);
    if (!copy) return nullptr;
    *copy = *t;
    copy->filename = heap_text(t->filename);
    copy->base_filename = heap_text(t->base_filename);
    copy->image = nullptr; // the reference is the source's
    if (!copy->filename != !t->filename || !copy->base_filename != !t->base_filename) {
        free(copy->filename);
        free(copy->base_filename);
        heap_clear(copy);
    }
    return copy;
}

void texture_free(texture* t) {
    if (--t->refcount > 0) return;
    texture_delete(t);
    free(t->filename);
    free(t->base_filename);
    free(t);
}
