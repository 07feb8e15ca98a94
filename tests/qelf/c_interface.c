/* The public headers in C11: their layout, and a scene made, written and read back. */
#include "qelf/qelf.h"

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
    QELF_Light* light = QELF_createLight();
    QELF_SceneGroup* group = QELF_createSceneGroup(1);
    QELF_Scene* scene = QELF_createScene("QELF");
    if (!QELF_setLightName(light, "sun") ||
        !QELF_addNodeToGroup(group, 0, QELF_createNode(QELF_NODE_LIGHT, light)) ||
        !QELF_addAnimationToScene(scene, QELF_createAnimation(1, 24)) ||
        !QELF_addTextureToScene(scene, QELF_createTexture()) || !QELF_addSceneGroupToScene(scene, group)) {
        return 1;
    }
    IFF_Form* form = QELF_convertSceneToForm(scene);
    QELF_freeScene(scene);
    FILE* file = tmpfile();
    if (!form || !file || !QELF_writeFd(file, &form->chunk)) return 2;
    /* Form 12; group 8 + 112, light 1 + 28; texture 8 + 12; animation 8 + 12 + 12, last. */
    if (ftell(file) != 12 + 120 + 29 + 20 + 32 || form->subChunks[2]->chunkId[0] != 'A') return 3;
    rewind(file);
    IFF_Chunk* back = QELF_readFd(file);
    if (!back || !QELF_compare(back, &form->chunk)) return 4;
    const QELF_SceneGroup* found = (const QELF_SceneGroup*)((IFF_Form*)back)->subChunks[0];
    if (((const QELF_Light*)found->nodes[0]->content)->nameLength != 3) return 5;
    fclose(file);
    QELF_free(back);
    QELF_free(&form->chunk);
    return 0;
}
