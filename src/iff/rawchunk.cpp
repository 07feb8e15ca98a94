#include "iff/io.h"

namespace {

// Records made by hand may have a size and no data.
size_t body_size(const IFF_RawChunk* rawChunk) {
    return rawChunk->data && rawChunk->chunk.chunkSize > 0 ? static_cast<size_t>(rawChunk->chunk.chunkSize)
                                                           : 0;
}

// Writes the body as it is. Returns false when not all of it, or not as much as the size says, was written.
bool write_body(FILE* file, const IFF_RawChunk* rawChunk) {
    const size_t size = body_size(rawChunk);
    if (size > 0 && fwrite(rawChunk->data, 1, size, file) != size) return false;
    return rawChunk->chunk.chunkSize == static_cast<int32_t>(size);
}

void raw_body_error(const char* text, const IFF_ID chunkId) {
    IFF_error("%s", text);
    IFF_errorId(chunkId);
    IFF_error("'\n");
}

} // namespace

IFF_RawChunk* IFF_createRawChunk(const IFF_ID chunkId) {
    return reinterpret_cast<IFF_RawChunk*>(IFF_allocateChunk(chunkId, sizeof(IFF_RawChunk)));
}

void IFF_setRawChunkData(IFF_RawChunk* rawChunk, uint8_t* data, int32_t chunkSize) {
    if (rawChunk->data != data) free(rawChunk->data);
    rawChunk->data = data;
    rawChunk->chunk.chunkSize = chunkSize;
}

int IFF_setTextData(IFF_RawChunk* rawChunk, const char* text) {
    const size_t length = strlen(text);
    uint8_t* data = length <= INT32_MAX ? heap_array<uint8_t>(length) : nullptr;
    if (!data) return 0;
    memcpy(data, text, length);
    IFF_setRawChunkData(rawChunk, data, static_cast<int32_t>(length));
    return 1;
}

IFF_RawChunk* IFF_readRawChunk(FILE* file, const IFF_ID chunkId, int32_t chunkSize) {
    // A damaged header can claim a negative size.
    const size_t count = chunkSize < 0 ? 0 : static_cast<size_t>(chunkSize);
    heap_ptr<IFF_RawChunk> rawChunk{chunkSize < 0 ? nullptr : IFF_createRawChunk(chunkId)};
    heap_ptr<uint8_t> body;
    if (!rawChunk || (count > 0 && iff_read_bytes(file, count, body) != count)) {
        raw_body_error("Error reading raw chunk body of chunk: '", chunkId);
        return nullptr;
    }
    if (!IFF_readPaddingByte(file, chunkSize, chunkId)) return nullptr;
    IFF_setRawChunkData(rawChunk.get(), body.release(), chunkSize);
    return rawChunk.release();
}

int IFF_writeRawChunk(FILE* file, const IFF_RawChunk* rawChunk) {
    if (!write_body(file, rawChunk)) {
        raw_body_error("Error writing raw chunk body of chunk '", rawChunk->chunk.chunkId);
        return 0;
    }
    return IFF_writePaddingByte(file, rawChunk->chunk.chunkSize, rawChunk->chunk.chunkId);
}

void IFF_freeRawChunk(IFF_RawChunk* rawChunk) {
    heap_clear(rawChunk->data);
}

int IFF_compareRawChunk(const IFF_RawChunk* rawChunk1, const IFF_RawChunk* rawChunk2) {
    const size_t size = body_size(rawChunk1);
    return size == 0 || (body_size(rawChunk2) >= size && memcmp(rawChunk1->data, rawChunk2->data, size) == 0);
}

void IFF_printText(const IFF_RawChunk* rawChunk, int indentLevel) {
    IFF_printIndent(stdout, indentLevel, "text = '\n");
    IFF_printIndent(stdout, indentLevel + 1, "%s", "");
    write_body(stdout, rawChunk);
    fputs("\n", stdout);
    IFF_printIndent(stdout, indentLevel, "';\n");
}

void IFF_printRaw(const IFF_RawChunk* rawChunk, int indentLevel) {
    constexpr char digits[] = "0123456789abcdef";
    constexpr size_t bytes_per_line = 10;
    const size_t size = body_size(rawChunk);

    IFF_printIndent(stdout, indentLevel, "bytes = \n");
    // An empty body still has its one, empty, line.
    for (size_t start = 0; start == 0 || start < size; start += bytes_per_line) {
        char line[3 * bytes_per_line + 2];
        size_t length = 0;
        for (size_t i = start; i < size && i < start + bytes_per_line; ++i) {
            line[length++] = digits[rawChunk->data[i] >> 4];
            line[length++] = digits[rawChunk->data[i] & 15];
            line[length++] = ' ';
        }
        line[length++] = '\n';
        line[length] = '\0';
        IFF_printIndent(stdout, indentLevel + 1, "%s", line);
    }
    IFF_printIndent(stdout, indentLevel, ";\n");
}

void IFF_printRawChunk(const IFF_RawChunk* rawChunk, int indentLevel) {
    if (IFF_compareId(rawChunk->chunk.chunkId, "TEXT") == 0) {
        IFF_printText(rawChunk, indentLevel);
    } else {
        IFF_printRaw(rawChunk, indentLevel);
    }
}
