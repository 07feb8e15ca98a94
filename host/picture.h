// Pictures from image files. A decoder reads the file and fills a picture, or returns why it cannot: a text
// that lives for ever. Decoders may throw std::bad_alloc. What they hold beside the picture is a few rows,
// except for JPEG files of several scans: up to eight bytes a pixel.
//
// The numbers in a header are believed only as far as the file's own size supports them, so a few bytes
// cannot ask for a gigabyte.
#ifndef HOST_PICTURE_H
#define HOST_PICTURE_H

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>

// Open for reading, at its start. It may shrink while it is read, but no more than `size` bytes are taken.
struct image_file {
    FILE* stream;
    uint64_t size;
};

struct picture_limits {
    bool pad = false; // to sides that are powers of two
    // Bytes that the pixels may take, padding included: in any case, and of what is left of a budget.
    uint64_t most_bytes = UINT64_MAX, budget_bytes = UINT64_MAX;
    // Told how many bytes will be taken, before they are.
    std::function<void(uint64_t bytes)> make_room = {};
};

// What picture::check returns when it is the limits that forbid the picture.
extern const char* const picture_over_limit;
extern const char* const picture_over_budget;

// 8-bit RGBA in a buffer that is at least as large, row 0 at the top, rows without gaps.
struct picture {
    picture_limits limits = {};
    uint32_t width = 0, height = 0;
    uint32_t buffer_width = 0, buffer_height = 0;
    std::unique_ptr<uint8_t[]> pixels = {};

    uint8_t* row(uint32_t y) { return pixels.get() + size_t{y} * buffer_width * 4; }
    uint64_t bytes() const { return uint64_t{buffer_width} * buffer_height * 4; }

    // Sets the size. Null, or why such a picture cannot come from a file of `file_size` bytes or is over the
    // limits; `pixels_per_byte` is the most that one byte of the format can stand for.
    const char* check(uint64_t w, uint64_t h, uint64_t file_size, uint64_t pixels_per_byte);
    void allocate();

    // Fills the buffer beyond the picture with its right column and bottom row.
    void pad();
};

// Tells the format by content; by `path` only for TGA files without a footer, which have no mark.
const char* picture_decode(const image_file& file, const char* path, picture& out);

const char* png_decode(const image_file& file, picture& out);
const char* jpeg_decode(const image_file& file, picture& out);
const char* bmp_decode(const image_file& file, picture& out);
const char* tga_decode(const image_file& file, picture& out);

#endif
