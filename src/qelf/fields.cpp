#include "qelf/fields.h"

#include <cstdlib>
#include <cstring>

void out_of_memory(const char* chunk_id) {
    IFF_error("Out of memory for '");
    IFF_errorId(chunk_id);
    IFF_error("'!\n");
}

bool same_bits(const float* a, const float* b, int count) {
    return memcmp(a, b, static_cast<size_t>(count) * sizeof(float)) == 0;
}

int refuse(const char* chunk_id, const char* reason) {
    IFF_error("'");
    IFF_errorId(chunk_id);
    IFF_error("': %s!\n", reason);
    return 0;
}

int read_count(FILE* file, int32_t* value, const char* chunk_id, const char* field) {
    if (!IFF_readLong(file, value, chunk_id, field)) return 0;
    if (*value >= 0) return 1;
    IFF_readError(chunk_id, field);
    return 0;
}

bool add_to_size(IFF_Chunk* chunk, int64_t bytes) {
    const int64_t sum = chunk->chunkSize + bytes;
    if (sum < 0 || sum > INT32_MAX) {
        IFF_error("Size of '");
        IFF_errorId(chunk->chunkId);
        IFF_error("' exceeds 32 bits!\n");
        return false;
    }
    chunk->chunkSize = static_cast<int32_t>(sum);
    return true;
}

int64_t extent(int32_t size) {
    return int64_t{size} + 8 + (size & 1);
}

bool embed(IFF_Chunk* around, const IFF_Chunk* embedded) {
    return add_to_size(around, extent(embedded->chunkSize));
}

int set_text(IFF_Chunk* around, IFF_RawChunk** text, int32_t* length, const char* text_id,
             const char* value) {
    IFF_RawChunk* fresh = IFF_createRawChunk(text_id);
    if (!fresh || !IFF_setTextData(fresh, value ? value : "")) {
        out_of_memory(text_id);
        free_text(&fresh);
        return 0;
    }
    const int64_t before = *text ? extent((*text)->chunk.chunkSize) : 0;
    if (!add_to_size(around, extent(fresh->chunk.chunkSize) - before)) {
        free_text(&fresh);
        return 0;
    }
    free_text(text);
    *text = fresh;
    *length = fresh->chunk.chunkSize;
    return 1;
}

int complete_text(IFF_Chunk* around, IFF_RawChunk** text, int32_t* length, const char* text_id) {
    if (!*text) *text = IFF_createRawChunk(text_id);
    if (!*text) {
        out_of_memory(text_id);
        return 0;
    }
    *length = (*text)->chunk.chunkSize;
    return embed(around, &(*text)->chunk);
}

int write_text(FILE* file, const IFF_RawChunk* text) {
    return text ? IFF_writeRawChunk(file, text) : 1;
}

void free_text(IFF_RawChunk** text) {
    if (*text) IFF_freeRawChunk(*text);
    free(*text);
    *text = nullptr;
}

void print_text(const IFF_RawChunk* text, int indentLevel) {
    if (text) IFF_printText(text, indentLevel);
}

bool same_text(const IFF_RawChunk* a, const IFF_RawChunk* b) {
    const int32_t size_a = a ? a->chunk.chunkSize : 0;
    const int32_t size_b = b ? b->chunk.chunkSize : 0;
    return size_a == size_b && (size_a == 0 || IFF_compareRawChunk(a, b));
}
