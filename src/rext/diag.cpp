#include "rext/state.h"
#include "scene/bindings.h"

bool model3d_diag_enabled(int32_t level) {
    return level <= MODEL3D_DIAG_LEVEL;
}

void model3d_diag_log(app_record* app, int32_t level, const char* format, ...) {
    if (!model3d_diag_enabled(level)) return;
    va_list args;
    va_start(args, format);
    kora_app_vlog(app, -1, format, args); // a negative level passes the host's filter
    va_end(args);
}

void model3d_diag_log_matrix(app_record*, int32_t, const char*, const float[16]) {}
