#include "iff/group.h"

IFF_CAT* IFF_createCAT(const IFF_ID contentsType) {
    return IFF_createGroup("CAT ", contentsType);
}

int IFF_addToCAT(IFF_CAT* cat, IFF_Chunk* chunk) {
    return IFF_addToGroup(cat, chunk);
}

IFF_CAT* IFF_readCAT(FILE* file, int32_t chunkSize, const IFF_FormExtension* formExtensions,
                     unsigned int formExtensionsLength) {
    return IFF_readGroup(file, "CAT ", chunkSize, "contentsType", 0, formExtensions, formExtensionsLength);
}

int IFF_writeCAT(FILE* file, const IFF_CAT* cat, const IFF_FormExtension* formExtensions,
                 unsigned int formExtensionsLength) {
    return IFF_writeGroup(file, cat, nullptr, "contentsType", formExtensions, formExtensionsLength);
}

int IFF_checkCATSubChunk(const IFF_Group* cat, const IFF_Chunk* subChunk) {
    const char* kind = nullptr;
    switch (iff_kind(subChunk)) {
    case chunk_kind::form:
        kind = "form";
        break;
    case chunk_kind::list:
        kind = "list";
        break;
    case chunk_kind::cat:
        kind = "cat";
        break;
    case chunk_kind::prop:
    case chunk_kind::data:
        return iff_refuse_sub_chunk(subChunk, "CAT");
    }
    if (IFF_compareId(cat->groupType, "JJJJ") == 0) return 1;
    if (IFF_compareId(cat->groupType, as_group(subChunk)->groupType) == 0) return 1;
    IFF_error("Sub %s does not match contentsType of the CAT!\n", kind);
    return 0;
}

int IFF_checkCAT(const IFF_CAT* cat, const IFF_FormExtension* formExtensions,
                 unsigned int formExtensionsLength) {
    return IFF_checkGroup(cat, IFF_checkId, IFF_checkCATSubChunk, nullptr, formExtensions,
                          formExtensionsLength);
}

void IFF_freeCAT(IFF_CAT* cat, const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    IFF_freeGroup(cat, nullptr, formExtensions, formExtensionsLength);
}

void IFF_printCAT(const IFF_CAT* cat, int indentLevel, const IFF_FormExtension* formExtensions,
                  unsigned int formExtensionsLength) {
    IFF_printGroup(cat, indentLevel, nullptr, "contentsType", formExtensions, formExtensionsLength);
}

int IFF_compareCAT(const IFF_CAT* cat1, const IFF_CAT* cat2, const IFF_FormExtension* formExtensions,
                   unsigned int formExtensionsLength) {
    return IFF_compareGroup(cat1, cat2, nullptr, formExtensions, formExtensionsLength);
}

IFF_Form** IFF_searchFormsInCAT(IFF_CAT* cat, const IFF_ID formType, unsigned int* count) {
    return IFF_searchFormsInGroup(cat, formType, count);
}

int IFF_updateCATChunkSizes(IFF_CAT* cat) {
    return IFF_updateGroupChunkSizes(cat);
}
