#include "scene/light.h"

#include "base/heap.h"

int light_create(light* l, const char* name) {
    l->name = heap_text(name);
    l->type = light_none;
    for (float& channel : l->color) {
        channel = 1.0f;
    }
    l->intensity = 1.0f;
    return 1;
}

void light_free(void* node) {
    heap_clear(static_cast<light*>(node)->name);
}
