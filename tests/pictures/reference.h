// An independent renderer in double precision, written from the lighting, placement and blending formulas
// alone. It shares no code with the plug-in and does every pixel on its own.
#ifndef TESTS_PICTURES_REFERENCE_H
#define TESTS_PICTURES_REFERENCE_H

#include "kora/host.h"
#include "model.h"

#include <map>
#include <string>

namespace pictures {

// One frame of one control.
struct scene {
    model content;
    const char* file = "model.obj";                // the kind of file to write the model as
    std::map<std::string, std::string> attributes; // of the control, without its file name
    int width = 128, height = 96;                  // of the framebuffer
    kor_rect control{0, 0, 128, 96};               // the control's rectangle in its own coordinates
    kora_target target{0, 0, 0, 0, 1, 1, 0, 0, 0};
    rgba background{40, 60, 90, 64};
    kora_npot_mode npot = KORA_NPOT_NEVER;
};

// Textures repeat and are filtered between four texels; a map without a file is the caller's business.
image reference_render(const scene& s);

} // namespace pictures

#endif
