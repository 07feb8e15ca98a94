// Image files of every format, all made of one small picture.
#ifndef TESTS_HOST_IMAGE_FILES_H
#define TESTS_HOST_IMAGE_FILES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using bytes = std::vector<uint8_t>;
using colour = std::array<uint8_t, 4>; // red, green, blue, alpha

constexpr uint32_t width = 5, height = 3;

// What a format keeps of the picture; two: the lowest index bit as black and white.
enum class look { opaque, alpha, grey, two };

colour seen(look as, uint32_t x, uint32_t y);

// kind 1 mapped, 2 colour, 3 grey; plus 8 coded. layout: the last byte of the header.
bytes tga(uint32_t kind, uint32_t bits, uint32_t layout);

// coding 0 plain, 1 RLE8, 2 RLE4, 3 masks; info: size of the header behind the first 14 bytes
bytes bmp(uint32_t bits, uint32_t coding, bool downwards, uint32_t info = 40);

#ifdef KORA_IMAGE_FILES
bytes png(look as);

// All of one colour, {200, 100, 50}, so that next to nothing is lost; `ink`: CMYK.
bytes jpeg(bool progressive, bool ink);
#endif

struct image_case {
    std::string name;
    bytes file;
    look as;
};

// All but JPEG, which loses.
std::vector<image_case> exact_images();
std::vector<image_case> all_images();

#endif
