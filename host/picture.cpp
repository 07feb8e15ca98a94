#include "picture.h"

#include <strings.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

namespace {

constexpr uint64_t most_side = 16384;

// A picture this small may come from any file: what an empty one compresses to says little.
constexpr uint64_t harmless_pixels = uint64_t{1} << 20;

bool named_tga(const char* path) {
    const size_t length = strlen(path);
    return length >= 4 && strcasecmp(path + length - 4, ".tga") == 0;
}

// Whether the file has these bytes, at most 20, at an offset. Leaves the stream at its start.
bool has_mark(const image_file& file, uint64_t offset, std::string_view mark) {
    char bytes[20];
    const bool read = file.size >= offset + mark.size() &&
                      fseeko(file.stream, static_cast<off_t>(offset), SEEK_SET) == 0 &&
                      fread(bytes, 1, mark.size(), file.stream) == mark.size();
    rewind(file.stream);
    return read && memcmp(bytes, mark.data(), mark.size()) == 0;
}

} // namespace

const char* const picture_over_limit = "the picture is over the limit";
const char* const picture_over_budget = "the picture is over the budget";

const char* picture::check(uint64_t w, uint64_t h, uint64_t file_size, uint64_t pixels_per_byte) {
    if (w == 0 || h == 0) return "the picture has no pixels";
    if (w > most_side || h > most_side) return "the picture is too large: more than 16384 pixels a side";
    if (w * h > harmless_pixels && w * h / pixels_per_byte > file_size)
        return "the file is too short for its picture";
    width = static_cast<uint32_t>(w);
    height = static_cast<uint32_t>(h);
    buffer_width = limits.pad ? std::bit_ceil(width) : width;
    buffer_height = limits.pad ? std::bit_ceil(height) : height;
    if (bytes() > limits.most_bytes) return picture_over_limit;
    if (bytes() > limits.budget_bytes) return picture_over_budget;
    return nullptr;
}

void picture::allocate() {
    if (limits.make_room) limits.make_room(bytes());
    pixels = std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(bytes()));
}

void picture::pad() {
    const size_t from = size_t{width} * 4, to = size_t{buffer_width} * 4;
    for (uint32_t y = 0; y < height; ++y)
        for (size_t x = from; x < to; x += 4)
            memcpy(row(y) + x, row(y) + from - 4, 4);
    for (uint32_t y = height; y < buffer_height; ++y)
        memcpy(row(y), row(height - 1), to);
}

const char* picture_decode(const image_file& file, const char* path, picture& out) {
    using namespace std::string_view_literals;
    if (file.size == 0) return "the file is empty";
    constexpr std::string_view tga_mark = "TRUEVISION-XFILE.\0"sv;
    const uint64_t tga_mark_at = file.size - std::min<uint64_t>(file.size, tga_mark.size());
    const char* fault = "not a PNG, JPEG, TGA or BMP file";
    if (has_mark(file, 0, "\x89PNG\r\n\x1a\n"sv))
        fault = png_decode(file, out);
    else if (has_mark(file, 0, "\xff\xd8\xff"sv))
        fault = jpeg_decode(file, out);
    else if (named_tga(path) || has_mark(file, tga_mark_at, tga_mark))
        fault = tga_decode(file, out);
    else if (has_mark(file, 0, "BM"sv))
        fault = bmp_decode(file, out);
    if (!fault) out.pad();
    return fault;
}
