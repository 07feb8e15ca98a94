// model3d render: a picture of a model, drawn by the plug-in in our host, without a display.
#ifndef TOOLS_MODEL3D_RENDER_H
#define TOOLS_MODEL3D_RENDER_H

#include "framing.h"
#include "kora/host.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// Opaque, and dark enough for light models, light enough for dark ones.
constexpr std::array<uint8_t, 4> default_background{0x2b, 0x33, 0x3d, 0xff};

struct render_options {
    std::string file;
    std::string output; // "-": standard output
    int width = 640, height = 480;
    attribute_values attributes;
    std::vector<std::pair<std::string, float>> data;
    std::array<uint8_t, 4> background = default_background; // straight RGBA
    int rotation_deg = 0;
    bool surface = false;
    int samples = 4;
    int frames = 1;
    size_t image_limit_mib = KORA_IMAGE_LIMIT >> 20, image_budget_mib = KORA_IMAGE_BUDGET >> 20;
    std::string plugin_option;
    bool raw = false;
    bool json = false;
    int verbosity = 0; // 0 to 2
};

void run_render(const render_options& options);

#endif
