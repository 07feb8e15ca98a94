// The render extension's operations, as its descriptor lists them.
#ifndef REXT_MODEL3D_REXT_H
#define REXT_MODEL3D_REXT_H

#include "kora/kora.h"

#include <array>
#include <cstddef>

// The common attributes, the extension's own, and the end; the host may write to it.
constexpr size_t model3d_arg_count = 39;
extern std::array<renderext_arg, model3d_arg_count> renderext_model3d_args;

void renderext_model3d_parse(int32_t id, const void* value, renderext_instance* rext);
int renderext_model3d_render(render_canvas* canvas, control_record* control, renderext_instance* rext);
int renderext_model3d_realize(realize_context* context, void* ignored, renderext_instance* rext);
int renderext_model3d_unrealize(realize_context* context, void* ignored, renderext_instance* rext);
int renderext_model3d_copy(renderext_instance* dst, renderext_instance* src);
int renderext_model3d_free(renderext_instance* rext);
int renderext_model3d_dirty(void* ignored0, void* ignored1, renderext_instance* rext);

// Listener of "kora.presleep"; `rext` is the renderext_instance.
int renderext_model3d_presleep(void* host0, void* host1, void* rext);

// The GL context goes away: drops a loaded model.
int renderext_model3d_cleanup(renderext_instance* rext);

#endif
