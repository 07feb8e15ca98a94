// A LIST's PROPs may stand anywhere among its chunks in a file; in memory they have an array of their own,
// and are written first.
#include "iff/group.h"

IFF_List* IFF_createList(const IFF_ID contentsType) {
    return reinterpret_cast<IFF_List*>(IFF_createGroup("LIST", contentsType));
}

int IFF_addToList(IFF_List* list, IFF_Chunk* chunk) {
    return IFF_addToGroup(&list->group, chunk);
}

int IFF_addPropToList(IFF_List* list, IFF_Prop* prop) {
    return iff_adopt(&list->group, list->props, list->propCount, prop, &prop->chunk, nullptr);
}

IFF_List* IFF_readList(FILE* file, int32_t chunkSize, const IFF_FormExtension* formExtensions,
                       unsigned int formExtensionsLength) {
    return reinterpret_cast<IFF_List*>(
        IFF_readGroup(file, "LIST", chunkSize, "contentsType", 0, formExtensions, formExtensionsLength));
}

int IFF_writeList(FILE* file, const IFF_List* list, const IFF_FormExtension* formExtensions,
                  unsigned int formExtensionsLength) {
    if (!IFF_writeId(file, list->group.groupType, "LIST", "contentsType")) {
        IFF_error("Error writing contentsType!\n");
        return 0;
    }
    for (uint32_t i = 0; i < list->propCount; ++i) {
        if (!IFF_writeChunk(file, &list->props[i]->chunk, nullptr, formExtensions, formExtensionsLength)) {
            IFF_error("Error writing PROP!\n");
            return 0;
        }
    }
    return IFF_writeGroupSubChunks(file, &list->group, nullptr, formExtensions, formExtensionsLength);
}

int IFF_checkList(const IFF_List* list, const IFF_FormExtension* formExtensions,
                  unsigned int formExtensionsLength) {
    if (!IFF_checkId(list->group.groupType)) return 0;
    int32_t size = sizeof(IFF_ID);
    for (uint32_t i = 0; i < list->propCount; ++i) {
        const IFF_Chunk* prop = &list->props[i]->chunk;
        if (!IFF_checkChunk(prop, nullptr, formExtensions, formExtensionsLength)) return 0;
        size = iff_check_extent(size, prop);
        if (size < 0) return 0;
    }
    size = iff_check_sub_chunks(size, &list->group, IFF_checkCATSubChunk, nullptr, formExtensions,
                                formExtensionsLength);
    return size >= 0 && IFF_checkGroupChunkSize(&list->group, size);
}

void IFF_freeList(IFF_List* list, const IFF_FormExtension* formExtensions,
                  unsigned int formExtensionsLength) {
    IFF_freeGroup(&list->group, nullptr, formExtensions, formExtensionsLength);
    for (uint32_t i = 0; i < list->propCount; ++i)
        IFF_freeChunk(&list->props[i]->chunk, nullptr, formExtensions, formExtensionsLength);
    heap_clear(list->props);
    list->propCount = 0;
}

void IFF_printList(const IFF_List* list, int indentLevel, const IFF_FormExtension* formExtensions,
                   unsigned int formExtensionsLength) {
    IFF_printGroupType(&list->group, indentLevel, "contentsType");
    IFF_printIndent(stdout, indentLevel, "prop = [\n");
    for (uint32_t i = 0; i < list->propCount; ++i)
        IFF_printChunk(&list->props[i]->chunk, indentLevel + 1, nullptr, formExtensions,
                       formExtensionsLength);
    IFF_printIndent(stdout, indentLevel, "];\n");
    IFF_printGroupSubChunks(&list->group, indentLevel, nullptr, formExtensions, formExtensionsLength);
}

int IFF_compareList(const IFF_List* list1, const IFF_List* list2, const IFF_FormExtension* formExtensions,
                    unsigned int formExtensionsLength) {
    if (list1->propCount != list2->propCount) return 0;
    for (uint32_t i = 0; i < list1->propCount; ++i) {
        if (!IFF_compareChunk(&list1->props[i]->chunk, &list2->props[i]->chunk, nullptr, formExtensions,
                              formExtensionsLength)) {
            return 0;
        }
    }
    return IFF_compareCAT(&list1->group, &list2->group, formExtensions, formExtensionsLength);
}

IFF_Prop* IFF_getPropFromList(const IFF_List* list, const IFF_ID formType) {
    for (uint32_t i = 0; i < list->propCount; ++i) {
        if (IFF_compareId(list->props[i]->groupType, formType) == 0) return list->props[i];
    }
    return nullptr;
}

IFF_Form** IFF_searchFormsInList(IFF_List* list, const IFF_ID formType, unsigned int* count) {
    return IFF_searchFormsInGroup(&list->group, formType, count);
}

int IFF_updateListChunkSizes(IFF_List* list) {
    int32_t size = iff_add_extents(sizeof(IFF_ID), &list->group);
    for (uint32_t i = 0; i < list->propCount; ++i)
        size = IFF_incrementChunkSize(size, &list->props[i]->chunk);
    if (size >= 0) list->group.chunk.chunkSize = size;
    return size >= 0;
}
