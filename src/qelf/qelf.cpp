// Whole files, and the chunk types that scene files add to the container.

#include "iff/group.h"
#include "qelf/fields.h"

namespace {

// A chunk type: its handlers, and what completes a record before it is written.
struct chunk_type {
    IFF_Extension extension;
    int (*complete)(IFF_Chunk* chunk);
};

// The handlers of a record, seen through its IFF_Chunk.
template <class Record, auto read, auto write, auto check, auto free_, auto print, auto compare,
          auto complete>
constexpr chunk_type type(const char* chunk_id) {
    return {{chunk_id,
             [](FILE* file, int32_t size) { return reinterpret_cast<IFF_Chunk*>(read(file, size)); },
             [](FILE* file, const IFF_Chunk* chunk) {
                 return write(file, reinterpret_cast<const Record*>(chunk));
             },
             [](const IFF_Chunk* chunk) { return check(reinterpret_cast<const Record*>(chunk)); },
             [](IFF_Chunk* chunk) { free_(reinterpret_cast<Record*>(chunk)); },
             [](const IFF_Chunk* chunk, int level) { print(reinterpret_cast<const Record*>(chunk), level); },
             [](const IFF_Chunk* a, const IFF_Chunk* b) {
                 return compare(reinterpret_cast<const Record*>(a), reinterpret_cast<const Record*>(b));
             }},
            [](IFF_Chunk* chunk) { return complete(reinterpret_cast<Record*>(chunk)); }};
}

int complete_scene_group(QELF_SceneGroup* group) {
    return complete_group(group, 0);
}

int complete_header(QELF_SceneHeader*) {
    return 1; // it has nothing to complete
}

// Sorted, as the container looks rows up by halving.
constexpr chunk_type types[] = {
    type<QELF_Animation, QELF_readAnimation, QELF_writeAnimation, QELF_checkAnimation, QELF_freeAnimation,
         QELF_printAnimation, QELF_compareAnimation, complete_animation>("ANIM"),
    type<QELF_SceneGroup, QELF_readSceneGroup, QELF_writeSceneGroup, QELF_checkSceneGroup,
         QELF_freeSceneGroup, QELF_printSceneGroup, QELF_compareSceneGroup, complete_scene_group>("SGRP"),
    type<QELF_SceneHeader, QELF_readSceneHeader, QELF_writeSceneHeader, QELF_checkSceneHeader,
         QELF_freeSceneHeader, QELF_printSceneHeader, QELF_compareSceneHeader, complete_header>("SHDR"),
    type<QELF_Texture, QELF_readTexture, QELF_writeTexture, QELF_checkTexture, QELF_freeTexture,
         QELF_printTexture, QELF_compareTexture, complete_texture>("TXTR"),
};

int complete_record(IFF_Chunk* chunk) {
    for (const chunk_type& row : types) {
        if (IFF_compareId(chunk->chunkId, row.extension.chunkId) == 0) return row.complete(chunk);
    }
    return 1;
}

// Completes the records of a tree, and counts the sizes of its groups anew, from the inside out.
int complete_chunks(IFF_Chunk* chunk, const char* form_type) {
    const chunk_kind kind = iff_kind(chunk);
    if (kind == chunk_kind::data) {
        return form_type && QELF_SceneIsQELF(form_type) ? complete_record(chunk) : 1;
    }
    IFF_Group* const group = as_group(chunk);
    const bool typed = kind == chunk_kind::form || kind == chunk_kind::prop;
    for (uint32_t i = 0; i < group->subChunkCount; ++i) {
        if (!complete_chunks(group->subChunks[i], typed ? group->groupType : nullptr)) return 0;
    }
    const bool is_list = kind == chunk_kind::list;
    for (uint32_t i = 0; is_list && i < as_list(chunk)->propCount; ++i) {
        if (!complete_chunks(&as_list(chunk)->props[i]->chunk, nullptr)) return 0;
    }
    const int updated = is_list ? IFF_updateListChunkSizes(as_list(chunk)) : IFF_updateGroupChunkSizes(group);
    return updated ? 1 : refuse(chunk->chunkId, "its chunks exceed 32 bits");
}

// The same, with the sizes of the groups around the tree.
int complete_tree(IFF_Chunk* tree) {
    if (!complete_chunks(tree, nullptr)) return 0;
    return IFF_updateChunkSizes(tree) ? 1 : refuse(tree->chunkId, "the groups around it exceed 32 bits");
}

} // namespace

const IFF_Extension QELFFormExtension[4] = {types[0].extension, types[1].extension, types[2].extension,
                                            types[3].extension};

const IFF_FormExtension QELF_formExtensions[1] = {{"QELF", 4, QELFFormExtension}};

IFF_Chunk* QELF_read(const char* filename) {
    return IFF_read(filename, QELF_formExtensions, 1);
}

IFF_Chunk* QELF_readFd(FILE* file) {
    return IFF_readFd(file, QELF_formExtensions, 1);
}

int QELF_write(const char* filename, IFF_Chunk* chunk) {
    return complete_tree(chunk) && IFF_write(filename, chunk, QELF_formExtensions, 1);
}

int QELF_writeFd(FILE* file, IFF_Chunk* chunk) {
    return complete_tree(chunk) && IFF_writeFd(file, chunk, QELF_formExtensions, 1);
}

int QELF_check(const IFF_Chunk* chunk) {
    return IFF_check(chunk, QELF_formExtensions, 1);
}

void QELF_free(IFF_Chunk* chunk) {
    IFF_free(chunk, QELF_formExtensions, 1);
}

void QELF_print(const IFF_Chunk* chunk) {
    IFF_print(chunk, QELF_formExtensions, 1);
}

int QELF_compare(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2) {
    return IFF_compare(chunk1, chunk2, QELF_formExtensions, 1);
}
