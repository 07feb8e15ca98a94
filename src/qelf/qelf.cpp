// Whole files, and the chunk types that scene files add to the container.

#include "qelf/fields.h"

namespace {

// A row of the table: handlers of a record type, seen through its IFF_Chunk.
template <class Record, auto read, auto write, auto check, auto free_, auto print, auto compare>
constexpr IFF_Extension extension(const char* chunk_id) {
    return {chunk_id,
            [](FILE* file, int32_t size) { return reinterpret_cast<IFF_Chunk*>(read(file, size)); },
            [](FILE* file, const IFF_Chunk* chunk) {
                return write(file, reinterpret_cast<const Record*>(chunk));
            },
            [](const IFF_Chunk* chunk) { return check(reinterpret_cast<const Record*>(chunk)); },
            [](IFF_Chunk* chunk) { free_(reinterpret_cast<Record*>(chunk)); },
            [](const IFF_Chunk* chunk, int level) { print(reinterpret_cast<const Record*>(chunk), level); },
            [](const IFF_Chunk* a, const IFF_Chunk* b) {
                return compare(reinterpret_cast<const Record*>(a), reinterpret_cast<const Record*>(b));
            }};
}

} // namespace

// Sorted, as the container looks rows up by halving.
const IFF_Extension QELFFormExtension[4] = {
    extension<QELF_Animation, QELF_readAnimation, QELF_writeAnimation, QELF_checkAnimation,
              QELF_freeAnimation, QELF_printAnimation, QELF_compareAnimation>("ANIM"),
    extension<QELF_SceneGroup, QELF_readSceneGroup, QELF_writeSceneGroup, QELF_checkSceneGroup,
              QELF_freeSceneGroup, QELF_printSceneGroup, QELF_compareSceneGroup>("SGRP"),
    extension<QELF_SceneHeader, QELF_readSceneHeader, QELF_writeSceneHeader, QELF_checkSceneHeader,
              QELF_freeSceneHeader, QELF_printSceneHeader, QELF_compareSceneHeader>("SHDR"),
    extension<QELF_Texture, QELF_readTexture, QELF_writeTexture, QELF_checkTexture, QELF_freeTexture,
              QELF_printTexture, QELF_compareTexture>("TXTR"),
};

const IFF_FormExtension QELF_formExtensions[1] = {{"QELF", 4, QELFFormExtension}};

IFF_Chunk* QELF_read(const char* filename) {
    return IFF_read(filename, QELF_formExtensions, 1);
}

IFF_Chunk* QELF_readFd(FILE* file) {
    return IFF_readFd(file, QELF_formExtensions, 1);
}

int QELF_write(const char* filename, const IFF_Chunk* chunk) {
    return IFF_write(filename, chunk, QELF_formExtensions, 1);
}

int QELF_writeFd(FILE* file, const IFF_Chunk* chunk) {
    return IFF_writeFd(file, chunk, QELF_formExtensions, 1);
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
