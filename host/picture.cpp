#include "picture.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <strings.h>

namespace {

constexpr uint64_t most_side = 16384, most_pixels = uint64_t{256} << 20;

// A picture this small may come from any file: what an empty one compresses to says little.
constexpr uint64_t harmless_pixels = uint64_t{1} << 20;

bool starts_with(byte_span file, std::string_view mark) {
    return file.size() >= mark.size() && memcmp(file.data(), mark.data(), mark.size()) == 0;
}

bool ends_with(byte_span file, std::string_view mark) {
    return file.size() >= mark.size() &&
           memcmp(file.data() + file.size() - mark.size(), mark.data(), mark.size()) == 0;
}

bool named_tga(const char* path) {
    const size_t length = strlen(path);
    return length >= 4 && strcasecmp(path + length - 4, ".tga") == 0;
}

} // namespace

void picture::allocate(uint32_t w, uint32_t h) {
    pixels = std::make_unique_for_overwrite<uint8_t[]>(size_t{w} * h * 4);
    width = w;
    height = h;
}

const char* picture_size_fault(uint64_t width, uint64_t height, size_t file_size, uint64_t pixels_per_byte) {
    if (width == 0 || height == 0) return "the picture has no pixels";
    if (width > most_side || height > most_side || width * height > most_pixels)
        return "the picture is too large";
    if (width * height > harmless_pixels && width * height / pixels_per_byte > file_size)
        return "the file is too short for its picture";
    return nullptr;
}

const char* picture_decode(byte_span file, const char* path, picture& out) {
    using namespace std::string_view_literals;
    if (file.empty()) return "the file is empty";
    if (starts_with(file, "\x89PNG\r\n\x1a\n"sv)) return png_decode(file, out);
    if (starts_with(file, "\xff\xd8\xff"sv)) return jpeg_decode(file, out);
    if (ends_with(file, "TRUEVISION-XFILE.\0"sv) || named_tga(path)) return tga_decode(file, out);
    if (starts_with(file, "BM"sv)) return bmp_decode(file, out);
    return "not a PNG, JPEG, TGA or BMP file";
}

void picture_pad(picture& image, uint32_t width, uint32_t height) {
    picture larger;
    larger.allocate(width, height);
    const size_t row_bytes = size_t{image.width} * 4;
    for (uint32_t y = 0; y < height; ++y) {
        uint8_t* to = larger.row(y);
        if (y >= image.height) {
            memcpy(to, larger.row(image.height - 1), size_t{width} * 4);
            continue;
        }
        memcpy(to, image.row(y), row_bytes);
        for (size_t x = row_bytes; x < size_t{width} * 4; x += 4)
            memcpy(to + x, to + row_bytes - 4, 4);
    }
    image = std::move(larger);
}
