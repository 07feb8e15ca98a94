// Data bindings: values of the host's data manager move the model's named groups.
#ifndef REXT_BINDINGS_H
#define REXT_BINDINGS_H

#include "scene/bindings.h"

// Replaces the control's map of groups by an empty one.
void groups_renew(model3d_state* state);

// Releases the map and the keys; the groups are the scene's.
void groups_free(model3d_state* state);

// Reads the values of every group in the map; sets MODEL3D_FLAG_DIRTY_DEFORMER on a change.
void group_update(render_context* context);

#endif
