// Scene files as models.
#ifndef LOADERS_GROUP_QEL_H
#define LOADERS_GROUP_QEL_H

#include "loaders/load_context.h"
#include "scene/scene.h"

// Reads a scene file: the first scene group of its first QELF form. Warnings go to standard error. 1, or 0
// when it could not be read, is not a scene file of version 2.0, or holds counts or indices that do not fit
// together: the scene is then released and zero-filled.
int group_loadqel(scene* s, const char* filename, load_context* context);

#endif
