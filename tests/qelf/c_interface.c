/* A C11 program that builds, writes, reads and compares a scene with the public header alone. */
#include "qelf/qelf.h"

#include <stdlib.h>
#include <string.h>

static int failures;

static void expect(int condition, const char* text) {
    if (condition) return;
    fprintf(stderr, "failed: %s\n", text);
    failures++;
}
#define EXPECT(condition) expect((condition) != 0, #condition)

/* Ties the records to the layout that callers without this header assume. */
enum { chunk = sizeof(void*) + 8, pointer = sizeof(void*) };
_Static_assert(offsetof(QELF_SceneHeader, versionMinor) == chunk + 2, "SHDR");
_Static_assert(offsetof(QELF_SceneGroup, name) == chunk + pointer, "SGRP name");
_Static_assert(offsetof(QELF_SceneGroup, nnodes) == chunk + 2 * pointer, "SGRP nnodes");
_Static_assert(offsetof(QELF_SceneGroup, nodes) == chunk + 2 * pointer + 108 + (pointer == 8 ? 4 : 0),
               "SGRP");
_Static_assert(offsetof(QELF_Node, content) == chunk + pointer, "NODE");
_Static_assert(offsetof(QELF_TriangleMesh, local_transform) == chunk + 16, "TMSH local_transform");
_Static_assert(offsetof(QELF_TriangleMesh, materials) == chunk + 80, "TMSH materials");
_Static_assert(sizeof(QELF_TriangleMesh) == chunk + 80 + 7 * pointer, "TMSH");
_Static_assert(offsetof(QELF_Material, diffuseMap) == chunk + 60, "MTRL");
_Static_assert(offsetof(QELF_Light, type) == chunk + 2 * pointer, "LGHT");
_Static_assert(offsetof(QELF_Texture, path) == chunk + 12 + (pointer == 8 ? 4 : 0) + pointer, "TXTR");
_Static_assert(offsetof(QELF_AnimationChannel, keys) == 12 + (pointer == 8 ? 4 : 0) + pointer, "channel");
_Static_assert(offsetof(QELF_Animation, channels) == chunk + 12 + (pointer == 8 ? 4 : 0) + pointer, "ANIM");
_Static_assert(offsetof(QELF_Scene, sceneHeader) == (pointer == 8 ? 8 : 4), "scene");

static QELF_SceneGroup* make_group(void) {
    const float corners[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const uint32_t face[3] = {0, 1, 2};
    QELF_TriangleMesh* mesh = QELF_createTriangleMesh(3, 1, 1, 0, 0, 0, 0);
    EXPECT(QELF_allocateTrimeshBuffers(mesh));
    EXPECT(QELF_setVertexData(mesh, corners, sizeof corners) && QELF_setIndexData(mesh, face, sizeof face));
    EXPECT(QELF_setMaterial(mesh, 0, QELF_createMaterial()) && QELF_setMaterialStartIndex(mesh, 0, 0));
    QELF_Light* light = QELF_createLight();
    EXPECT(QELF_setLightName(light, "sun"));

    QELF_SceneGroup* group = QELF_createSceneGroup(2);
    EXPECT(QELF_setGroupName(group, "dial"));
    EXPECT(QELF_addNodeToGroup(group, 0, QELF_createNode(QELF_NODE_TRIMESH, mesh)));
    EXPECT(QELF_addNodeToGroup(group, 1, QELF_createNode(QELF_NODE_LIGHT, light)));
    return group;
}

int main(void) {
    QELF_Scene* scene = QELF_createScene("QELF");
    QELF_Texture* texture = QELF_createTexture();
    EXPECT(QELF_setTextureName(texture, "wood") && QELF_setTexturePath(texture, "tex/wood.png"));
    EXPECT(texture->chunk.chunkSize == 44);
    QELF_Animation* animation = QELF_createAnimation(1, 24);
    EXPECT(QELF_setAnimationName(animation, "walk"));
    EXPECT(QELF_setAnimationChannelNodeNameAndType(animation, 0, "arm", TRANSFORM_ROTATION_X));
    EXPECT(QELF_allocateAnimationChannelKeyBuffer(animation, 0, 2));
    EXPECT(animation->chunk.chunkSize == 64);
    EXPECT(QELF_addAnimationToScene(scene, animation) && QELF_addTextureToScene(scene, texture) &&
           QELF_addSceneGroupToScene(scene, make_group()));
    scene->sceneHeader = QELF_createSceneHeader();
    scene->sceneHeader->versionMajor = 2;
    IFF_Form* form = QELF_convertSceneToForm(scene);
    EXPECT(form && form->subChunkCount == 4);
    if (!form) return 1;
    EXPECT(memcmp(form->subChunks[0]->chunkId, "SHDR", 4) == 0);
    EXPECT(memcmp(form->subChunks[1]->chunkId, "SGRP", 4) == 0);
    EXPECT(memcmp(form->subChunks[2]->chunkId, "TXTR", 4) == 0);
    QELF_freeScene(scene);

    FILE* file = tmpfile();
    EXPECT(file && QELF_writeFd(file, &form->chunk));
    /* Header 24; group 8 + 116, mesh 1 + 80 + 78 + 36 + 12, light 1 + 28; texture 8 + 28; animation 8 + 48.
     */
    EXPECT(ftell(file) == 24 + 124 + 207 + 29 + 36 + 56);
    rewind(file);
    IFF_Chunk* back = QELF_readFd(file);
    EXPECT(back && QELF_check(back) && QELF_compare(back, &form->chunk));
    unsigned int count = 0;
    QELF_Scene** scenes = QELF_extractScenes(back, &count);
    EXPECT(count == 1 && QELF_checkScenes(back, scenes, count) && scenes[0]->nsceneGroups == 1);
    const QELF_Light* light = scenes[0]->sceneGroups[0]->nodes[1]->content;
    EXPECT(light->nameLength == 3 && memcmp(light->name->data, "sun", 3) == 0 && light->color.b == 1);
    QELF_freeScenes(scenes, count);
    fclose(file);
    QELF_free(back);
    QELF_free(&form->chunk);
    return failures != 0;
}
