// Turns the tree into scene-file records, while its meshes still hold their arrays.
#ifndef SCENE_EXPORT_H
#define SCENE_EXPORT_H

#include "qelf/qelf.h"
#include "scene/material.h"

// Node operations: a new node with everything below it, for QELF_freeNode, or null. A mesh whose arrays
// went into buffer objects gives null; its group then has an empty place, which cannot be written.
QELF_Node* group_export(void* node);
QELF_Node* trimesh_export(void* node);
QELF_Node* light_export(void* node);

// Texture numbers are the maps' index plus one. Null without memory.
QELF_Material* material_export(const material* m);

#endif
