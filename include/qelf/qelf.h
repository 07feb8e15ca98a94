/* Scene files: groups, triangle meshes, materials, lights, textures and animations in an IFF-85 FORM of
 * type QELF, version 2.0.
 *
 *   IFF_Chunk* tree = QELF_read("gauge.qel");             the whole file, or null after a report
 *   QELF_Scene** scenes = QELF_extractScenes(tree, &n);   what each QELF form holds; points into the tree
 *   QELF_freeScenes(scenes, n);
 *   QELF_free(tree);
 *
 * and the other way round: QELF_createSceneGroup, QELF_createNode, QELF_createTriangleMesh, ... build
 * records; QELF_createScene and the add operations gather them; QELF_convertSceneToForm makes the form that
 * QELF_write takes.
 *
 * Conventions of this header
 * - Every record starts with the IFF_Chunk fields. Its chunkSize is the computed size: the fixed fields of
 *   its kind plus, for everything embedded, that thing's own size plus 8, and 1 more when it is odd - as if
 *   it stood in the file as a chunk, which it does not. Set operations keep it right, in this record only;
 *   QELF_write makes it right everywhere. A text that was never set counts nothing until then.
 * - Results are 1 or a record for success, 0 or null for failure, after one report through
 *   IFF_errorCallback, a failed allocation included, unless they say otherwise. Failed set operations leave
 *   the record as it was.
 * - Texts given are copied; stored ones have no terminator. Records given are taken over. Every record of a
 *   tree is malloc()ed memory of the tree's.
 * - An operation on bits of a float never changes them: NaNs and both zeros are kept and told apart.
 * - read operations take what follows the chunk's header and read by structure; the declared size they are
 *   given is not looked at. free operations release what a record owns and leave the record itself, unless
 *   they say otherwise.
 */
#ifndef QELF_QELF_H
#define QELF_QELF_H

#include "iff/iff.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Records --------------------------------------------------------------------------------- */

typedef struct QELF_Vector3 {
    float x, y, z;
} QELF_Vector3;

/* Row r, column c is at c * 4 + r. */
typedef struct QELF_Matrix {
    float m[16];
} QELF_Matrix;

typedef struct QELF_Color {
    float r, g, b;
} QELF_Color;

typedef struct QELF_SceneHeader {
    IFF_Chunk chunk;
    uint16_t versionMajor;
    uint16_t versionMinor;
} QELF_SceneHeader;

enum { QELF_NODE_GROUP = 1, QELF_NODE_TRIMESH = 2, QELF_NODE_LIGHT = 3 };

typedef struct QELF_Node {
    IFF_Chunk chunk;
    uint8_t nodeType; /* QELF_NODE_* */
    void* content;    /* QELF_SceneGroup, QELF_TriangleMesh or QELF_Light, owned */
} QELF_Node;

typedef struct QELF_SceneGroup {
    IFF_Chunk chunk;
    int32_t nameLength;
    IFF_RawChunk* name; /* null: never set */
    uint32_t nnodes;
    float radius;
    QELF_Vector3 translation;
    QELF_Vector3 rotation; /* degrees about x, y, z */
    QELF_Vector3 scaling;
    QELF_Matrix local_transform;
    QELF_Node** nodes; /* nnodes of them, owned; null: not added yet */
} QELF_SceneGroup;

/* Texture numbers count the form's TXTR chunks from 1; 0 is none. */
typedef struct QELF_Material {
    IFF_Chunk chunk;
    QELF_Color ambient;
    QELF_Color diffuse;
    QELF_Color specular;
    QELF_Color emissive;
    float spec_exp;
    float alpha;
    float reflectivity;
    uint16_t diffuseMap;
    uint16_t specularMap;
    uint16_t ambientMap;
    uint16_t emissiveMap;
    uint16_t bumpMap;
    uint16_t normalMap;
    uint16_t reflectionMap;
} QELF_Material;

typedef struct QELF_MaterialEntry {
    uint32_t startIndex;     /* first face of the material */
    QELF_Material* material; /* owned; null: not set yet */
} QELF_MaterialEntry;

