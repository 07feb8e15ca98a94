#include "image_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

// Extreme channels only, which every depth can hold, and no symmetry. Runs cross the ends of rows.
constexpr uint8_t indices[height][width] = {{0, 1, 2, 3, 3}, {3, 3, 4, 5, 6}, {7, 1, 1, 1, 2}};
constexpr uint32_t argb[] = {0xffff0000, 0xff00ff00, 0xff0000ff, 0xffffff00,
                             0xff000000, 0xffffffff, 0x00ff00ff, 0x0000ffff};
constexpr uint32_t grey_step = 36;

#ifdef KORA_IMAGE_FILES
constexpr bool reads_all = true;
#else
constexpr bool reads_all = false;
#endif

} // namespace

colour seen(const std::string& look, uint32_t x, uint32_t y) {
    if (look == "flat") return {200, 100, 50, 255};
    const uint8_t index = indices[y][x];
    const auto level = static_cast<uint8_t>(look == "two" ? index % 2 * 255u : index * grey_step);
    if (look == "grey" || look == "two") return {level, level, level, 255};
    const uint32_t c = argb[index];
    return {static_cast<uint8_t>(c >> 16), static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c),
            static_cast<uint8_t>(look == "opaque" ? 255 : c >> 24)};
}

image_case read_image(const std::string& look, const std::string& name) {
    std::ifstream file(std::filesystem::path(IMAGE_FILES) / look / name, std::ios::binary);
    return {look, name, bytes(std::istreambuf_iterator<char>(file), {})};
}

std::vector<image_case> all_images() {
    std::vector<image_case> all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(IMAGE_FILES)) {
        const std::filesystem::path& path = entry.path();
        if (!entry.is_regular_file()) continue;
        if (!reads_all && (path.extension() == ".png" || path.extension() == ".jpg")) continue;
        all.push_back(read_image(path.parent_path().filename(), path.filename()));
    }
    std::ranges::sort(all, {}, &image_case::name);
    return all;
}
