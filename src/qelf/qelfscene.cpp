// The container of one form's chunks.

#include "iff/group.h"
#include "qelf/fields.h"

namespace {

constexpr char form_type[] = "QELF";

template <class Record> int append(Record**& array, uint32_t& count, Record* record) {
    if (!record || count == UINT32_MAX || !heap_resize(array, size_t{count} + 1)) {
        if (record) out_of_memory(record->chunk.chunkId);
        return 0;
    }
    array[count++] = record;
    return 1;
}

// All chunks of one kind directly in the form. False after a report.
template <class Record>
bool collect(const IFF_Form* form, const char* chunk_id, Record**& array, uint32_t& count) {
    unsigned int found = 0;
    array = reinterpret_cast<Record**>(IFF_getChunksFromForm(form, chunk_id, &found));
    count = found;
    if (array || !IFF_getDataChunkFromForm(form, chunk_id)) return true;
    out_of_memory(chunk_id);
    return false;
}

// What the form holds, or null after a report.
QELF_Scene* extract_scene(const IFF_Form* form) {
    QELF_Scene* const scene = QELF_createScene(form_type);
    if (!scene) return nullptr;
    scene->sceneHeader = reinterpret_cast<QELF_SceneHeader*>(IFF_getChunkFromForm(form, "SHDR"));
    if (collect(form, "SGRP", scene->sceneGroups, scene->nsceneGroups) &&
        collect(form, "TXTR", scene->textures, scene->ntextures) &&
        collect(form, "ANIM", scene->animations, scene->nanimations)) {
        return scene;
    }
    QELF_freeScene(scene);
    return nullptr;
}

template <class Record> bool add_all(IFF_Form* form, Record* const* records, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        if (!IFF_addToForm(form, &records[i]->chunk)) return false;
    }
    return true;
}

} // namespace

QELF_Scene* QELF_createScene(const IFF_ID formType) {
    auto* const scene = heap_zeroed<QELF_Scene>();
    if (!scene) {
        out_of_memory(formType);
        return nullptr;
    }
    IFF_createId(scene->formType, formType);
    return scene;
}

int QELF_addSceneGroupToScene(QELF_Scene* scene, QELF_SceneGroup* group) {
    return append(scene->sceneGroups, scene->nsceneGroups, group);
}

int QELF_addTextureToScene(QELF_Scene* scene, QELF_Texture* texture) {
    return append(scene->textures, scene->ntextures, texture);
}

int QELF_addAnimationToScene(QELF_Scene* scene, QELF_Animation* animation) {
    return append(scene->animations, scene->nanimations, animation);
}

QELF_Scene** QELF_extractScenes(IFF_Chunk* chunk, unsigned int* count) {
    const heap_ptr<IFF_Form*> forms{IFF_searchForms(chunk, form_type, count)};
    if (!forms && iff_collect_forms(chunk, form_type, nullptr) > 0) {
        out_of_memory(form_type);
        return nullptr;
    }
    if (!forms) {
        IFF_error("No form with formType: 'QELF' found!\n");
        return nullptr;
    }
    const unsigned int found = *count;
    *count = 0;
    auto* const scenes = heap_array<QELF_Scene*>(found);
    if (!scenes) {
        out_of_memory(form_type);
        return nullptr;
    }
    for (unsigned int i = 0; i < found; ++i) {
        scenes[i] = extract_scene(forms.get()[i]);
        if (!scenes[i]) {
            QELF_freeScenes(scenes, i);
            return nullptr;
        }
    }
    *count = found;
    return scenes;
}

IFF_Form* QELF_convertSceneToForm(QELF_Scene* scene) {
    IFF_Form* const form = IFF_createForm(scene->formType);
    if (!form) {
        out_of_memory(scene->formType);
        return nullptr;
    }
    const bool complete = (!scene->sceneHeader || IFF_addToForm(form, &scene->sceneHeader->chunk)) &&
                          add_all(form, scene->sceneGroups, scene->nsceneGroups) &&
                          add_all(form, scene->textures, scene->ntextures) &&
                          add_all(form, scene->animations, scene->nanimations);
    if (complete) return form;

    // The chunks go back to the scene's owner.
    for (uint32_t i = 0; i < form->subChunkCount; ++i) {
        form->subChunks[i]->parent = nullptr;
    }
    form->subChunkCount = 0;
    QELF_free(&form->chunk);
    IFF_error("The scene cannot be made a form!\n");
    return nullptr;
}

int QELF_checkScene(const QELF_Scene* scene) {
    if (scene->sceneHeader) return 1;
    IFF_error("Error: no scene header defined!\n");
    return 0;
}

int QELF_checkScenes(const IFF_Chunk* chunk, QELF_Scene* const* scenes, unsigned int count) {
    if (!QELF_check(chunk)) return 0;
    for (unsigned int i = 0; i < count; ++i) {
        if (!QELF_checkScene(scenes[i])) return 0;
    }
    return 1;
}

void QELF_freeScene(QELF_Scene* scene) {
    if (!scene) return;
    free(scene->sceneGroups);
    free(scene->textures);
    free(scene->animations);
    free(scene);
}

void QELF_freeScenes(QELF_Scene** scenes, unsigned int count) {
    for (unsigned int i = 0; i < count; ++i) {
        QELF_freeScene(scenes[i]);
    }
    free(scenes);
}

int QELF_SceneIsQELF(const IFF_ID formType) {
    return IFF_compareId(formType, form_type) == 0;
}