/* Data records hold little-endian floats and indices, as they are in the file; null: not there. */
typedef struct QELF_TriangleMesh {
    IFF_Chunk chunk;
    int32_t nvertices;
    int32_t nfaces;
    uint32_t nmaterials;
    uint8_t use_normals;
    uint8_t use_tangents;
    uint8_t use_binormals;
    uint8_t use_textures; /* number of texture-coordinate sets */
    QELF_Matrix local_transform;
    QELF_MaterialEntry* materials; /* nmaterials of them, owned */
    IFF_RawChunk* vertexData;      /* VRTX: 3 floats a vertex */
    IFF_RawChunk* normalData;      /* NRML: 3 floats a vertex */
    IFF_RawChunk* tangentData;     /* TNGT: 3 floats a vertex */
    IFF_RawChunk* binormalData;    /* BNML: 3 floats a vertex */
    IFF_RawChunk** texcoordData;   /* TXUV: use_textures records of 2 floats a vertex */
    IFF_RawChunk* indexData;       /* INDX: 3 indices a face */
} QELF_TriangleMesh;

typedef struct QELF_Light {
    IFF_Chunk chunk;
    int32_t nameLength;
    IFF_RawChunk* name; /* null: never set */
    int32_t type;       /* 0 none, 1 directional, 2 point, 3 spot, 4 area, 5 volume */
    QELF_Color color;
    float intensity; /* percent */
} QELF_Light;

typedef struct QELF_Texture {
    IFF_Chunk chunk;
    uint32_t index;
    int32_t nameLength;
    int32_t pathLength;
    IFF_RawChunk* name; /* null: never set */
    IFF_RawChunk* path; /* relative to the scene file's folder; null: never set */
} QELF_Texture;

typedef struct QELF_AnimationKey {
    uint32_t keyIndex; /* frame */
    float keyValue;
} QELF_AnimationKey;

enum {
    TRANSFORM_TRANSLATION_X = 0x10000,
    TRANSFORM_TRANSLATION_Y = 0x10001,
    TRANSFORM_TRANSLATION_Z = 0x10010,
    TRANSFORM_ROTATION_X = 0x10100,
    TRANSFORM_ROTATION_Y = 0x10101,
    TRANSFORM_ROTATION_Z = 0x10110,
    TRANSFORM_SCALING_X = 0x11000,
    TRANSFORM_SCALING_Y = 0x11001,
    TRANSFORM_SCALING_Z = 0x11010
};

typedef struct QELF_AnimationChannel {
    uint32_t channelType; /* TRANSFORM_*; other values are kept */
    int32_t numKeys;
    int32_t nodeNameLength;
    IFF_RawChunk* nodeName;  /* null: never set */
    QELF_AnimationKey* keys; /* numKeys of them, owned */
} QELF_AnimationChannel;

typedef struct QELF_Animation {
    IFF_Chunk chunk;
    float frameRate;
    int32_t nchannels;
    int32_t nameLength;
    IFF_RawChunk* name;              /* null: never set */
    QELF_AnimationChannel* channels; /* nchannels of them, owned */
} QELF_Animation;

/* The chunks of one QELF form, by kind, in form order. Owns the arrays, not the chunks; memory only. */
typedef struct QELF_Scene {
    IFF_ID formType;
    QELF_SceneHeader* sceneHeader; /* null: none */
    uint32_t nsceneGroups;
    QELF_SceneGroup** sceneGroups;
    uint32_t ntextures;
    QELF_Texture** textures;
    uint32_t nanimations;
    QELF_Animation** animations;
} QELF_Scene;

/* The chunk types of a QELF form: the rows, and the table of one form type that IFF operations take. */
MODEL3D_API extern const IFF_Extension QELFFormExtension[4];
MODEL3D_API extern const IFF_FormExtension QELF_formExtensions[1];

/* ---- Whole files and trees -------------------------------------------------------------------
 * For outermost chunks. A record that was never added to a form is freed with IFF_freeChunk(chunk, "QELF",
 * QELF_formExtensions, 1), and likewise for the others. */

