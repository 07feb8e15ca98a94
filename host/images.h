// The "image" pool and its description for extensions. A file is decoded once, whatever names lead to it.
#ifndef HOST_IMAGES_H
#define HOST_IMAGES_H

#include "kora/host.h"
#include "picture.h"
#include "resources.h"

#include <array>
#include <map>
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

// Device, node, size, times of the last change, and whether the picture is padded.
using file_key = std::array<uint64_t, 8>;

struct image_source {
    resource_service* resources;
    const std::vector<void*>* libraries;
    padding_choice padding = {};
    uint64_t picture_bytes = KORA_IMAGE_LIMIT, control_bytes = KORA_IMAGE_BUDGET;
    std::map<file_key, std::weak_ptr<const picture>> decoded = {};
    std::map<file_key, const char*> damaged = {}; // found so in this frame, and why
};

// `source` must outlive the pool.
bool images_create_pool(resource_service& resources, image_source* source);

#endif
