// Triangle mesh: the drawable leaf of the tree.
#ifndef SCENE_TRIMESH_H
#define SCENE_TRIMESH_H

#include "scene/node.h"

// Covers the faces from startIndex to the next segment's, the last one to the end.
struct material_segment {
    ::material* material; // owned by the mesh
    int32_t startIndex;   // face
};

// Pushing keeps room for one element more in each array; a mesh may come with full ones. Once trimesh_load
// has put the mesh into buffer objects, its arrays are released and null.
struct trimesh {
    char* name;
    float transform[16];
    float* vertices;   // x, y, z
    float* normals;    // x, y, z; null without
    float* tangents;   // x, y, z; null without
    float* binormals;  // x, y, z; null without
    float** texcoords; // use_textures arrays of u, v; null without. Set 0 is drawn
    uint32_t* indices; // three a face
    uint32_t vbos[2];  // GL names: vertices, indices
    material_segment* materials;
    int32_t nvertices;
    int32_t nfaces;
    int32_t nmaterials;
    int32_t vertex_capacity;
    int32_t face_capacity;
    int32_t material_capacity;
    int32_t use_normals;
    int32_t calc_normals; // no normal was given: compute them before drawing
    int32_t use_textures; // number of texture-coordinate sets
    int32_t use_tangents;
    int32_t use_binormals;
    uint32_t context; // that vbos belong to
};

// Makes room for the given sizes, each plus one. 1, or 0 when an allocation failed; free with
// trimesh_free in both cases.
int trimesh_create(trimesh* mesh, const char* name, int32_t nvertices, int32_t nfaces, int32_t nmaterials,
                   int32_t use_normals, int32_t use_textures, int32_t use_tangents, int32_t use_binormals);

// Building. 1; 0 when an array could not be grown: the mesh then keeps its old arrays, and what no
// longer fits is not stored. A pushed material belongs to the mesh when the result is 1 or the segment
// count went up.
int trimesh_pushvertex(trimesh* mesh, float x, float y, float z);
int trimesh_pushface(trimesh* mesh, uint32_t a, uint32_t b, uint32_t c);
int trimesh_pushmaterial(trimesh* mesh, material* m);
int trimesh_pushmaterialsegment(trimesh* mesh, material* m, int32_t start_index);

// Gives back the room that growing by doubling has left, but for one vertex and one face.
void trimesh_trim(trimesh* mesh);

// Set one vertex. trimesh_setnormal also clears calc_normals. Attributes the mesh lacks are ignored.
void trimesh_setnormal(trimesh* mesh, int32_t vertex, float x, float y, float z);
void trimesh_settangent(trimesh* mesh, int32_t vertex, float x, float y, float z);
void trimesh_setbinormal(trimesh* mesh, int32_t vertex, float x, float y, float z);
void trimesh_settexcoord(trimesh* mesh, int32_t vertex, float u, float v);
void trimesh_settexcoordn(trimesh* mesh, int32_t set, int32_t vertex, float u, float v);

// Copy `size` bytes to the start of an array, which must exist and be large enough.
void trimesh_setnormals(trimesh* mesh, const void* data, size_t size);
void trimesh_settangents(trimesh* mesh, const void* data, size_t size);
void trimesh_setbinormals(trimesh* mesh, const void* data, size_t size);
void trimesh_settexcoordsn(trimesh* mesh, int32_t set, const void* data, size_t size);

// Face normals, averaged over vertices at exactly the same position. Only when calc_normals is set. 1; 0 when
// memory was short: the normals are then those of the faces.
int trimesh_calculatenormals(trimesh* mesh);

// Scales texture set 0 to the part of their GL textures that the diffuse images fill. 1; 0 when memory was
// short: nothing is scaled then.
int trimesh_scaletexcoords(trimesh* mesh);

// Position and index of a vertex. cmp_vertices orders them by x, y, z for qsort: -1, 0 or 1, a NaN comparing
// as greater.
struct vertex_record {
    float x, y, z;
    uint32_t index;
};
int cmp_vertices(const void* p, const void* q);

// The face after the last one of segment `i`.
int32_t trimesh_segment_end(const trimesh* mesh, int32_t i);

// Node operations.
void trimesh_load(void* node, int use_vbos, render_context* context);
void trimesh_config(void* node, render_context* context);
void trimesh_render(void* node, draw_callback callback, const float parent[16], void* user);
void trimesh_prerender(void* node, int unused, const float parent[16], void* user);
void trimesh_free(void* node);

// Deletes the buffer objects, where GL still knows them. Those of a lost context are only forgotten.
void trimesh_delete(trimesh* mesh);

#endif
