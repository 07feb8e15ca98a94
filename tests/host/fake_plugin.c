/* A plug-in that notes every call in a journal for the tests. */
#include "kora/kora.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define EXPORTED __attribute__((visibility("default")))

EXPORTED int kora_plugin_create(plugin_record* record);
EXPORTED void lum_gl_create_shader_pool(app_record* app, void* pool_parameter);
EXPORTED void lum_gl_clearprogramcaches(void);
EXPORTED extern char fake_journal[65536];

char fake_journal[65536];

KORA_PRINTF(1, 2) static void note(const char* format, ...) {
    const size_t used = strlen(fake_journal);
    va_list args;
    va_start(args, format);
    vsnprintf(fake_journal + used, sizeof fake_journal - used, format, args);
    va_end(args);
}

typedef struct fake_state {
    const renderext_instance* realized_for;
    float shown;
} fake_state;

static const renderext_arg args[] = {{0, "x", "4s1"},      {1, "y", "4s1"},        {2, "width", "4u1"},
                                     {3, "height", "4u1"}, {9, "alpha", "4u1"},    {12, "whole", "4s1"},
                                     {13, "real", "4f1"},  {14, "natural", "4u1"}, {15, "text", "1s0"},
                                     {16, "odd", "2s3"},   {0, NULL, NULL}};

static void parse(int32_t id, const void* value, renderext_instance* rext) {
    if (id < 12) kor_renderext_common_parse(id, value, rext);
    if (id == 12) note("whole %d;", *(const int32_t*)value);
    if (id == 13) note("real %.9g;", (double)*(const float*)value);
    if (id == 14) note("natural %u;", *(const uint32_t*)value);
    if (id == 15) note("text %s;", (const char*)value);
}

static int on_presleep(void* host0, void* host1, void* user) {
    (void)host0, (void)host1, (void)user;
    note("presleep;");
    return 0;
}

static int realize(realize_context* context, void* ignored, renderext_instance* rext) {
    (void)ignored;
    fake_state* state = rext->state;
    note("realize;");
    state->realized_for = rext;
    event_manager* events = context->app->services->event;
    /* The state as user data: the host has to know by itself whose listener this is. */
    events->add_listener(events, "kora.presleep", on_presleep, state);
    return 0;
}

static int unrealize(realize_context* context, void* ignored, renderext_instance* rext) {
    (void)context, (void)ignored, (void)rext;
    note("unrealize;");
    return 0;
}

static int copy(renderext_instance* dst, renderext_instance* src) {
    memcpy(dst->state, src->state, sizeof(fake_state));
    note("copy;");
    return 0;
}

static int free_state(renderext_instance* rext) {
    note("free %s;", ((fake_state*)rext->state)->realized_for == rext ? "own" : "foreign");
    return 0;
}

static int dirty(void* ignored0, void* ignored1, renderext_instance* rext) {
    (void)ignored0, (void)ignored1;
    fake_state* state = rext->state;
    char key[256];
    kor_create_control_data_key(rext->control, "level", key, sizeof key);
    data_manager* data = rext->control->app->services->data;
    const float* level = data->get(data, key, 0);
    if (level && *level != state->shown) {
        state->shown = *level;
        ++rext->dirty_count;
    }
    return 0;
}

static int render(render_canvas* canvas, control_record* control, renderext_instance* rext) {
    (void)canvas;
    kor_size size;
    kor_rect_to_size(&control->rect, &size);
    note("render %dx%d alpha %u;", size.width, size.height, rext->alpha);
    resource_manager* resources = control->app->services->resource;
    kora_reference* program = resources->get_reference(resources, "shader", "program", "argument");
    resources->release(resources, program);
    return 0;
}

static const renderext_descriptor extension = {
    "fake", sizeof(fake_state), args, parse, render, realize, unrealize, copy, free_state, dirty, NULL};

static kora_reference* make(app_record* app, void* host0, void* host1, const char* name, va_list rest) {
    (void)app, (void)host0, (void)host1;
    kora_reference* reference = calloc(1, sizeof *reference);
    if (reference) reference->data = reference;
    note("make %s %s;", name, va_arg(rest, const char*));
    return reference;
}

static void discard(void* host0, void* host1, void* host2, kora_reference* reference) {
    (void)host0, (void)host1, (void)host2;
    note("discard;");
    free(reference->host_block);
    free(reference);
}

void lum_gl_create_shader_pool(app_record* app, void* pool_parameter) {
    resource_manager* resources = app->services->resource;
    note("pool;");
    resources->create_pool(resources, "shader", pool_parameter, make, discard, 0);
}

void lum_gl_clearprogramcaches(void) {
    note("clear;");
}

static int init(app_record* app, const char* options) {
    note("init %s;", options ? options : "null");
    renderext_manager* extensions = app->services->renderext;
    extensions->register_extension(extensions, &extension);
    return options && strcmp(options, "fail") == 0 ? 3 : 0;
}

static void fini(void) {
    note("fini;");
}

int kora_plugin_create(plugin_record* record) {
    memset(record, 0, sizeof *record);
    record->name = strdup("fake");
    record->init = init;
    record->fini = fini;
    return 0;
}