MODEL3D_API IFF_Chunk* QELF_read(const char* filename);
MODEL3D_API IFF_Chunk* QELF_readFd(FILE* file);

/* Complete the tree and write it, so that it reads back equal: texts that were never set, and mesh arrays of
 * no elements, become empty ones, and all sizes are counted anew, those of groups around the chunk too. What
 * lacks a node, a node's content, a material or the elements of an array is refused, with nothing written;
 * IFF_write says what becomes of files. */
MODEL3D_API int QELF_write(const char* filename, IFF_Chunk* chunk);
MODEL3D_API int QELF_writeFd(FILE* file, IFF_Chunk* chunk);

MODEL3D_API int QELF_check(const IFF_Chunk* chunk);
MODEL3D_API void QELF_free(IFF_Chunk* chunk);
MODEL3D_API void QELF_print(const IFF_Chunk* chunk);
MODEL3D_API int QELF_compare(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2);

/* ---- Scenes ---------------------------------------------------------------------------------- */

MODEL3D_API QELF_Scene* QELF_createScene(const IFF_ID formType);

/* Append; null is refused without a report. */
MODEL3D_API int QELF_addSceneGroupToScene(QELF_Scene* scene, QELF_SceneGroup* group);
MODEL3D_API int QELF_addTextureToScene(QELF_Scene* scene, QELF_Texture* texture);
MODEL3D_API int QELF_addAnimationToScene(QELF_Scene* scene, QELF_Animation* animation);

/* One scene for every QELF form of the tree, which must outlive them; null with a count of 0 when there is
 * none. */
MODEL3D_API QELF_Scene** QELF_extractScenes(IFF_Chunk* chunk, unsigned int* count);

/* A form that owns the scene's chunks: header, groups, textures, animations. On failure null, and the chunks
 * are still the caller's. */
MODEL3D_API IFF_Form* QELF_convertSceneToForm(QELF_Scene* scene);

MODEL3D_API int QELF_checkScene(const QELF_Scene* scene);
MODEL3D_API int QELF_checkScenes(const IFF_Chunk* chunk, QELF_Scene* const* scenes, unsigned int count);
MODEL3D_API void QELF_freeScene(QELF_Scene* scene);
MODEL3D_API void QELF_freeScenes(QELF_Scene** scenes, unsigned int count);
MODEL3D_API int QELF_SceneIsQELF(const IFF_ID formType);

/* ---- Header ---------------------------------------------------------------------------------- */

MODEL3D_API QELF_SceneHeader* QELF_createSceneHeader(void);
MODEL3D_API QELF_SceneHeader* QELF_readSceneHeader(FILE* file, int32_t chunkSize);
MODEL3D_API int QELF_writeSceneHeader(FILE* file, const QELF_SceneHeader* header);
MODEL3D_API int QELF_checkSceneHeader(const QELF_SceneHeader* header); /* accepts 2.0 */
MODEL3D_API void QELF_freeSceneHeader(QELF_SceneHeader* header);
MODEL3D_API void QELF_printSceneHeader(const QELF_SceneHeader* header, int indentLevel);
MODEL3D_API int QELF_compareSceneHeader(const QELF_SceneHeader* a, const QELF_SceneHeader* b);

/* ---- Groups and nodes ------------------------------------------------------------------------ */

/* No name, no movement, identity matrix, radius 0, room for `nnodes` nodes. */
MODEL3D_API QELF_SceneGroup* QELF_createSceneGroup(uint32_t nnodes);
MODEL3D_API int QELF_setGroupName(QELF_SceneGroup* group, const char* name);

