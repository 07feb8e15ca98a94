// The picture that stands in for an image that could not be loaded.
#ifndef SCENE_FALLBACK_TEXTURE_H
#define SCENE_FALLBACK_TEXTURE_H

#include <cstddef>
#include <cstdint>

constexpr int32_t fallback_tex_rgba_width = 512;
constexpr int32_t fallback_tex_rgba_height = 512;
constexpr size_t fallback_tex_rgba_len = 1048576;

// 8-bit RGBA, row by row, the top row first.
extern const void* const fallback_tex_rgba;

#endif
