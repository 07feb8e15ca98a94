/* The per-control state as it is documented: fields in this order with natural alignment.
 *
 * Written down a second time on purpose. A host only allocates the record, but tests read stored values
 * from it and hang groups and lights of their own into a loaded scene.
 */
#ifndef TESTS_PLUGIN_DESCRIBED_STATE_H
#define TESTS_PLUGIN_DESCRIBED_STATE_H

#include "kora/kora.h"

#include <cstdint>

namespace described {

enum : uint32_t { defaults_set = 1, updated = 2, dirty_deformer = 4, config_changed = 8 };

struct group {
    char* name;
    float transform[16], bind_transform[16];
    float rotation[3], translation[3], scaling[3];
    float bind_rotation[3], bind_translation[3], bind_scaling[3];
    void* nodes;
    int32_t nnodes, capacity;
    float radius;
};

struct light {
    char* name;
    int32_t type;
    float color[3], intensity, position[3], direction[3];
};

struct scene {
    int32_t ntextures, textures_capacity;
    void** textures;
    int32_t nlights, lights_capacity;
    light** lights;
    int32_t nanimations, animations_capacity;
    void** animations;
    group root;
};

struct state {
    char* filename;
    uint32_t flags;
    float projection[16], view[16];
    float camera_position[3], azimuth, elevation, clip_near, clip_far, field_of_view;
    float model_matrix[16], model_position[3], model_orientation[3];
    float light_direction[3], light_azimuth, light_elevation, light_intensity;
    described::scene scene;
    void* programs[6];
    int32_t loaded;
    int32_t shading_model, lighting_mode, camera_mode, culling_mode;
    float global_alpha, control_ambient, control_lightness;
    int32_t ignore_bind_transforms, zero_deformers;
    kor_string_map* group_map;
};

} // namespace described

#endif