/* Takes the node over. Fails for an index out of range and for a place that is taken. */
MODEL3D_API int QELF_addNodeToGroup(QELF_SceneGroup* group, uint32_t index, QELF_Node* node);
MODEL3D_API QELF_SceneGroup* QELF_readSceneGroup(FILE* file, int32_t chunkSize);
MODEL3D_API int QELF_writeSceneGroup(FILE* file, const QELF_SceneGroup* group);
MODEL3D_API int QELF_checkSceneGroup(const QELF_SceneGroup* group);
MODEL3D_API void QELF_freeSceneGroup(QELF_SceneGroup* group);
MODEL3D_API void QELF_printSceneGroup(const QELF_SceneGroup* group, int indentLevel);
MODEL3D_API int QELF_compareSceneGroup(const QELF_SceneGroup* a, const QELF_SceneGroup* b);

/* Takes the content over; its kind goes with nodeType. Nodes of other types cannot be read and written;
 * reading says nothing about it. */
MODEL3D_API QELF_Node* QELF_createNode(uint8_t nodeType, void* content);
MODEL3D_API QELF_Node* QELF_readNode(FILE* file);
MODEL3D_API int QELF_writeNode(FILE* file, const QELF_Node* node);
MODEL3D_API void QELF_freeNode(QELF_Node* node); /* content and record */
MODEL3D_API void QELF_printNode(const QELF_Node* node, int indentLevel);
MODEL3D_API int QELF_compareNode(const QELF_Node* a, const QELF_Node* b);

MODEL3D_API void QELF_setMatrixValues(QELF_Matrix* matrix, const float values[16]);
MODEL3D_API void QELF_setMatrixToZero(QELF_Matrix* matrix);
MODEL3D_API void QELF_setMatrixIdentity(QELF_Matrix* matrix);
MODEL3D_API int QELF_compareMatrix(const QELF_Matrix* a, const QELF_Matrix* b);
MODEL3D_API void QELF_printMatrix(const QELF_Matrix* matrix, int indentLevel);
MODEL3D_API void QELF_setVector3Values(QELF_Vector3* vector, const float values[3]);
MODEL3D_API void QELF_setVector3ToZero(QELF_Vector3* vector);
MODEL3D_API void QELF_setVector3ToOnes(QELF_Vector3* vector);
MODEL3D_API int QELF_compareVector3(const QELF_Vector3* a, const QELF_Vector3* b);
MODEL3D_API void QELF_printVector3(const QELF_Vector3* vector, int indentLevel);

/* ---- Triangle meshes ------------------------------------------------------------------------- */

/* Identity matrix, room for the material entries, no data records. */
MODEL3D_API QELF_TriangleMesh* QELF_createTriangleMesh(int32_t nvertices, int32_t nfaces, uint32_t nmaterials,
                                                       uint8_t use_normals, uint8_t use_tangents,
                                                       uint8_t use_binormals, uint8_t use_textures);

/* Makes the data records that the flags ask for and that are not there, empty. 1, or 0 after releasing the
 * mesh and its record. */
MODEL3D_API int QELF_allocateTrimeshBuffers(QELF_TriangleMesh* mesh);

/* Copy `size` bytes into a data record made before. A size that does not match the counts is refused. */
MODEL3D_API int QELF_setVertexData(QELF_TriangleMesh* mesh, const void* data, int32_t size);
MODEL3D_API int QELF_setNormalData(QELF_TriangleMesh* mesh, const void* data, int32_t size);
MODEL3D_API int QELF_setTangentData(QELF_TriangleMesh* mesh, const void* data, int32_t size);
MODEL3D_API int QELF_setBinormalData(QELF_TriangleMesh* mesh, const void* data, int32_t size);
MODEL3D_API int QELF_setTexcoordData(QELF_TriangleMesh* mesh, uint32_t set, const void* data, int32_t size);
MODEL3D_API int QELF_setIndexData(QELF_TriangleMesh* mesh, const void* data, int32_t size);

