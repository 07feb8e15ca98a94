#include "image_files.h"

#include <cstdio>
#include <cstdlib>

#ifdef KORA_IMAGE_FILES
#include <jpeglib.h>
#include <png.h>
#endif

namespace {

// Extreme channels only, which every depth can hold, and no symmetry. Runs cross the ends of rows.
constexpr uint8_t indices[height][width] = {{0, 1, 2, 3, 3}, {3, 3, 4, 5, 6}, {7, 1, 1, 1, 2}};
constexpr uint32_t argb[] = {0xffff0000, 0xff00ff00, 0xff0000ff, 0xffffff00,
                             0xff000000, 0xffffffff, 0x00ff00ff, 0x0000ffff};
constexpr uint32_t grey_step = 36;

void put(bytes& to, uint32_t value, uint32_t size) {
    for (uint32_t i = 0; i < size; ++i)
        to.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

// The colour in 16 bits: 5 of red and blue, the given number of green, then 1 of alpha.
uint32_t packed16(uint8_t index, int green) {
    const uint32_t c = argb[index];
    return (c & 0x1f) | (c & 0xff00) >> (16 - green) << 5 | (c >> 16 & 0x1f) << (5 + green) |
           (green == 5 ? c >> 31 << 15 : 0);
}

} // namespace

colour seen(look as, uint32_t x, uint32_t y) {
    const uint8_t index = indices[y][x];
    const auto level = static_cast<uint8_t>(as == look::two ? index % 2 * 255u : index * grey_step);
    if (as == look::grey || as == look::two) return {level, level, level, 255};
    const uint32_t c = argb[index];
    return {static_cast<uint8_t>(c >> 16), static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c),
            static_cast<uint8_t>(as == look::opaque ? 255 : c >> 24)};
}

bytes tga(uint32_t kind, uint32_t bits, uint32_t layout) {
    constexpr uint32_t first = 10; // index of the colour map
    const bool mapped = kind % 8 == 1, coded = kind >= 8;
    bytes file;
    put(file, 2 | (mapped ? 256 : 0) | kind << 16, 3);
    put(file, mapped ? first | 8 << 16 : 0, 4);
    put(file, mapped ? 24 : 0, 1);
    put(file, 0, 4);
    put(file, width | height << 16, 4);
    put(file, bits | layout << 8, 2);
    put(file, 'h' | 'i' << 8, 2);
    for (const uint32_t c : argb)
        if (mapped) put(file, c, 3);

    std::vector<uint32_t> pixels;
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const uint8_t index = indices[layout & 32 ? y : height - 1 - y][layout & 16 ? width - 1 - x : x];
            pixels.push_back(mapped       ? first + index
                             : bits == 8  ? index * grey_step
                             : bits == 16 ? packed16(index, 5)
                                          : argb[index]);
        }
    for (size_t i = 0, count = 1; i < pixels.size(); i += count) {
        size_t run = 1;
        while (i + run < pixels.size() && pixels[i + run] == pixels[i])
            ++run;
        // A single pixel shares a packet with the next one, where there is one.
        const bool repeat = run > 1 || i + 1 == pixels.size();
        count = !coded ? 1 : repeat ? run : 2;
        if (coded) put(file, static_cast<uint32_t>((repeat ? 128 : 0) + count - 1), 1);
        for (size_t k = 0; k < (coded && repeat ? 1 : count); ++k)
            put(file, pixels[i + k], bits / 8);
    }
    return file;
}

namespace {

void put_bmp_row(bytes& file, const uint8_t* row, uint32_t bits, uint32_t coding) {
    const size_t start = file.size();
    uint32_t gathered = 0;
    for (uint32_t x = 0; x < width; ++x) {
        if (bits == 16)
            put(file, packed16(row[x], coding == 3 ? 6 : 5), 2);
        else if (bits > 8)
            put(file, argb[row[x]], bits / 8);
        else
            gathered |= (row[x] & ((1u << bits) - 1)) << (8 - bits - x * bits % 8);
        if (bits <= 8 && ((x + 1) * bits % 8 == 0 || x == width - 1)) {
            put(file, gathered, 1);
            gathered = 0;
        }
    }
    while ((file.size() - start) % 4 != 0)
        file.push_back(0);
}

// The rows from the last to the first, as runs of a count and an index. 0 and 0 end a row, 0 and 1 the
// picture, 0 and 2 skip the first pixel, which keeps colour 0; 0 and 5 say that five indices follow.
const bytes runs8 = {1, 7, 3, 1, 1, 2, 0, 0, 0, 5, 3, 3, 4, 5, 6, 0,
                     0, 0, 0, 2, 1, 0, 1, 1, 1, 2, 2, 3, 0, 0, 0, 1};
// The same with two indices in a byte, which a run repeats by turns.
const bytes runs4 = {2, 0x71, 2, 0x11, 1,    0x20, 0,    0, 0,    5, 0x33, 0x45, 0x60,
                     0, 0,    0, 2,    0x01, 2,    0x23, 1, 0x30, 0, 0,    0,    1};

} // namespace

