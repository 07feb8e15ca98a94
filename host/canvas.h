// The canvas that a render operation asks about its target.
#ifndef HOST_CANVAS_H
#define HOST_CANVAS_H

#include "kora/host.h"

struct target_canvas : render_canvas {
    target_canvas();

    kora_target target{};
};

#endif
