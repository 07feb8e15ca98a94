// Surface of a mesh segment.
#ifndef SCENE_MATERIAL_H
#define SCENE_MATERIAL_H

#include "scene/texture.h"

struct material {
    char* name;
    float ambient[3];
    float diffuse[3];
    float specular[3];
    float emissive[3];
    float spec_exp;
    float alpha;
    float reflectivity;  // kept, not drawn
    texture* diffuseMap; // the only map that is drawn
    texture* specularMap;
    texture* ambientMap;
    texture* emissiveMap;
    texture* bumpMap;
    texture* normalMap;
    texture* reflectionMap;
    int32_t used; // set on a material that was copied from
};

// Initialises a heap-allocated record.
void material_create(material* m, const char* name);

// Copies into an uninitialised record, with a name and texture records of its own; marks src used. 0 when
// memory was short for one of them, which the copy then goes without; else 1.
int material_copy(material* dst, material* src);

// Loads the maps; a diffuse map that cannot be had becomes the fallback texture.
void material_load(material* m, render_context* context);

// Releases the maps and the record.
void material_free(material* m);

// material_free as a container's release function.
void freematerial(void* m);

#endif
