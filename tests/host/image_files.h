// The image files beside this: every format, all made of one small picture.
//   images/LOOK/FILE    LOOK says what the file keeps of the picture
#ifndef TESTS_HOST_IMAGE_FILES_H
#define TESTS_HOST_IMAGE_FILES_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

using bytes = std::vector<uint8_t>;
using colour = std::array<uint8_t, 4>; // red, green, blue, alpha

constexpr uint32_t width = 5, height = 3;

// The colour of a pixel. `look`: alpha, opaque, grey, two (the lowest index bit as black and white), or flat
// (one colour, of which JPEG loses next to nothing).
colour seen(const std::string& look, uint32_t x, uint32_t y);

struct image_case {
    std::string look, name;
    bytes file;
};

image_case read_image(const std::string& look, const std::string& name);

// All that this build can read, by name.
std::vector<image_case> all_images();

#endif