bytes bmp(uint32_t bits, uint32_t coding, bool downwards, uint32_t info) {
    const bool old = info == 12;
    const uint32_t entries = bits == 1 ? 2 : bits <= 8 ? 8 : 0, entry = old ? 3 : 4, side = old ? 2 : 4;
    bytes file = {'B', 'M'};
    file.resize(10);
    put(file, 14 + info + entries * entry + (coding == 3 && info == 40 ? 12 : 0), 4);
    put(file, info, 4);
    put(file, width, side);
    put(file, downwards ? 0u - height : height, side);
    put(file, 1 | bits << 16, 4);
    if (!old) {
        put(file, coding, 4);
        file.resize(file.size() + 12);
        put(file, entries, 4);
        put(file, 0, 4);
    }
    if (coding == 3)
        for (const uint32_t mask :
             {bits == 16 ? 0xf800u : 0xff0000u, bits == 16 ? 0x07e0u : 0xff00u, bits == 16 ? 0x001fu : 0xffu})
            put(file, mask, 4);
    if (info == 56) put(file, 0xff000000u, 4);
    for (uint32_t i = 0; i < entries; ++i)
        put(file, bits == 1 ? i * 0xffffff : argb[i], entry);
    if (coding == 1 || coding == 2) {
        const bytes& runs = coding == 1 ? runs8 : runs4;
        file.insert(file.end(), runs.begin(), runs.end());
        return file;
    }
    for (uint32_t line = 0; line < height; ++line)
        put_bmp_row(file, indices[downwards ? line : height - 1 - line], bits, coding);
    return file;
}

#ifdef KORA_IMAGE_FILES

bytes png(look as) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = as == look::grey ? PNG_FORMAT_GRAY : as == look::alpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    bytes pixels, file(10000);
    for (uint32_t i = 0; i < width * height; ++i) {
        const colour c = seen(as, i % width, i / width);
        pixels.insert(pixels.end(), c.begin(), c.begin() + PNG_IMAGE_SAMPLE_CHANNELS(image.format));
    }
    png_alloc_size_t size = file.size();
    if (!png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr)) abort();
    file.resize(size);
    return file;
}

bytes jpeg(bool progressive, bool ink) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &data, &size);
    info.image_width = width;
    info.image_height = height;
    info.input_components = ink ? 4 : 3;
    info.in_color_space = ink ? JCS_CMYK : JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 100, TRUE);
    if (progressive) jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    bytes row;
    for (uint32_t x = 0; x < width; ++x) {
        row.insert(row.end(), {200, 100, 50});
        if (ink) row.push_back(255);
    }
    for (JSAMPROW start = row.data(); info.next_scanline < height;)
        jpeg_write_scanlines(&info, &start, 1);
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    bytes file(data, data + size);
    free(data);
    return file;
}

#endif

std::vector<image_case> exact_images() {
    std::vector<image_case> all = {
        {"1 bit", bmp(1, 0, false), look::two},
        {"4 bit", bmp(4, 0, true), look::opaque},
        {"8 bit", bmp(8, 0, false), look::opaque},
        {"old header", bmp(8, 0, false, 12), look::opaque},
        {"16 bit", bmp(16, 0, true), look::opaque},
        {"16 bit 565", bmp(16, 3, false), look::opaque},
        {"24 bit", bmp(24, 0, false), look::opaque},
        {"24 bit downwards", bmp(24, 0, true), look::opaque},
        {"32 bit", bmp(32, 0, false), look::opaque},
        {"32 bit alpha", bmp(32, 3, false, 56), look::alpha},
        {"rle8", bmp(8, 1, false), look::opaque},
        {"rle4", bmp(4, 2, false), look::opaque},
        {"mapped.tga", tga(1, 8, 0), look::opaque},
        {"mapped rle.tga", tga(9, 8, 32), look::opaque},
        {"grey.tga", tga(3, 8, 32), look::grey},
        {"grey rle.tga", tga(11, 8, 0), look::grey},
        {"16.tga", tga(2, 16, 0), look::opaque},
        {"16 alpha.tga", tga(2, 16, 1), look::alpha},
        {"24.tga", tga(2, 24, 0), look::opaque},
        {"24 rle.tga", tga(10, 24, 32), look::opaque},
        {"24 mirrored.tga", tga(2, 24, 16), look::opaque},
        {"32.TGA", tga(2, 32, 8), look::alpha},
        {"32 rle.tga", tga(10, 32, 40), look::alpha},
        {"32 without alpha.tga", tga(2, 32, 0), look::opaque},
    };
#ifdef KORA_IMAGE_FILES
    for (const look as : {look::grey, look::opaque, look::alpha})
        all.push_back({"png", png(as), as});
#endif
    return all;
}

std::vector<image_case> all_images() {
    std::vector<image_case> all = exact_images();
#ifdef KORA_IMAGE_FILES
    for (const bool progressive : {false, true})
        for (const bool ink : {false, true})
            all.push_back({"jpeg", jpeg(progressive, ink), look::opaque});
#endif
    return all;
}
