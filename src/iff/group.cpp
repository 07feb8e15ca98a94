// After the chunk header a group's body is
//   offset  size  content
//   0       4     form type (FORM, PROP) or contents type (CAT, LIST)
//   4       ...   chunks, each with header and padding
// so its size is 4 plus the extents of its chunks.
#include "iff/group.h"

bool iff_level_allowed(int level) {
    constexpr int levels_max = 256;
    if (level < levels_max) return true;
    IFF_error("Groups are nested more than %d levels deep!\n", levels_max);
    return false;
}

bool iff_check_depth(const IFF_Chunk* chunk, int level) {
    const chunk_kind kind = iff_kind(chunk);
    if (kind == chunk_kind::data) return true;
    if (!iff_level_allowed(level)) return false;
    const IFF_Group* group = as_group(chunk);
    for (uint32_t i = 0; i < group->subChunkCount; ++i) {
        if (!iff_check_depth(group->subChunks[i], level + 1)) return false;
    }
    for (uint32_t i = 0; kind == chunk_kind::list && i < as_list(chunk)->propCount; ++i) {
        if (!iff_check_depth(&as_list(chunk)->props[i]->chunk, level + 1)) return false;
    }
    return true;
}

IFF_Group* IFF_createGroup(const IFF_ID chunkId, const IFF_ID groupType) {
    const size_t size = IFF_compareId(chunkId, "LIST") == 0 ? sizeof(IFF_List) : sizeof(IFF_Group);
    IFF_Chunk* chunk = IFF_allocateChunk(chunkId, size);
    if (chunk) IFF_initGroup(as_group(chunk), groupType);
    return as_group(chunk);
}

void IFF_initGroup(IFF_Group* group, const IFF_ID groupType) {
    group->chunk.chunkSize = sizeof(IFF_ID);
    memcpy(group->groupType, groupType, sizeof(IFF_ID));
    group->subChunkCount = 0;
    group->subChunks = nullptr;
}

int IFF_addToGroup(IFF_Group* group, IFF_Chunk* chunk) {
    return iff_adopt(group, group->subChunks, group->subChunkCount, chunk, chunk, nullptr);
}

IFF_Group* iff_read_group(const iff_source& source, const IFF_ID chunkId, int32_t chunkSize,
                          const char* groupTypeName, bool groupTypeIsFormType) {
    if (!iff_level_allowed(source.level)) return nullptr;
    IFF_ID groupType;
    if (!IFF_readId(source.file, groupType, chunkId, groupTypeName)) return nullptr;

    const bool is_list = IFF_compareId(chunkId, "LIST") == 0;
    const char* failure = is_list ? "Error reading chunk in list!\n" : "Error while reading chunk!\n";
    IFF_Group* group = IFF_createGroup(chunkId, groupType);
    if (!group) {
        IFF_error("%s", failure);
        return nullptr;
    }

    const char* formType = groupTypeIsFormType ? group->groupType : nullptr;
    const iff_source inside = {source.file, source.formExtensions, source.formExtensionsLength,
                               source.level + 1};
    uint32_t sub_chunk_capacity = 0, prop_capacity = 0;
    while (group->chunk.chunkSize < chunkSize) {
        IFF_Chunk* chunk = iff_read_chunk(inside, formType);
        bool added = false;
        if (chunk && is_list && iff_kind(chunk) == chunk_kind::prop) {
            IFF_List* list = as_list(&group->chunk);
            added = iff_adopt(group, list->props, list->propCount, as_group(chunk), chunk, &prop_capacity);
        } else if (chunk) {
            added =
                iff_adopt(group, group->subChunks, group->subChunkCount, chunk, chunk, &sub_chunk_capacity);
        }
        if (!added) {
            IFF_error("%s", failure);
            IFF_freeChunk(chunk, formType, source.formExtensions, source.formExtensionsLength);
            if (is_list) {
                IFF_freeList(as_list(&group->chunk), source.formExtensions, source.formExtensionsLength);
            } else {
                IFF_freeGroup(group, formType, source.formExtensions, source.formExtensionsLength);
            }
            free(group);
            return nullptr;
        }
    }
    group->chunk.chunkSize = chunkSize;
    return group;
}

IFF_Group* IFF_readGroup(FILE* file, const IFF_ID chunkId, int32_t chunkSize, const char* groupTypeName,
                         int groupTypeIsFormType, const IFF_FormExtension* formExtensions,
                         unsigned int formExtensionsLength) {
    if (chunkSize < 0) {
        IFF_readError(chunkId, "chunkSize");
        return nullptr;
    }
    return iff_read_group({file, formExtensions, formExtensionsLength, 0}, chunkId, chunkSize, groupTypeName,
                          groupTypeIsFormType != 0);
}

int IFF_writeGroup(FILE* file, const IFF_Group* group, const IFF_ID formType, const char* groupTypeName,
                   const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    return IFF_writeId(file, group->groupType, group->chunk.chunkId, groupTypeName) &&
           IFF_writeGroupSubChunks(file, group, formType, formExtensions, formExtensionsLength);
}

int IFF_writeGroupSubChunks(FILE* file, const IFF_Group* group, const IFF_ID formType,
                            const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    for (uint32_t i = 0; i < group->subChunkCount; ++i) {
        if (!IFF_writeChunk(file, group->subChunks[i], formType, formExtensions, formExtensionsLength)) {
            IFF_error("Error writing chunk!\n");
            return 0;
        }
    }
    return 1;
}

