#include "iff/io.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace {

// Integers in a file have their most significant byte first.
template <class T> int read_number(FILE* file, T* value, const IFF_ID chunkId, const char* attributeName) {
    using bits = std::make_unsigned_t<T>;
    uint8_t bytes[sizeof(T)];
    if (fread(bytes, 1, sizeof bytes, file) != sizeof bytes) {
        IFF_readError(chunkId, attributeName);
        return 0;
    }
    uint32_t number = 0;
    for (const uint8_t byte : bytes)
        number = number << 8 | byte;
    *value = static_cast<T>(static_cast<bits>(number));
    return 1;
}

template <class T> int write_number(FILE* file, T value, const IFF_ID chunkId, const char* attributeName) {
    const uint32_t number = static_cast<std::make_unsigned_t<T>>(value);
    uint8_t bytes[sizeof(T)];
    for (size_t i = 0; i < sizeof bytes; ++i)
        bytes[i] = static_cast<uint8_t>(number >> 8 * (sizeof bytes - 1 - i));
    if (fwrite(bytes, 1, sizeof bytes, file) != sizeof bytes) {
        IFF_writeError(chunkId, attributeName);
        return 0;
    }
    return 1;
}

// Between the byte orders of file and machine, either way.
uint32_t swapped(uint32_t word) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return __builtin_bswap32(word);
#else
    return word;
#endif
}

void swap_words(void* words, size_t count) {
    auto* bytes = static_cast<uint8_t*>(words);
    for (size_t i = 0; i < count; ++i) {
        uint32_t word;
        memcpy(&word, bytes + 4 * i, sizeof word);
        word = swapped(word);
        memcpy(bytes + 4 * i, &word, sizeof word);
    }
}

} // namespace

int IFF_readUByte(FILE* file, uint8_t* value, const IFF_ID chunkId, const char* attributeName) {
    return read_number(file, value, chunkId, attributeName);
}

int IFF_writeUByte(FILE* file, uint8_t value, const IFF_ID chunkId, const char* attributeName) {
    return write_number(file, value, chunkId, attributeName);
}

int IFF_readWord(FILE* file, int16_t* value, const IFF_ID chunkId, const char* attributeName) {
    return read_number(file, value, chunkId, attributeName);
}

int IFF_writeWord(FILE* file, int16_t value, const IFF_ID chunkId, const char* attributeName) {
    return write_number(file, value, chunkId, attributeName);
}

int IFF_readUWord(FILE* file, uint16_t* value, const IFF_ID chunkId, const char* attributeName) {
    return read_number(file, value, chunkId, attributeName);
}

int IFF_writeUWord(FILE* file, uint16_t value, const IFF_ID chunkId, const char* attributeName) {
    return write_number(file, value, chunkId, attributeName);
}

int IFF_readLong(FILE* file, int32_t* value, const IFF_ID chunkId, const char* attributeName) {
    return read_number(file, value, chunkId, attributeName);
}

int IFF_writeLong(FILE* file, int32_t value, const IFF_ID chunkId, const char* attributeName) {
    return write_number(file, value, chunkId, attributeName);
}

int IFF_readULong(FILE* file, uint32_t* value, const IFF_ID chunkId, const char* attributeName) {
    return read_number(file, value, chunkId, attributeName);
}

int IFF_writeULong(FILE* file, uint32_t value, const IFF_ID chunkId, const char* attributeName) {
    return write_number(file, value, chunkId, attributeName);
}

int IFF_readPaddingByte(FILE* file, int32_t chunkSize, const IFF_ID chunkId) {
    if (chunkSize % 2 == 0) return 1;
    const int byte = fgetc(file);
    if (byte == EOF) {
        IFF_error("Unexpected end of file, while reading padding byte of '");
        IFF_errorId(chunkId);
        IFF_error("'\n");
        return 0;
    }
    if (byte != 0) IFF_error("WARNING: Padding byte is non-zero!\n");
    return 1;
}

int IFF_writePaddingByte(FILE* file, int32_t chunkSize, const IFF_ID chunkId) {
    if (chunkSize % 2 == 0 || fputc(0, file) != EOF) return 1;
    IFF_error("Cannot write padding byte of '");
    IFF_errorId(chunkId);
    IFF_error("'\n");
    return 0;
}

size_t iff_read_bytes(FILE* file, size_t count, heap_ptr<uint8_t>& bytes) {
    constexpr size_t first_room = 64 * 1024;
    uint8_t* storage = nullptr;
    size_t arrived = 0;
    for (size_t room = std::min(count, first_room); heap_resize(storage, room);) {
        arrived += fread(storage + arrived, 1, room - arrived, file);
        if (arrived < room || arrived == count) break;
        room = std::min(count - arrived, arrived) + arrived;
    }
    bytes.reset(storage);
    return arrived;
}

int iff_read_floats(FILE* file, float* values, size_t count, const IFF_ID chunkId,
                    const char* attributeName) {
    if (fread(values, sizeof(float), count, file) != count) {
        IFF_readError(chunkId, attributeName);
        return 0;
    }
    swap_words(values, count);
    return 1;
}

int iff_write_floats(FILE* file, const float* values, size_t count, const IFF_ID chunkId,
                     const char* attributeName) {
    float piece[64];
    while (count > 0) {
        const size_t length = std::min(count, std::size(piece));
        memcpy(piece, values, length * sizeof(float));
        swap_words(piece, length);
        if (fwrite(piece, sizeof(float), length, file) != length) {
            IFF_writeError(chunkId, attributeName);
            return 0;
        }
        values += length;
        count -= length;
    }
    return 1;
}
