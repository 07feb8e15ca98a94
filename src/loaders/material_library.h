// Wavefront MTL material libraries.
#ifndef LOADERS_MATERIAL_LIBRARY_H
#define LOADERS_MATERIAL_LIBRARY_H

#include "loaders/material_table.h"

// Reads a library into the table of materials. Takes the file over. Textures are named relative to
// `directory`. False when memory ran out: a material or texture record that could not be had ended the
// reading, a texture name cost its texture.
bool read_material_library(int fd, const char* directory, material_table* materials);

// The text behind a keyword of six letters and one more character; empty on a line that ends before it.
inline const char* keyword_rest(const char* line) {
    return line[6] ? line + 7 : line + 6;
}

#endif
