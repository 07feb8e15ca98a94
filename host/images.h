// The "image" pool and its description for extensions.
#ifndef HOST_IMAGES_H
#define HOST_IMAGES_H

#include "paths.h"
#include "resources.h"

#include "kora/host.h"

#include <vector>

// Whether pictures are handed over in buffers whose sides are powers of two.
struct padding_choice {
    kora_npot_mode mode = KORA_NPOT_AUTO;
    int driver = -1; // what the driver said: 1 pad, 0 do not, -1 not asked yet

    // `libraries` are searched for GL when the program itself does not show it.
    bool wanted(const std::vector<void*>& libraries);
};

struct graphics_service : graphics_manager {
    graphics_service();
};

struct image_source {
    const path_finder* paths;
    const std::vector<void*>* libraries;
    padding_choice padding;
};

// `source` must outlive the pool.
bool images_create_pool(resource_service& resources, image_source* source);

#endif
