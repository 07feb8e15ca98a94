// Pictures from image files. A decoder gets the whole file and fills a picture, or returns why it cannot:
// a text that lives for ever. Decoders may throw std::bad_alloc.
//
// The numbers in a header are believed only as far as the file's own size supports them, so a few bytes
// cannot ask for a gigabyte.
#ifndef HOST_PICTURE_H
#define HOST_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

using byte_span = std::span<const uint8_t>;

// 8-bit RGBA, row 0 at the top, rows without gaps.
struct picture {
    uint32_t width = 0, height = 0;
    std::unique_ptr<uint8_t[]> pixels;

    uint8_t* row(uint32_t y) { return pixels.get() + size_t{y} * width * 4; }
    void allocate(uint32_t w, uint32_t h);
};

// Null, or why a picture of this size cannot come from a file of `file_size` bytes; `pixels_per_byte` is
// the most that one byte of the format can stand for.
const char* picture_size_fault(uint64_t width, uint64_t height, size_t file_size, uint64_t pixels_per_byte);

// Tells the format by content; by `path` only for TGA files without a footer, which have no mark.
const char* picture_decode(byte_span file, const char* path, picture& out);

const char* png_decode(byte_span file, picture& out);
const char* jpeg_decode(byte_span file, picture& out);
const char* bmp_decode(byte_span file, picture& out);
const char* tga_decode(byte_span file, picture& out);

// Grows the picture to `width` x `height`, repeating its right column and bottom row.
void picture_pad(picture& image, uint32_t width, uint32_t height);

#endif
