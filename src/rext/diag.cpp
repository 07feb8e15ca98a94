#include "scene/bindings.h"

void model3d_diag_log(app_record* app, int32_t level, const char* format, ...) {
    if (!model3d_diag_enabled(level)) return;
    va_list args;
    va_start(args, format);
    kora_app_vlog(app, -1, format, args); // a negative level passes the host's filter
    va_end(args);
}
