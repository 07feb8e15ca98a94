#include "iff/group.h"

#include <sys/stat.h>

IFF_Chunk* IFF_read(const char* filename, const IFF_FormExtension* formExtensions,
                    unsigned int formExtensionsLength) {
    FILE* file = fopen(filename, "rb");
    if (!file) {
        IFF_error("ERROR: cannot open file: %s\n", filename);
        return nullptr;
    }
    IFF_Chunk* chunk = IFF_readFd(file, formExtensions, formExtensionsLength);
    fclose(file);
    return chunk;
}

IFF_Chunk* IFF_readFd(FILE* file, const IFF_FormExtension* formExtensions,
                      unsigned int formExtensionsLength) {
    IFF_Chunk* chunk = IFF_readChunk(file, nullptr, formExtensions, formExtensionsLength);
    if (!chunk) {
        IFF_error("ERROR: cannot open main chunk!\n");
        return nullptr;
    }
    const int byte = fgetc(file);
    if (byte != EOF) IFF_error("WARNING: Trailing IFF contents found: %d!\n", byte);
    return chunk;
}

int IFF_write(const char* filename, const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
              unsigned int formExtensionsLength) {
    FILE* file = fopen(filename, "wb");
    if (!file) {
        IFF_error("ERROR: cannot open file: %s\n", filename);
        return 0;
    }
    const int written = IFF_writeFd(file, chunk, formExtensions, formExtensionsLength);
    // A full disk may show only now.
    const bool closed = fclose(file) == 0;
    if (written && closed) return 1;
    if (written) IFF_error("ERROR: cannot write file: %s\n", filename);
    // Part of a tree is no file; a device stays.
    struct stat status;
    if (stat(filename, &status) == 0 && S_ISREG(status.st_mode)) remove(filename);
    return 0;
}

int IFF_writeFd(FILE* file, const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
                unsigned int formExtensionsLength) {
    return IFF_writeChunk(file, chunk, nullptr, formExtensions, formExtensionsLength);
}

int IFF_check(const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
              unsigned int formExtensionsLength) {
    const chunk_kind kind = iff_kind(chunk);
    if (kind == chunk_kind::prop || kind == chunk_kind::data) {
        IFF_error(
            "Not a valid IFF-85 file: First bytes should start with either: 'FORM', 'CAT ' or 'LIST'\n");
        return 0;
    }
    return IFF_checkChunk(chunk, nullptr, formExtensions, formExtensionsLength);
}

void IFF_free(IFF_Chunk* chunk, const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    IFF_freeChunk(chunk, nullptr, formExtensions, formExtensionsLength);
}

void IFF_print(const IFF_Chunk* chunk, const IFF_FormExtension* formExtensions,
               unsigned int formExtensionsLength) {
    IFF_printChunk(chunk, 0, nullptr, formExtensions, formExtensionsLength);
}

int IFF_compare(const IFF_Chunk* chunk1, const IFF_Chunk* chunk2, const IFF_FormExtension* formExtensions,
                unsigned int formExtensionsLength) {
    return IFF_compareChunk(chunk1, chunk2, nullptr, formExtensions, formExtensionsLength);
}
