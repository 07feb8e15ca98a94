// What the chunk types of a scene file share: embedded texts, computed sizes, reports.
#ifndef QELF_FIELDS_H
#define QELF_FIELDS_H

#include "iff/io.h"
#include "qelf/qelf.h"

// One report, then null or 0: memory is short.
void out_of_memory(const char* chunk_id);

// Reports what is wrong with the use of a record. Returns 0.
int refuse(const char* chunk_id, const char* reason);

// A zero-filled record with its identifier and size, or null after a report.
template <class Record> Record* create_record(const char* chunk_id, int32_t size) {
    auto* record = reinterpret_cast<Record*>(IFF_allocateChunk(chunk_id, sizeof(Record)));
    if (!record) {
        out_of_memory(chunk_id);
        return nullptr;
    }
    record->chunk.chunkSize = size;
    return record;
}

bool same_bits(const float* a, const float* b, int count);

// A signed count or length; a negative one fails like a short read.
int read_count(FILE* file, int32_t* value, const char* chunk_id, const char* field);

// Sums sizes in a record's chunkSize. False after a report, with the size as it was, when it leaves 32 bits.
bool add_to_size(IFF_Chunk* chunk, int64_t bytes);

// What an embedded record of that size adds to the size of the one around it.
int64_t extent(int32_t size);

// Embeds a record: adds its extent.
bool embed(IFF_Chunk* around, const IFF_Chunk* embedded);

// Replaces an embedded text and keeps length and size right. 1, or 0 after a report.
int set_text(IFF_Chunk* around, IFF_RawChunk** text, int32_t* length, const char* text_id, const char* value);

// Before a record is written: texts that were never set become empty ones, and so do arrays of no elements,
// and sizes are counted anew. What is missing for good is left to the write operations to refuse. 1, or 0
// after a report.
int complete_text(IFF_Chunk* around, IFF_RawChunk** text, int32_t* length, const char* text_id);
int complete_group(QELF_SceneGroup* group, int depth);
int complete_node(QELF_Node* node, int depth);
int complete_mesh(QELF_TriangleMesh* mesh);
int complete_light(QELF_Light* light);
int complete_texture(QELF_Texture* texture);
int complete_animation(QELF_Animation* animation);

// A text that may never have been set.
int write_text(FILE* file, const IFF_RawChunk* text);
void free_text(IFF_RawChunk** text);
void print_text(const IFF_RawChunk* text, int indentLevel);
bool same_text(const IFF_RawChunk* a, const IFF_RawChunk* b);

// Readers that know how many groups are around them, which is limited as for groups of chunks.
QELF_SceneGroup* read_group(FILE* file, int depth);
QELF_Node* read_node(FILE* file, int depth);

#endif
