#include "image.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#ifdef PICTURES_HAVE_PNG
#include <png.h>
#endif

namespace pictures {

comparison image_compare(const image& expected, const image& actual, int tolerance) {
    if (expected.width != actual.width || expected.height != actual.height || expected.pixels.empty())
        return {1, 255, image(expected.width, expected.height)};
    comparison result{0, 0, image(expected.width, expected.height)};
    size_t beyond = 0;
    for (size_t i = 0; i < expected.pixels.size(); ++i) {
        const rgba& e = expected.pixels[i];
        const rgba& a = actual.pixels[i];
        const int d[4] = {abs(e.r - a.r), abs(e.g - a.g), abs(e.b - a.b), abs(e.a - a.a)};
        const int most = *std::max_element(d, d + 4);
        beyond += most > tolerance;
        result.worst = std::max(result.worst, most);
        // A difference of alpha alone would be invisible: it shows as grey.
        auto shown = [&](int v) { return static_cast<uint8_t>(std::min(255, 4 * std::max(v, d[3]))); };
        result.difference.pixels[i] = {shown(d[0]), shown(d[1]), shown(d[2]), 255};
    }
    result.fraction = static_cast<double>(beyond) / static_cast<double>(expected.pixels.size());
    return result;
}

bool image_write_tga(const image& picture, const std::string& path) {
    const auto [w, h] =
        std::pair{static_cast<uint32_t>(picture.width), static_cast<uint32_t>(picture.height)};
    const auto byte = [](uint32_t v) { return static_cast<char>(v & 0xff); };
    std::string bytes(18, '\0');
    bytes[2] = 2; // uncompressed true colour
    bytes[12] = byte(w);
    bytes[13] = byte(w >> 8);
    bytes[14] = byte(h);
    bytes[15] = byte(h >> 8);
    bytes[16] = 32;   // bits a pixel
    bytes[17] = 0x28; // eight of them alpha, first row at the top
    for (const rgba& p : picture.pixels)
        bytes += {byte(p.b), byte(p.g), byte(p.r), byte(p.a)};
    std::ofstream file(path, std::ios::binary);
    return static_cast<bool>((file << bytes).flush());
}

std::string image_write(const image& picture, const std::string& stem) {
#ifdef PICTURES_HAVE_PNG
    png_image png = {};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(picture.width);
    png.height = static_cast<png_uint_32>(picture.height);
    png.format = PNG_FORMAT_RGBA;
    const std::string path = stem + ".png";
    const int written = png_image_write_to_file(&png, path.c_str(), 0, picture.pixels.data(), 0, nullptr);
#else
    const std::string path = stem + ".tga";
    const bool written = image_write_tga(picture, path);
#endif
    return written ? path : "";
}

#ifdef PICTURES_HAVE_PNG
image image_read_png(const std::string& path) {
    png_image png = {};
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, path.c_str())) return {};
    png.format = PNG_FORMAT_RGBA;
    image picture(static_cast<int>(png.width), static_cast<int>(png.height));
    if (!png_image_finish_read(&png, nullptr, picture.pixels.data(), 0, nullptr)) return {};
    return picture;
}
#endif

} // namespace pictures
