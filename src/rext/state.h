// What a control keeps: its attributes in internal units, what follows from them, and its model.
#ifndef REXT_STATE_H
#define REXT_STATE_H

#include "model3d/shader.h"
#include "rext/data_keys.h"
#include "scene/scene.h"
#include "shader/shaders.h"
#include "shader/uniform.h"

enum model3d_flag : uint32_t {
    MODEL3D_FLAG_DEFAULTS_SET = 1u << 0,
    MODEL3D_FLAG_UPDATED = 1u << 1,        // a dirty check found a change that is not drawn yet
    MODEL3D_FLAG_DIRTY_DEFORMER = 1u << 2, // a bound value changed
    MODEL3D_FLAG_CONFIG_CHANGED = 1u << 3  // the groups must be configured again
};

enum lighting : int32_t { lighting_internal, lighting_model };
enum camera : int32_t { camera_legacy, camera_fly, camera_orbit };
enum culling : int32_t { culling_off, culling_back };

// The keys of one group's bindings, in their order, as places in binding_keys::texts.
struct bound_group {
    const group* owner;
    const char* name; // the group's own
    struct {
        int32_t name; // relative to the control
        int32_t key;  // the data manager's
    } keys[bindings_per_group];
};

// The keys of all groups, in the map's order. Stored when a model's values are read for the first time, so
// that later checks only look values up. Empty when there was no memory for them.
struct binding_keys {
    const control_record* control; // that they belong to
    bound_group* groups;           // owned
    char* texts;                   // owned
    int32_t count;
    int32_t capacity;
    int32_t text_size;
    int32_t text_capacity;
    bool is_complete; // the first walk is over, or memory ran out in it
};

// The matrices of the segment drawn last.
struct segment_transform {
    const shader_program* program; // that they were sent to last in this frame, or null
    float combined[16];            // the mesh's, in the scene
    float model_local[16];
    float normal_model_local[9];
};

// Zero-filled by the host before anything else. Angles in radians unless a name says degrees.
struct model3d_state {
    char* filename; // owned
    uint32_t flags; // model3d_flag
    float projection[16];
    float view[16];
    float camera_position[3];
    float azimuth;
    float elevation;
    float clip_near; // both clip distances 0: automatic
    float clip_far;
    float fovy_deg;
    float model[16];
    float model_position[3];
    float model_orientation[3]; // phi, theta, psi: about x, y, z
    float light_direction[3];   // towards the internal light
    float light_azimuth;
    float light_elevation;
    float light_intensity;
    ::scene scene;
    shader_program* programs[builtin_shader_count]; // valid while a frame is drawn
    int32_t loaded;                                 // the scene is the file's, and uploaded
    int32_t shading_model;                          // place in `shadings` (rext/shading.h)
    int32_t lighting_mode;
    int32_t camera_mode;
    int32_t culling_mode;
    float alpha; // of the whole control, 0 to 1
    float ambient;
    float lightness;
    int32_t ignore_bind_transforms;
    int32_t zero_deformers;
    kor_string_map* groups; // name to group
    uint32_t context;       // that the scene was uploaded into
    int32_t incomplete;     // memory was short when the scene was loaded: load it again
    binding_keys keys;
    // Valid while a frame is drawn.
    uniform_table uniforms[builtin_shader_count];
    segment_transform last_segment;
};

// Process-wide setting, written by init only; another is MODEL3D_DIAG_LEVEL (scene/bindings.h).
extern int32_t MODEL3D_GLOBAL_USE_VBOS;

inline model3d_state* state_of(const renderext_instance* rext) {
    return static_cast<model3d_state*>(rext->state);
}

// Applies the first-use defaults, once.
void set_defaults(model3d_state* state);

// Gives the model back; the next frame loads it again.
void unload_model(model3d_state* state);

#endif
