// One frame of one control.

#include "loaders/load_scene.h"
#include "model3d/math.h"
#include "rext/bindings.h"
#include "rext/model3d_rext.h"
#include "rext/placement.h"
#include "rext/shading.h"
#include "rext/target.h"
#include "shader/cache.h"
#include "shader/context.h"

#include <GLES2/gl2.h>

#include <cstring>

namespace {

// References to the six programs, for one frame.
struct shader_refs {
    resource_manager* resources;
    kora_reference* refs[builtin_shader_count];

    void release() {
        for (kora_reference*& ref : refs) {
            if (ref) resources->release(resources, ref);
            ref = nullptr;
        }
    }
};

// Tells the host's timing hook about phases; takes no time stamp without one.
class phase_timer {
  public:
    explicit phase_timer(app_record* app) : app_(app) {}

    void start() {
        if (app_->timing_hook) start_ = kor_snapshot_time();
    }
    void stop(const char* label) const {
        if (!app_->timing_hook) return;
        const auto elapsed = static_cast<int64_t>(kor_snapshot_time() - start_);
        app_->timing_hook(app_, "lum_RenderExtension", "render", label, elapsed);
    }

  private:
    app_record* app_;
    uint64_t start_ = 0;
};

// Gets the programs and their records; on failure says why, holds nothing and returns false.
bool acquire_shaders(app_record* app, model3d_state* state, shader_refs* shaders) {
    constexpr int required = 4; // a missing flat program is noticed below, with the missing records
    for (int i = 0; i < builtin_shader_count; ++i) {
        shaders->refs[i] = renderext_model3d_get_shader_ref(shaders->resources, &model3d_shaders[i]);
        if (shaders->refs[i] || i >= required) continue;
        kora_app_log(app, 0, "model3d: could not get a required shader: %s", model3d_shaders[i].name);
        shaders->release();
        return false;
    }
    bool complete = true;
    for (int i = 0; i < builtin_shader_count; ++i) {
        kora_reference* const ref = shaders->refs[i];
        void* const data = ref ? shaders->resources->get_data(shaders->resources, ref) : nullptr;
        auto* const program = static_cast<shader_program*>(data);
        state->programs[i] = program;
        if (!program || !program_renew(app, program, &model3d_shaders[i])) {
            complete = false;
            continue;
        }
        const program_record* const own = program_record_find(program);
        state->uniforms[i] = {program, own ? own->builtin : no_uniforms};
    }
    if (!complete) {
        shaders->release();
        kora_app_log(app, 0, "model3d: could not get shader metadata, can't draw 3D content");
    }
    return complete;
}

// Loads the state's file and notes what memory was too short for.
int load_file(app_record* app, model3d_state* state) {
    const name_ending ending = ending_of(state->filename);
    if (ending.text[0] && format_of(ending) == model_format::unknown) {
        kora_app_log(app, 0, "model3d: unsupported format: %s", ending.text);
    }
    load_context context = {app->services->resource, false};
    const int loaded = load_scene(&state->scene, state->filename, &context);
    state->incomplete = context.incomplete;
    return loaded;
}

bool load_model(app_record* app, render_context* context) {
    model3d_state* const state = context->state;
    phase_timer timer(app);
    timer.start();
    groups_renew(state);
    if (!load_file(app, state)) {
        kora_app_log(app, 1, "model3d: could not load model: %s", state->filename);
        return false;
    }
    state->context = gl_context;
    group_load(&state->scene.root, MODEL3D_GLOBAL_USE_VBOS, context);
    update_modelmat(state);
    update_viewmat(state);
    update_light_direction(state);
    group_config(&state->scene.root, context);
    group_update(context);
    state->loaded = 1;
    ++gl_models;
    timer.stop("model3d: load model");
    return true;
}

void trace_parameters(app_record* app, const model3d_state* s) {
    if (!model3d_diag_enabled(6)) return;
    const auto trace3 = [app](const char* format, float a, float b, float c) {
        model3d_diag_log(app, 6, format, double{a}, double{b}, double{c});
    };
    model3d_diag_log(app, 6, "shading model: %d", s->shading_model);
    model3d_diag_log(app, 6, "using scene lighting?: %d", s->lighting_mode);
    trace3("light az el int: %f %f %f", s->light_azimuth, s->light_elevation, s->light_intensity);
    trace3("light direction: %f %f %f", s->light_direction[0], s->light_direction[1], s->light_direction[2]);
    model3d_diag_log(app, 6, "camera mode: %d", s->camera_mode);
    trace3("camera pos: %f %f %f", s->camera_position[0], s->camera_position[1], s->camera_position[2]);
    trace3("camera az el fov: %f %f %f", s->azimuth, s->elevation, s->fovy_deg);
    trace3("model pos: %f %f %f", s->model_position[0], s->model_position[1], s->model_position[2]);
    trace3("model orient: %f %f %f", s->model_orientation[0], s->model_orientation[1],
           s->model_orientation[2]);
    trace3("global alpha amb lit: %f %f %f", s->alpha, s->ambient, s->lightness);
    model3d_diag_log(app, 6, "culling mode: %d", s->culling_mode);
}

// Sets the state for the frame; returns the host's front-face mode.
GLint set_gl_state(const model3d_state* state) {
    glDepthMask(GL_TRUE); // the mask also guards the clear
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    GLint front_face = GL_CCW;
    glGetIntegerv(GL_FRONT_FACE, &front_face);
    glFrontFace(GL_CCW);
    if (state->culling_mode == culling_back) glEnable(GL_CULL_FACE);
    return front_face;
}

void send_global_uniforms(const model3d_state* state, const shading_row& row, const float proj_view[16]) {
    model3d_diag_log(nullptr, 6, "initializing global uniforms for %s shading model", row.keyword);
    const uniform_table* const both[] = {&state->uniforms[row.programs[0]],
                                         &state->uniforms[row.programs[1]]};
    for (const uniform_table* program : both) {
        glUseProgram(program->program->program);
        uniform_set(*program, uniform_proj_view, proj_view);
        if (row.is_lit) uniform_set(*program, uniform_camera_pos, state->camera_position);
        uniform_set(*program, uniform_lightness, &state->lightness);
        uniform_set(*program, uniform_ambient_factor, &state->ambient);
    }
    const GLint unit = 0;
    uniform_set(*both[1], uniform_diffuse_sampler, &unit);
}

void send_lights(const model3d_state* state, const shading_row& row) {
    const uniform_table* const both[] = {&state->uniforms[row.programs[0]],
                                         &state->uniforms[row.programs[1]]};
    if (state->lighting_mode == lighting_internal) {
        model3d_diag_log(nullptr, 6, "rendering with internal lighting");
        for (const uniform_table* program : both) {
            set_internal_light_uniforms(*program, &state->scene, state->light_direction,
                                        state->light_intensity);
        }
    } else {
        model3d_diag_log(nullptr, 6, "rendering with model-specified lighting");
        for (const uniform_table* program : both) {
            set_scene_light_uniforms(*program, &state->scene);
        }
    }
}

void draw(app_record* app, render_canvas* canvas, render_context* context, uint32_t alpha,
          shader_refs* shaders) {
    model3d_state* const state = context->state;
    control_record* const control = context->control;
    trace_parameters(app, state);

    const GLint front_face = set_gl_state(state);
    kor_size size = {};
    kor_rect_to_size(&control->rect, &size);
    model3d_diag_log(app, 6, "culling mode: %d", state->culling_mode);
    update_camera(state, size.width, size.height);
    state->alpha = static_cast<float>(static_cast<double>(alpha) / 255.0);

    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    float projection[16];
    target_place(canvas, control, size, viewport, state->projection, projection);
    model3d_diag_log_matrix(app, 5, "model matrix", state->model);
    model3d_diag_log_matrix(app, 5, "view matrix", state->view);
    model3d_diag_log_matrix(app, 5, "projection matrix", projection);
    if (state->flags & MODEL3D_FLAG_CONFIG_CHANGED) {
        group_config(&state->scene.root, context);
        group_update(context);
        state->flags &= ~static_cast<uint32_t>(MODEL3D_FLAG_CONFIG_CHANGED);
    }

    phase_timer timer(app);
    timer.start();
    float proj_view[16];
    mat_mul(projection, state->view, proj_view);
    model3d_diag_log(app, 5, "shading model: %d", state->shading_model);
    const shading_row* const row = shading_of(state);
    if (row) send_global_uniforms(state, *row, proj_view);
    timer.stop("model3d: global uniforms");

    timer.start();
    float identity[16];
    mat_identity(identity);
    group_prerender(&state->scene.root, 0, identity, state);
    if (row && row->is_lit) send_lights(state, *row);
    timer.stop("model3d: pre-render light calc and config");

    timer.start();
    state->last_segment.program = nullptr;
    group_render(&state->scene.root, rendercb, identity, state);
    timer.stop("model3d: render scene graph");
    state->flags &= ~static_cast<uint32_t>(MODEL3D_FLAG_UPDATED | MODEL3D_FLAG_DIRTY_DEFORMER);

    shaders->release();
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glFrontFace(static_cast<GLenum>(front_face));
    glDepthMask(GL_FALSE);
}

} // namespace

int renderext_model3d_render(render_canvas* canvas, control_record* control, renderext_instance* rext) {
    model3d_state* const state = state_of(rext);
    if (!state->filename) return 0;

    gl_context_check();
    app_record* const app = control->app;
    shader_refs shaders;
    shaders.resources = app->services->resource;
    memset(shaders.refs, 0, sizeof(shaders.refs));
    if (!acquire_shaders(app, state, &shaders)) return 0;
    if (state->loaded && state->context != gl_context) renderext_model3d_cleanup(rext);
    render_context context = {state, control};
    if (state->incomplete) unload_model(state);
    if (state->loaded || load_model(app, &context)) draw(app, canvas, &context, rext->alpha, &shaders);
    shaders.release(); // what a failed load left
    return 0;
}
