// PNG files that appear whole or not at all.
#ifndef TOOLS_PNG_WRITE_H
#define TOOLS_PNG_WRITE_H

#include <cstdint>
#include <string>
#include <vector>

struct picture {
    int width = 0, height = 0;
    bool bottom_up = false;      // the first row is the lowest
    std::vector<uint8_t> pixels; // RGBA, straight alpha
};

// Throws a failure when a picture could not be written to `file` ("-": standard output), or when it would
// replace `source`.
void check_output(const std::string& file, const std::string& source);

// Writes beside the file and renames. What is no regular file, such as a device, is written to directly.
void write_png(const picture& image, const std::string& file);

#endif
