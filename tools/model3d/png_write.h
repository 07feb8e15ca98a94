// PNG files that appear whole or not at all.
#ifndef TOOLS_MODEL3D_PNG_WRITE_H
#define TOOLS_MODEL3D_PNG_WRITE_H

#include "common/input_file.h"

#include <cstdint>
#include <string>
#include <vector>

struct picture {
    int width = 0, height = 0;
    bool bottom_up = false;      // the first row is the lowest
    std::vector<uint8_t> pixels; // RGBA, straight alpha
};

// Throws a failure when the picture cannot be written; see write_file.
void write_png(const picture& image, const std::string& file, const input_files& inputs);

#endif
