#include "scene/save.h"

#include "scene/export.h"

#include <memory>

namespace {

struct chunk_release {
    template <class Record> void operator()(Record* record) const {
        IFF_freeChunk(&record->chunk, "QELF", QELF_formExtensions, 1);
    }
};
template <class Record> using chunk_ptr = std::unique_ptr<Record, chunk_release>;

// Takes the chunk over when that goes well.
template <class Record> bool add(IFF_Form* form, chunk_ptr<Record>& record) {
    if (!record || !IFF_addToForm(form, &record->chunk)) return false;
    static_cast<void>(record.release());
    return true;
}

// What could not be exported has left its place empty.
bool is_whole(const QELF_SceneGroup* g) {
    for (uint32_t i = 0; i < g->nnodes; ++i) {
        const QELF_Node* const node = g->nodes[i];
        if (!node) return false;
        const bool is_group = node->nodeType == QELF_NODE_GROUP;
        if (is_group && !is_whole(static_cast<const QELF_SceneGroup*>(node->content))) return false;
    }
    return true;
}

bool add_texture(IFF_Form* form, uint32_t index, const saved_texture& from) {
    chunk_ptr<QELF_Texture> texture{QELF_createTexture()};
    if (!texture) return false;
    texture->index = index;
    // The form counts what the texture's size is when it is added.
    return QELF_setTextureName(texture.get(), from.name) && QELF_setTexturePath(texture.get(), from.path) &&
           add(form, texture);
}

bool fill(IFF_Form* form, chunk_ptr<QELF_SceneGroup>& root, const saved_texture* textures, size_t count) {
    chunk_ptr<QELF_SceneHeader> header{QELF_createSceneHeader()};
    if (header) header->versionMajor = 2;
    if (!is_whole(root.get()) || !add(form, header) || !add(form, root)) return false;
    for (size_t i = 0; i < count; ++i) {
        if (!add_texture(form, static_cast<uint32_t>(i), textures[i])) return false;
    }
    return true;
}

} // namespace

IFF_Form* scene_form(QELF_Node* exported, const saved_texture* textures, size_t count) {
    if (!exported) return nullptr;
    chunk_ptr<QELF_SceneGroup> root{static_cast<QELF_SceneGroup*>(exported->content)};
    exported->content = nullptr;
    QELF_freeNode(exported);
    chunk_ptr<IFF_Form> form{IFF_createForm("QELF")};
    if (form && fill(form.get(), root, textures, count)) return form.release();
    IFF_error("The tree cannot be made a scene file!\n");
    return nullptr;
}

bool scene_save(group* root, const saved_texture* textures, size_t count, const char* path) {
    const chunk_ptr<IFF_Form> form{scene_form(group_export(root), textures, count)};
    return form && QELF_write(path, &form->chunk);
}
