// The plug-in's entry, the descriptor and the life of a control.

#include "rext/model3d_rext.h"

#include "base/heap.h"
#include "model3d/model3d.h"
#include "rext/bindings.h"
#include "rext/state.h"
#include "scene/bindings.h"
#include "shader/context.h"

int32_t MODEL3D_GLOBAL_USE_VBOS = 1;
int32_t MODEL3D_DIAG_LEVEL = 0;

renderext_descriptor renderext_model3d_handler = {
    "model3d",
    sizeof(model3d_state),
    renderext_model3d_args.data(),
    renderext_model3d_parse,
    renderext_model3d_render,
    renderext_model3d_realize,
    renderext_model3d_unrealize,
    renderext_model3d_copy,
    renderext_model3d_free,
    renderext_model3d_dirty,
    nullptr,
};

int kora_plugin_create(plugin_record* record) {
    *record = {};
    record->name = heap_text("model3d");
    record->init = rext_model3d_init;
    record->fini = rext_model3d_fini;
    record->constants[0] = 4;
    record->constants[1] = 2;
    record->constants[2] = 1;
    record->constants[3] = 0x544C;
    return 0;
}

int rext_model3d_init(app_record* app, const char* options) {
    renderext_manager* const extensions = app->services->renderext;
    if (extensions) extensions->register_extension(extensions, &renderext_model3d_handler);
    MODEL3D_GLOBAL_USE_VBOS = 1;
    if (!options) return 0;
    if (strstr(options, "novbo")) MODEL3D_GLOBAL_USE_VBOS = 0;
    if (const char* diag = strstr(options, "diag")) {
        // The number follows one separator of any kind; "diag" may also end the text.
        MODEL3D_DIAG_LEVEL = diag[4] ? atoi(diag + 5) : 0;
        kora_app_log(app, 2, "model3d: enabling 3D diagnostic mode, level: %d", MODEL3D_DIAG_LEVEL);
    }
    return 0;
}

void rext_model3d_fini(void) {}

void unload_model(model3d_state* state) {
    if (state->loaded) {
        gl_context_check();
        --gl_models;
    }
    scene_free(&state->scene);
    state->loaded = 0;
    state->incomplete = 0;
}

void load_incomplete(render_context* context) {
    context->state->incomplete = 1;
}

int renderext_model3d_realize(realize_context* context, void*, renderext_instance* rext) {
    set_defaults(state_of(rext));
    event_manager* const events = context->app->services->event;
    if (events) events->add_listener(events, "kora.presleep", renderext_model3d_presleep, rext);
    return 0;
}

int renderext_model3d_unrealize(realize_context*, void*, renderext_instance*) {
    return 0;
}

int renderext_model3d_copy(renderext_instance* dst, renderext_instance* src) {
    if (dst == src) return 0;
    renderext_model3d_free(dst);
    model3d_state* const to = state_of(dst);
    *to = *state_of(src);
    // The copy loads a scene of its own.
    to->scene = {};
    to->groups = nullptr;
    to->keys = {};
    memset(to->programs, 0, sizeof(to->programs));
    to->filename = heap_text(to->filename);
    to->loaded = 0;
    return 0;
}

int renderext_model3d_free(renderext_instance* rext) {
    model3d_state* const state = state_of(rext);
    groups_free(state);
    if (!state->filename) return 0;
    heap_clear(state->filename);
    unload_model(state);
    return 0;
}

int renderext_model3d_presleep(void*, void*, void* rext) {
    return renderext_model3d_cleanup(static_cast<renderext_instance*>(rext));
}

int renderext_model3d_cleanup(renderext_instance* rext) {
    model3d_state* const state = state_of(rext);
    if (!state->loaded) return 0;
    kora_app_log(nullptr, 2, "model3d: context disappeared, reloading.");
    unload_model(state);
    return 0;
}