/* Takes the material over; nothing happens when either is null. */
MODEL3D_API int QELF_setMaterial(QELF_TriangleMesh* mesh, uint32_t index, QELF_Material* material);
MODEL3D_API int QELF_setMaterialStartIndex(QELF_TriangleMesh* mesh, uint32_t index, uint32_t startIndex);
MODEL3D_API QELF_TriangleMesh* QELF_readTriangleMesh(FILE* file);
MODEL3D_API int QELF_writeTriangleMesh(FILE* file, const QELF_TriangleMesh* mesh);
MODEL3D_API int QELF_checkTriangleMesh(const QELF_TriangleMesh* mesh);
MODEL3D_API void QELF_freeTriangleMesh(QELF_TriangleMesh* mesh);
MODEL3D_API void QELF_printTriangleMesh(const QELF_TriangleMesh* mesh, int indentLevel);
MODEL3D_API int QELF_compareTriangleMesh(const QELF_TriangleMesh* a, const QELF_TriangleMesh* b);

/* ---- Materials, lights, textures ------------------------------------------------------------- */

MODEL3D_API QELF_Material* QELF_createMaterial(void); /* every field 0 */
MODEL3D_API QELF_Material* QELF_readMaterial(FILE* file);
MODEL3D_API int QELF_writeMaterial(FILE* file, const QELF_Material* material);
MODEL3D_API int QELF_checkMaterial(const QELF_Material* material);
MODEL3D_API void QELF_freeMaterial(QELF_Material* material); /* the record */
MODEL3D_API void QELF_printMaterial(const QELF_Material* material, int indentLevel);
MODEL3D_API int QELF_compareMaterial(const QELF_Material* a, const QELF_Material* b);

MODEL3D_API QELF_Light* QELF_createLight(void); /* no name, type 0, white, intensity 1 */
MODEL3D_API int QELF_setLightName(QELF_Light* light, const char* name);
MODEL3D_API QELF_Light* QELF_readLight(FILE* file);
MODEL3D_API int QELF_writeLight(FILE* file, const QELF_Light* light);
MODEL3D_API int QELF_checkLight(const QELF_Light* light);
MODEL3D_API void QELF_freeLight(QELF_Light* light);
MODEL3D_API void QELF_printLight(const QELF_Light* light, int indentLevel);
MODEL3D_API int QELF_compareLight(const QELF_Light* a, const QELF_Light* b);

MODEL3D_API QELF_Texture* QELF_createTexture(void); /* index 0, no name, no path */
MODEL3D_API int QELF_setTextureName(QELF_Texture* texture, const char* name);
MODEL3D_API int QELF_setTexturePath(QELF_Texture* texture, const char* path);
MODEL3D_API QELF_Texture* QELF_readTexture(FILE* file, int32_t chunkSize);
MODEL3D_API int QELF_writeTexture(FILE* file, const QELF_Texture* texture);
MODEL3D_API int QELF_checkTexture(const QELF_Texture* texture);
MODEL3D_API void QELF_freeTexture(QELF_Texture* texture);
MODEL3D_API void QELF_printTexture(const QELF_Texture* texture, int indentLevel);
MODEL3D_API int QELF_compareTexture(const QELF_Texture* a, const QELF_Texture* b);

/* ---- Animations ------------------------------------------------------------------------------ */

MODEL3D_API QELF_Animation* QELF_createAnimation(int32_t nchannels, float frameRate);
MODEL3D_API int QELF_setAnimationName(QELF_Animation* animation, const char* name);
MODEL3D_API int QELF_setAnimationChannelNodeNameAndType(QELF_Animation* animation, int32_t channel,
                                                        const char* nodeName, uint32_t channelType);

/* Makes room for the channel's keys, all zero, in place of those it had. */
MODEL3D_API int QELF_allocateAnimationChannelKeyBuffer(QELF_Animation* animation, int32_t channel,
                                                       int32_t numKeys);
MODEL3D_API QELF_Animation* QELF_readAnimation(FILE* file, int32_t chunkSize);
MODEL3D_API int QELF_writeAnimation(FILE* file, const QELF_Animation* animation);
MODEL3D_API int QELF_checkAnimation(const QELF_Animation* animation);
MODEL3D_API void QELF_freeAnimation(QELF_Animation* animation);
MODEL3D_API void QELF_printAnimation(const QELF_Animation* animation, int indentLevel);
MODEL3D_API int QELF_compareAnimation(const QELF_Animation* a, const QELF_Animation* b);

#ifdef __cplusplus
}
#endif

#endif
