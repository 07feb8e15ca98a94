/* A stranger's program: links the host library, loads the plug-in whose path it is given. */
#include "kora/host.h"
#include "model3d/math.h"
#include "model3d/model3d.h"
#include "model3d/shader.h"

#include <stdio.h>

int main(int argc, char** argv) {
    kora_app* app = kora_app_create();
    if (argc != 2 || !app) return 2;
    if (!kora_app_load_plugin(app, argv[1], NULL)) {
        fprintf(stderr, "%s: %s\n", argv[1], kora_app_error(app));
        return 1;
    }
    const renderext_arg* attributes = kora_app_extension_args(app, "model3d");
    float identity[16];
    mat_identity(identity);
    const int good = attributes && attributes[0].name && identity[0] == 1.0f && identity[1] == 0.0f;
    kora_app_destroy(app);
    return good ? 0 : 1;
}
