// A plug-in that notes every call in a journal for the tests.
#include "kora/kora.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED char fake_journal[65536];
char fake_journal[65536];

namespace {

KORA_PRINTF(1, 2) int note(const char* format, ...) {
    const size_t used = strlen(fake_journal);
    va_list args;
    va_start(args, format);
    vsnprintf(fake_journal + used, sizeof fake_journal - used, format, args);
    va_end(args);
    return 0;
}

struct fake_state {
    const renderext_instance* realized_for;
    float shown;
};

fake_state& state_of(renderext_instance* rext) {
    return *static_cast<fake_state*>(rext->state);
}

constexpr renderext_arg args[] = {{0, "x", "4s1"},      {1, "y", "4s1"},        {2, "width", "4u1"},
                                  {3, "height", "4u1"}, {9, "alpha", "4u1"},    {12, "whole", "4s1"},
                                  {13, "real", "4f1"},  {14, "natural", "4u1"}, {15, "text", "1s0"},
                                  {16, "odd", "2s3"},   {0, nullptr, nullptr}};

void parse(int32_t id, const void* value, renderext_instance* rext) {
    if (id < 12) kor_renderext_common_parse(id, value, rext);
    if (id == 12) note("whole %d;", *static_cast<const int32_t*>(value));
    if (id == 13) note("real %.9g;", static_cast<double>(*static_cast<const float*>(value)));
    if (id == 14) note("natural %u;", *static_cast<const uint32_t*>(value));
    if (id == 15) note("text %s;", static_cast<const char*>(value));
}

int realize(realize_context* context, void*, renderext_instance* rext) {
    state_of(rext).realized_for = rext;
    // The state as user data: the host has to know by itself whose listener this is.
    event_manager* events = context->app->services->event;
    const auto presleep = [](void*, void*, void*) { return note("presleep;"); };
    events->add_listener(events, "kora.presleep", presleep, rext->state);
    return note("realize;");
}

int unrealize(realize_context*, void*, renderext_instance*) {
    return note("unrealize;");
}

int copy(renderext_instance* dst, renderext_instance* src) {
    state_of(dst) = state_of(src);
    return note("copy;");
}

int free_state(renderext_instance* rext) {
    return note("free %s;", state_of(rext).realized_for == rext ? "own" : "foreign");
}

int dirty(void*, void*, renderext_instance* rext) {
    char key[256];
    kor_create_control_data_key(rext->control, "level", key, sizeof key);
    data_manager* data = rext->control->app->services->data;
    const auto* level = static_cast<const float*>(data->get(data, key, 0));
    float& shown = state_of(rext).shown;
    rext->dirty_count += level && *level != shown;
    if (level) shown = *level;
    return 0;
}

int render(render_canvas*, control_record* control, renderext_instance* rext) {
    kor_size size;
    kor_rect_to_size(&control->rect, &size);
    note("render %dx%d alpha %u;", size.width, size.height, rext->alpha);
    resource_manager* resources = control->app->services->resource;
    kora_reference* program = resources->get_reference(resources, "shader", "program", "argument");
    resources->release(resources, program);
    return 0;
}

const renderext_descriptor extension = {"fake", sizeof(fake_state), args,  parse,  render, realize, unrealize,
                                        copy,   free_state,         dirty, nullptr};

kora_reference* make(app_record*, void*, void*, const char* name, va_list rest) {
    note("make %s %s;", name, va_arg(rest, const char*));
    if (strcmp(name, "none") == 0) return nullptr;
    auto* reference = static_cast<kora_reference*>(calloc(1, sizeof(kora_reference)));
    if (reference) reference->data = strdup(name);
    return reference;
}

void discard(void*, void*, void*, kora_reference* reference) {
    note("discard %s;", static_cast<char*>(reference->data));
    free(reference->data);
    free(reference->host_block);
    free(reference);
}

int init(app_record* app, const char* options) {
    note("init %s;", options ? options : "null");
    renderext_manager* extensions = app->services->renderext;
    extensions->register_extension(extensions, &extension);
    return options && strcmp(options, "fail") == 0 ? 3 : 0;
}

void fini() {
    note("fini;");
}

} // namespace

EXPORTED void lum_gl_create_shader_pool(app_record* app, void* pool_parameter) {
    resource_manager* resources = app->services->resource;
    note("pool;");
    resources->create_pool(resources, "shader", pool_parameter, make, discard, 0);
}

EXPORTED void lum_gl_clearprogramcaches() {
    note("clear;");
}

EXPORTED int kora_plugin_create(plugin_record* record) {
    *record = {strdup("fake"), nullptr, init, fini, {}};
    return 0;
}