int IFF_checkGroup(const IFF_Group* group, IFF_GroupTypeTest groupTypeTest, IFF_SubChunkTest subChunkTest,
                   const IFF_ID formType, const IFF_FormExtension* formExtensions,
                   unsigned int formExtensionsLength) {
    if (!groupTypeTest(group->groupType)) return 0;
    const int32_t size = iff_check_sub_chunks(sizeof(IFF_ID), group, subChunkTest, formType, formExtensions,
                                              formExtensionsLength);
    return size >= 0 && IFF_checkGroupChunkSize(group, size);
}

int32_t IFF_checkGroupSubChunks(const IFF_Group* group, IFF_SubChunkTest subChunkTest, const IFF_ID formType,
                                const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    return iff_check_sub_chunks(0, group, subChunkTest, formType, formExtensions, formExtensionsLength);
}

int32_t iff_check_sub_chunks(int32_t size, const IFF_Group* group, IFF_SubChunkTest subChunkTest,
                             const IFF_ID formType, const IFF_FormExtension* formExtensions,
                             unsigned int formExtensionsLength) {
    for (uint32_t i = 0; i < group->subChunkCount && size >= 0; ++i) {
        const IFF_Chunk* chunk = group->subChunks[i];
        if (!subChunkTest(group, chunk)) return -1;
        if (!IFF_checkChunk(chunk, formType, formExtensions, formExtensionsLength)) return -1;
        size = iff_check_extent(size, chunk);
    }
    return size;
}

int32_t iff_check_extent(int32_t size, const IFF_Chunk* chunk) {
    const int32_t sum = IFF_incrementChunkSize(size, chunk);
    if (sum < 0) {
        IFF_error("Chunk size out of range! ");
        IFF_errorId(chunk->chunkId);
        IFF_error(" size: %d, after %d bytes of its group\n", static_cast<int>(chunk->chunkSize),
                  static_cast<int>(size));
    }
    return sum;
}

int IFF_checkGroupChunkSize(const IFF_Group* group, int32_t chunkSize) {
    if (group->chunk.chunkSize == chunkSize) return 1;
    IFF_error("Chunk size mismatch! ");
    IFF_errorId(group->chunk.chunkId);
    IFF_error(" size: %d, while body has: %d\n", static_cast<int>(group->chunk.chunkSize),
              static_cast<int>(chunkSize));
    return 0;
}

int iff_refuse_sub_chunk(const IFF_Chunk* chunk, const char* groupName) {
    IFF_error("ERROR: Element with chunk Id: '");
    IFF_errorId(chunk->chunkId);
    IFF_error("' not allowed in %s chunk!\n", groupName);
    return 0;
}

void IFF_freeGroup(IFF_Group* group, const IFF_ID formType, const IFF_FormExtension* formExtensions,
                   unsigned int formExtensionsLength) {
    for (uint32_t i = 0; i < group->subChunkCount; ++i)
        IFF_freeChunk(group->subChunks[i], formType, formExtensions, formExtensionsLength);
    heap_clear(group->subChunks);
    group->subChunkCount = 0;
}

void IFF_printGroup(const IFF_Group* group, int indentLevel, const IFF_ID formType, const char* groupTypeName,
                    const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    IFF_printGroupType(group, indentLevel, groupTypeName);
    IFF_printGroupSubChunks(group, indentLevel, formType, formExtensions, formExtensionsLength);
}

void IFF_printGroupType(const IFF_Group* group, int indentLevel, const char* groupTypeName) {
    IFF_printIndent(stdout, indentLevel, "%s = '", groupTypeName);
    IFF_printId(group->groupType);
    fputs("';\n", stdout);
}

void IFF_printGroupSubChunks(const IFF_Group* group, int indentLevel, const IFF_ID formType,
                             const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    IFF_printIndent(stdout, indentLevel, "[\n");
    for (uint32_t i = 0; i < group->subChunkCount; ++i)
        IFF_printChunk(group->subChunks[i], indentLevel + 1, formType, formExtensions, formExtensionsLength);
    IFF_printIndent(stdout, indentLevel, "];\n");
}

int IFF_compareGroup(const IFF_Group* group1, const IFF_Group* group2, const IFF_ID formType,
                     const IFF_FormExtension* formExtensions, unsigned int formExtensionsLength) {
    if (IFF_compareId(group1->groupType, group2->groupType) != 0) return 0;
    if (group1->subChunkCount != group2->subChunkCount) return 0;
    for (uint32_t i = 0; i < group1->subChunkCount; ++i) {
        if (!IFF_compareChunk(group1->subChunks[i], group2->subChunks[i], formType, formExtensions,
                              formExtensionsLength)) {
            return 0;
        }
    }
    return 1;
}

unsigned int iff_collect_forms_below(const IFF_Group* group, const IFF_ID formType, IFF_Form** forms) {
    unsigned int count = 0;
    for (uint32_t i = 0; i < group->subChunkCount; ++i)
        count += iff_collect_forms(group->subChunks[i], formType, forms ? forms + count : nullptr);
    return count;
}

IFF_Form** IFF_searchFormsInGroup(IFF_Group* group, const IFF_ID formType, unsigned int* count) {
    const unsigned int found = iff_collect_forms_below(group, formType, nullptr);
    IFF_Form** forms = found ? heap_array<IFF_Form*>(found) : nullptr;
    *count = forms ? iff_collect_forms_below(group, formType, forms) : 0;
    return forms;
}

int32_t iff_add_extents(int32_t size, const IFF_Group* group) {
    for (uint32_t i = 0; i < group->subChunkCount; ++i)
        size = IFF_incrementChunkSize(size, group->subChunks[i]);
    return size;
}

int IFF_updateGroupChunkSizes(IFF_Group* group) {
    const int32_t size = iff_add_extents(sizeof(IFF_ID), group);
    if (size >= 0) group->chunk.chunkSize = size;
    return size >= 0;
}
