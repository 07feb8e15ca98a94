// What the tree calls in the render extension, which defines it.
#ifndef SCENE_BINDINGS_H
#define SCENE_BINDINGS_H

#include "scene/group.h"

// Enters a group into the control's map of groups under its name. One without a name, or with an empty one,
// is left out: it has no keys.
void group_store(const char* key, group* g, render_context* context);

// Notes that memory ran out for a part of the model that can be left out of the picture. The frame shows
// the rest; the next one loads the model again.
void load_incomplete(render_context* context);

// Node operation: resets the transform and the deformers from the file's values, or to neutral ones,
// as the control is set up to, then configures the children.
void group_config(void* node, render_context* context);

// The plug-in's diagnostic level, written by init only.
extern int32_t MODEL3D_DIAG_LEVEL;

// Writes a line when `level` is at most the plug-in's diagnostic level, past the host's own filter.
void model3d_diag_log(app_record* app, int32_t level, const char* format, ...) KORA_PRINTF(3, 4);

// Whether model3d_diag_log would write: lets loops skip whole runs of lines.
inline bool model3d_diag_enabled(int32_t level) {
    return level <= MODEL3D_DIAG_LEVEL;
}

// Does nothing: a place to look at matrices from.
inline void model3d_diag_log_matrix(app_record*, int32_t, const char*, const float[16]) {}

#endif
