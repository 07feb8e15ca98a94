// The scene file of a tree.
#ifndef SCENE_SAVE_H
#define SCENE_SAVE_H

#include "qelf/qelf.h"
#include "scene/group.h"

// An image of a scene file; materials know it by its place in the list.
struct saved_texture {
    const char* name;
    const char* path;
};

// A file's form with an exported group, which is taken over, and the textures; for QELF_free. Null, after a
// report through IFF_errorCallback, without memory or when something below the group could not be exported;
// null for null.
IFF_Form* scene_form(QELF_Node* exported, const saved_texture* textures, size_t count);

// Writes the tree as a scene file in the place of what is there. False, with that as it was, when it could
// not be exported or written.
bool scene_save(group* root, const saved_texture* textures, size_t count, const char* path);

#endif
