// Where a frame goes: the control's place on a rotated display, or in an off-screen surface.
#ifndef REXT_TARGET_H
#define REXT_TARGET_H

#include "kora/kora.h"

#include <GLES2/gl2.h>

// Sets the GL viewport, the front face for a surface, and out = the projection as the target needs it:
// turned with the display, or flipped for a surface. `size` is the control's, in control coordinates;
// `host_viewport` what GL had before, whose size is the target's.
void target_place(render_canvas* canvas, const control_record* control, const kor_size& size,
                  const GLint host_viewport[4], const float projection[16], float out[16]);

#endif
