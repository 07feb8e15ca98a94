// What the group chunks share with each other and with the dispatch over all chunks.
#ifndef IFF_GROUP_H
#define IFF_GROUP_H

#include "base/heap.h"
#include "iff/iff.h"

enum class chunk_kind : uint8_t { form, prop, cat, list, data };

chunk_kind iff_kind(const IFF_Chunk* chunk);

// Group records start with their chunk's fields.
inline IFF_Group* as_group(IFF_Chunk* chunk) {
    return reinterpret_cast<IFF_Group*>(chunk);
}
inline const IFF_Group* as_group(const IFF_Chunk* chunk) {
    return reinterpret_cast<const IFF_Group*>(chunk);
}
inline IFF_List* as_list(IFF_Chunk* chunk) {
    return reinterpret_cast<IFF_List*>(chunk);
}
inline const IFF_List* as_list(const IFF_Chunk* chunk) {
    return reinterpret_cast<const IFF_List*>(chunk);
}

// What a tree is read from, and how many groups are around the next chunk.
struct iff_source {
    FILE* file;
    const IFF_FormExtension* formExtensions;
    unsigned int formExtensionsLength;
    int level;
};

IFF_Chunk* iff_read_chunk(const iff_source& source, const char* formType);
IFF_Group* iff_read_group(const iff_source& source, const IFF_ID chunkId, int32_t chunkSize,
                          const char* groupTypeName, bool groupTypeIsFormType);

// Appends an entry. The records have no field for a capacity: who fills an array passes one that starts at 0;
// without one the array grows by a single entry.
template <class T> bool iff_append(T**& array, uint32_t& count, T* entry, uint32_t* capacity) {
    if (!capacity || count == *capacity) {
        const uint32_t room = capacity ? 2 * count + 1 : count + 1;
        if (!heap_resize(array, room)) return false;
        if (capacity) *capacity = room;
    }
    array[count++] = entry;
    return true;
}

// Appends to one of the group's two arrays and grows the group's size.
template <class T>
bool iff_adopt(IFF_Group* group, T**& array, uint32_t& count, T* entry, IFF_Chunk* chunk,
               uint32_t* capacity) {
    const int32_t size = IFF_incrementChunkSize(group->chunk.chunkSize, chunk);
    if (size < 0 || !iff_append(array, count, entry, capacity)) return false;
    group->chunk.chunkSize = size;
    chunk->parent = group;
    return true;
}

// Levels of groups in groups are limited, so that no file exhausts the stack of whoever walks its tree. False
// after a report.
bool iff_level_allowed(int level);

// Whether the groups in the chunk are nested no deeper than readers go, at a level of groups around it. False
// after a report.
bool iff_check_depth(const IFF_Chunk* chunk, int level);

// `size` plus the extents of the group's chunks, or -1 when that leaves the 32 bits.
int32_t iff_add_extents(int32_t size, const IFF_Group* group);

// The same after checking each chunk; -1 after a report.
int32_t iff_check_sub_chunks(int32_t size, const IFF_Group* group, IFF_SubChunkTest subChunkTest,
                             const IFF_ID formType, const IFF_FormExtension* formExtensions,
                             unsigned int formExtensionsLength);

// Adds a checked chunk's extent, or returns -1 after a report.
int32_t iff_check_extent(int32_t size, const IFF_Chunk* chunk);

// Reports that a chunk may not be in a kind of group. Returns 0.
int iff_refuse_sub_chunk(const IFF_Chunk* chunk, const char* groupName);

// Stores the FORMs of a type that are in the chunk, or below the group, into `forms`, unless that is null.
// Returns their number.
unsigned int iff_collect_forms(IFF_Chunk* chunk, const IFF_ID formType, IFF_Form** forms);
unsigned int iff_collect_forms_below(const IFF_Group* group, const IFF_ID formType, IFF_Form** forms);

#endif
