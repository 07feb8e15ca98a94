#include "image.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#ifdef PICTURES_HAVE_PNG
#include <png.h>
#endif

namespace pictures {

comparison image_compare(const image& expected, const image& actual, int tolerance) {
    comparison result;
    result.difference = image(expected.width, expected.height);
    if (expected.width != actual.width || expected.height != actual.height || expected.pixels.empty()) {
        result.fraction = 1;
        result.worst = 255;
        return result;
    }
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
    FILE* file = fopen(path.c_str(), "wb");
    if (!file) return false;
    const auto low = [](int v) { return static_cast<uint8_t>(v & 0xff); };
    const auto high = [](int v) { return static_cast<uint8_t>(v >> 8 & 0xff); };
    uint8_t header[18] = {};
    header[2] = 2; // uncompressed true colour
    header[12] = low(picture.width);
    header[13] = high(picture.width);
    header[14] = low(picture.height);
    header[15] = high(picture.height);
    header[16] = 32;   // bits a pixel
    header[17] = 0x28; // eight of them alpha, first row at the top
    std::vector<uint8_t> body;
    body.reserve(picture.pixels.size() * 4);
    for (const rgba& p : picture.pixels)
        body.insert(body.end(), {p.b, p.g, p.r, p.a});
    const bool written = fwrite(header, sizeof header, 1, file) == 1 &&
                         fwrite(body.data(), 1, body.size(), file) == body.size();
    return (fclose(file) == 0) && written;
}

#ifdef PICTURES_HAVE_PNG

std::string image_write(const image& picture, const std::string& stem) {
    png_image png = {};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(picture.width);
    png.height = static_cast<png_uint_32>(picture.height);
    png.format = PNG_FORMAT_RGBA;
    const std::string path = stem + ".png";
    const int written = png_image_write_to_file(&png, path.c_str(), 0, picture.pixels.data(), 0, nullptr);
    return written ? path : "";
}

image image_read_png(const std::string& path) {
    png_image png = {};
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, path.c_str())) return {};
    png.format = PNG_FORMAT_RGBA;
    image picture(static_cast<int>(png.width), static_cast<int>(png.height));
    if (!png_image_finish_read(&png, nullptr, picture.pixels.data(), 0, nullptr)) return {};
    return picture;
}

#else

std::string image_write(const image& picture, const std::string& stem) {
    const std::string path = stem + ".tga";
    return image_write_tga(picture, path) ? path : "";
}

#endif

} // namespace pictures
