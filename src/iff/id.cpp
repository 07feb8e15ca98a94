#include "iff/iff.h"

#include <cstring>

void IFF_createId(IFF_ID id, const char* text) {
    size_t i = 0;
    for (; i < sizeof(IFF_ID) && text[i] != '\0'; ++i)
        id[i] = text[i];
    for (; i < sizeof(IFF_ID); ++i)
        id[i] = '\0';
}

int IFF_compareId(const IFF_ID id1, const IFF_ID id2) {
    const int order = strncmp(id1, id2, sizeof(IFF_ID));
    return (order > 0) - (order < 0);
}

int IFF_checkId(const IFF_ID id) {
    for (size_t i = 0; i < sizeof(IFF_ID); ++i) {
        if (id[i] < 0x20 || id[i] > 0x7e) {
            IFF_error("Illegal character: '%c' in ID!\n", id[i]);
            return 0;
        }
    }
    if (id[0] == ' ') {
        IFF_error("Spaces may not precede an ID!\n");
        return 0;
    }
    return 1;
}

void IFF_printId(const IFF_ID id) {
    fwrite(id, 1, sizeof(IFF_ID), stdout);
}

int IFF_readId(FILE* file, IFF_ID id, const IFF_ID chunkId, const char* attributeName) {
    IFF_ID bytes;
    if (fread(bytes, 1, sizeof bytes, file) != sizeof bytes) {
        IFF_readError(chunkId, attributeName);
        return 0;
    }
    memcpy(id, bytes, sizeof bytes);
    return 1;
}

int IFF_writeId(FILE* file, const IFF_ID id, const IFF_ID chunkId, const char* attributeName) {
    if (fwrite(id, 1, sizeof(IFF_ID), file) == sizeof(IFF_ID)) return 1;
    IFF_writeError(chunkId, attributeName);
    return 0;
}
