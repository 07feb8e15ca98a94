// Wavefront OBJ models.
#ifndef LOADERS_GROUP_OBJ_H
#define LOADERS_GROUP_OBJ_H

#include "loaders/load_context.h"
#include "scene/scene.h"

// Reads a model and its material libraries into a scene, as one mesh under the root. 1 when the file
// was read, even without any geometry; 0 when it could not be opened or memory ran out: the scene is
// then released and zero-filled.
int group_loadobj(scene* s, const char* filename, load_context* context);

#endif
