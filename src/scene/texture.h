// A texture: an image file and the GL texture made of it, shared by reference count.
#ifndef SCENE_TEXTURE_H
#define SCENE_TEXTURE_H

#include "scene/node.h"

struct texture {
    int32_t refcount;
    char* filename;      // with "/" only
    char* base_filename; // may be null
    uint32_t id;         // GL name, 0: none
    int32_t index;       // position in the scene file's list
    int32_t width;       // of the GL texture, texels
    int32_t height;
    float scale_u; // part of the GL texture that the image fills
    float scale_v;
    uint32_t context;       // that `id` belongs to
    kora_reference* image;  // held for an image of which no copy was made, else null
    resource_manager* host; // that gave it
};

// Initialises a heap-allocated record with one reference. 1, or 0 when the path could not be copied.
int texture_create(texture* t, const char* path);

// 1, or 0 when the name could not be copied.
int texture_set_base_filename(texture* t, const char* name);

// Adds a reference.
texture* texture_getref(texture* t);

// An independent record that starts with the source's count; null for null or on failure. For textures
// that are not loaded yet.
texture* texture_copy(const texture* t);

// Drops a reference; the last one deletes the GL texture and the record.
void texture_free(texture* t);

// Gets the image from the host, once. 1, or 0 when the host has none; the record is then untouched.
int texture_load(texture* t, render_context* context);

// Stands in for an image that could not be loaded: a checkerboard that says so. Returns 1.
int texture_load_fallback_texture(texture* t);

// Binds to unit 0. Null is ignored.
void texture_use(const texture* t);

// Deletes the GL texture, or forgets the one of a lost context, and lets go of the host's image.
void texture_delete(texture* t);

#endif
