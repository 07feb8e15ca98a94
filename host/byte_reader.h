// Little-endian numbers from a file. Reading past the end gives zeros and is remembered.
#ifndef HOST_BYTE_READER_H
#define HOST_BYTE_READER_H

#include "picture.h"

class byte_reader {
  public:
    explicit byte_reader(const image_file& source) : file(source) {}

    uint8_t u8() {
        const int byte = at < file.size ? getc_unlocked(file.stream) : EOF;
        if (byte != EOF) return ++at, static_cast<uint8_t>(byte);
        past_end = true;
        return 0;
    }
    uint16_t u16() {
        const unsigned low = u8();
        return static_cast<uint16_t>(low | unsigned{u8()} << 8);
    }
    uint32_t u32() {
        const uint32_t low = u16();
        return low | uint32_t{u16()} << 16;
    }
    // A number of 1 to 4 bytes.
    uint32_t number(unsigned size) {
        uint32_t value = 0;
        for (unsigned i = 0; i < size; ++i)
            value |= uint32_t{u8()} << (8 * i);
        return value;
    }
    void skip(uint64_t count) {
        if (count != 0) seek(at + count);
    }
    void seek(uint64_t to) {
        past_end = past_end || to > file.size;
        at = to < file.size ? to : file.size;
        past_end = fseeko(file.stream, static_cast<off_t>(at), SEEK_SET) != 0 || past_end;
    }
    uint64_t left() const { return file.size - at; }
    bool failed() const { return past_end; }

  private:
    const image_file& file;
    uint64_t at = 0;
    bool past_end = false;
};

// A channel of `bits` bits (1 to 8) spread over 0 to 255.
inline uint8_t widen(uint32_t value, unsigned bits) {
    const uint32_t most = (1u << bits) - 1;
    return static_cast<uint8_t>((value * 255 + most / 2) / most);
}

struct rgba {
    uint8_t r = 0, g = 0, b = 0, a = 255;
};

#endif
