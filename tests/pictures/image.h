// Pictures in memory, and how two of them are compared.
#ifndef TESTS_PICTURES_IMAGE_H
#define TESTS_PICTURES_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace pictures {

struct rgba {
    uint8_t r, g, b, a;
    friend bool operator==(const rgba&, const rgba&) = default;
};

// Rows from the top, no padding.
struct image {
    int width = 0, height = 0;
    std::vector<rgba> pixels;

    image() = default;
    image(int w, int h, rgba fill = {}) : width(w), height(h), pixels(static_cast<size_t>(w * h), fill) {}
    rgba& at(int x, int y) { return pixels[static_cast<size_t>(y * width + x)]; }
    const rgba& at(int x, int y) const { return pixels[static_cast<size_t>(y * width + x)]; }
    friend bool operator==(const image&, const image&) = default;
};

struct comparison {
    double fraction = 0; // of the pixels in which a channel differs by more than the tolerance, 0 to 1
    int worst = 0;       // largest difference of a channel
    image difference;    // absolute differences, four times as bright, opaque
};

// Pictures of different sizes differ everywhere.
comparison image_compare(const image& expected, const image& actual, int tolerance);

// 32-bit TGA with its first row at the top. False when the file cannot be written.
bool image_write_tga(const image& picture, const std::string& path);

// Writes a PNG where libpng was there at build time, else a TGA; the suffix is added to `stem`.
// Returns the path, empty on failure.
std::string image_write(const image& picture, const std::string& stem);

#ifdef PICTURES_HAVE_PNG
// An empty image when the file cannot be read.
image image_read_png(const std::string& path);
#endif

} // namespace pictures

#endif
