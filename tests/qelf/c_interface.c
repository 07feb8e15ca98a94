/* A C11 program that builds, writes, reads and compares a scene, and a list around it, with the public
 * headers alone. */
#include "qelf/qelf.h"

#include <stdlib.h>
#include <string.h>

static int failures;

static void expect(int condition, const char* text) {
    if (condition) return;
    fprintf(stderr, "failed: %s\n", text);
    ++failures;
}
#define EXPECT(condition) expect((condition) != 0, #condition)

static char report[256];

static void keep_report(const char* format, va_list arguments) {
    const size_t length = strlen(report);
    vsnprintf(report + length, sizeof report - length, format, arguments);
}

/* Ties the records to the layout that callers without these headers assume. */
enum { pointer = sizeof(void*), chunk = pointer + 8, gap = pointer == 8 ? 4 : 0 };
_Static_assert(sizeof(IFF_ID) == 4, "IFF_ID");
_Static_assert(offsetof(IFF_Chunk, chunkId) == pointer, "chunkId");
_Static_assert(offsetof(IFF_RawChunk, data) == chunk, "data");
_Static_assert(offsetof(IFF_Group, groupType) == chunk, "groupType");
_Static_assert(offsetof(IFF_Group, subChunkCount) == chunk + 4, "subChunkCount");
_Static_assert(offsetof(IFF_Group, subChunks) == chunk + 8, "subChunks");
_Static_assert(offsetof(IFF_List, propCount) == chunk + 8 + pointer, "propCount");
_Static_assert(sizeof(IFF_List) == 4 * pointer + 16, "IFF_List");
_Static_assert(sizeof(IFF_Extension) == 7 * pointer, "IFF_Extension");
_Static_assert(sizeof(IFF_FormExtension) == 3 * pointer, "IFF_FormExtension");
_Static_assert(offsetof(QELF_SceneHeader, versionMinor) == chunk + 2, "SHDR");
_Static_assert(offsetof(QELF_SceneGroup, name) == chunk + pointer, "SGRP name");
_Static_assert(offsetof(QELF_SceneGroup, nnodes) == chunk + 2 * pointer, "SGRP nnodes");
_Static_assert(offsetof(QELF_SceneGroup, nodes) == chunk + 2 * pointer + 108 + gap, "SGRP");
_Static_assert(offsetof(QELF_Node, content) == chunk + pointer, "NODE");
_Static_assert(offsetof(QELF_TriangleMesh, local_transform) == chunk + 16, "TMSH local_transform");
_Static_assert(offsetof(QELF_TriangleMesh, materials) == chunk + 80, "TMSH materials");
_Static_assert(sizeof(QELF_TriangleMesh) == chunk + 80 + 7 * pointer, "TMSH");
_Static_assert(offsetof(QELF_Material, diffuseMap) == chunk + 60, "MTRL");
_Static_assert(offsetof(QELF_Light, type) == chunk + 2 * pointer, "LGHT");
_Static_assert(offsetof(QELF_Texture, path) == chunk + 12 + gap + pointer, "TXTR");
_Static_assert(offsetof(QELF_AnimationChannel, keys) == 12 + gap + pointer, "channel");
_Static_assert(offsetof(QELF_Animation, channels) == chunk + 12 + gap + pointer, "ANIM");
_Static_assert(offsetof(QELF_Scene, sceneHeader) == 4 + gap, "scene");

int main(void) {
    IFF_errorCallback = keep_report;
    QELF_Light* light = QELF_createLight();
    QELF_SceneGroup* group = QELF_createSceneGroup(1);
    QELF_Animation* animation = QELF_createAnimation(1, 24);
    QELF_Texture* texture = QELF_createTexture();
    EXPECT(QELF_setLightName(light, "sun"));
    EXPECT(QELF_addNodeToGroup(group, 0, QELF_createNode(QELF_NODE_LIGHT, light)));
    EXPECT(QELF_setAnimationChannelNodeNameAndType(animation, 0, "arm", TRANSFORM_ROTATION_X));
    QELF_Scene* scene = QELF_createScene("QELF");
    EXPECT(QELF_addAnimationToScene(scene, animation) && QELF_addTextureToScene(scene, texture) &&
           QELF_addSceneGroupToScene(scene, group));
    IFF_Form* form = QELF_convertSceneToForm(scene);
    EXPECT(form && form->subChunkCount == 3);
    if (!form) return 1;
    EXPECT(memcmp(form->subChunks[0]->chunkId, "SGRP", 4) == 0 &&
           memcmp(form->subChunks[1]->chunkId, "TXTR", 4) == 0);
    QELF_freeScene(scene);

    IFF_List* list = IFF_createList("QELF");
    IFF_Prop* prop = IFF_createProp("QELF");
    QELF_SceneHeader* header = QELF_createSceneHeader();
    header->versionMajor = 2;
    EXPECT(IFF_addToProp(prop, &header->chunk) && IFF_addPropToList(list, prop));
    EXPECT(IFF_addToList(list, &form->chunk));
    FILE* file = tmpfile();
    EXPECT(file && QELF_writeFd(file, &list->group.chunk));
    /* List 12, prop 24, form 12; group 8 + 112, light 1 + 28; texture 8 + 12; animation 8 + 12 + 16. */
    EXPECT(ftell(file) == 12 + 24 + 12 + 120 + 29 + 20 + 36);
    rewind(file);
    IFF_Chunk* back = QELF_readFd(file);
    EXPECT(back && QELF_check(back) && QELF_compare(back, &list->group.chunk));
    unsigned int count = 0;
    QELF_Scene** scenes = QELF_extractScenes(back, &count);
    EXPECT(count == 1 && QELF_checkScenes(back, scenes, count) && scenes[0]->sceneHeader->versionMajor == 2);
    const QELF_Light* found = scenes[0]->sceneGroups[0]->nodes[0]->content;
    EXPECT(found->nameLength == 3 && memcmp(found->name->data, "sun", 3) == 0 && found->color.b == 1);
    QELF_freeScenes(scenes, count);
    EXPECT(report[0] == '\0');

    EXPECT(QELF_readFd(file) == NULL);
    EXPECT(strcmp(report, "Error reading ''.chunkId\nERROR: cannot open main chunk!\n") == 0);
    fclose(file);
    QELF_free(back);
    QELF_free(&list->group.chunk);
    return failures != 0;
}
