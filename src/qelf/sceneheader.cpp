#include "qelf/fields.h"

#include <cstdlib>

QELF_SceneHeader* QELF_createSceneHeader(void) {
    return create_record<QELF_SceneHeader>("SHDR", 4);
}

QELF_SceneHeader* QELF_readSceneHeader(FILE* file, int32_t) {
    QELF_SceneHeader* const header = QELF_createSceneHeader();
    if (!header) return nullptr;
    if (!IFF_readUWord(file, &header->versionMajor, "SHDR", "versionMajor") ||
        !IFF_readUWord(file, &header->versionMinor, "SHDR", "versionMinor")) {
        free(header);
        return nullptr;
    }
    return header;
}

int QELF_writeSceneHeader(FILE* file, const QELF_SceneHeader* header) {
    return IFF_writeUWord(file, header->versionMajor, "SHDR", "versionMajor") &&
           IFF_writeUWord(file, header->versionMinor, "SHDR", "versionMinor");
}

int QELF_checkSceneHeader(const QELF_SceneHeader* header) {
    if (header->versionMajor == 2 && header->versionMinor == 0) return 1;
    IFF_error("Unsupported 'SHDR'.version value: %u.%u\n", header->versionMajor, header->versionMinor);
    return 0;
}

void QELF_freeSceneHeader(QELF_SceneHeader*) {}

void QELF_printSceneHeader(const QELF_SceneHeader* header, int indentLevel) {
    IFF_printIndent(stdout, indentLevel, "version = %u.%u;\n", header->versionMajor, header->versionMinor);
}

int QELF_compareSceneHeader(const QELF_SceneHeader* a, const QELF_SceneHeader* b) {
    return a->versionMajor == b->versionMajor && a->versionMinor == b->versionMinor;
}
