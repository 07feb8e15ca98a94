#include "render.h"

#include "attributes.h"
#include "common/json.h"
#include "common/model.h"
#include "common/output_file.h"
#include "common/report.h"
#include "gl.h"
#include "plugin.h"
#include "png_write.h"

#include <algorithm>
#include <memory>

namespace {

// The host's log, on standard error. The plug-in's render operation always succeeds: what it logs tells
// whether the frame was drawn.
class log_watch {
  public:
    explicit log_watch(int verbosity) {
        constexpr int levels[] = {2, 5, 9};
        kora_log_set_level(levels[std::clamp(verbosity, 0, 2)]);
        kora_log_set_callback(on_line, this);
    }
    ~log_watch() { kora_log_set_callback(nullptr, nullptr); }
    log_watch(const log_watch&) = delete;
    log_watch& operator=(const log_watch&) = delete;

    // Why the frame was not drawn; empty when it was.
    const std::string& cause() const { return cause_; }

  private:
    static void on_line(int level, const char* text, void* user) {
        std::string_view line(text);
        constexpr std::string_view prefix = "model3d: ";
        if (line.substr(0, prefix.size()) == prefix) line.remove_prefix(prefix.size());
        const bool load_failed = level == 1 && line.find("could not load model") != line.npos;
        auto* self = static_cast<log_watch*>(user);
        if ((level == 0 || load_failed) && self->cause_.empty()) {
            self->cause_ = line; // reported by main, with the file's name
        } else {
            notice(line);
        }
    }

    std::string cause_;
};

// How long the phases of all frames took, in the order they first ended.
struct phase_times {
    std::string label;
    int64_t count = 0, total_ns = 0, min_ns = INT64_MAX, max_ns = 0;
};
std::vector<phase_times> timings;

void on_timing(app_record*, const char*, const char*, const char* label, int64_t elapsed_ns) {
    auto phase =
        std::find_if(timings.begin(), timings.end(), [&](const auto& t) { return t.label == label; });
    if (phase == timings.end()) phase = timings.insert(timings.end(), {.label = label});
    ++phase->count;
    phase->total_ns += elapsed_ns;
    phase->min_ns = std::min(phase->min_ns, elapsed_ns);
    phase->max_ns = std::max(phase->max_ns, elapsed_ns);
}

struct destroy_control {
    void operator()(kora_control* control) const { kora_control_destroy(control); }
};
using control_handle = std::unique_ptr<kora_control, destroy_control>;

control_handle make_control(const host_app& host, const render_options& options, float radius) {
    control_handle control(
        kora_control_create(host.get(), nullptr, "model3d", 0, 0, options.width, options.height));
    if (!control) throw failure(exit_failed, std::string("cannot draw: ") + kora_app_error(host.get()));
    if (!kora_control_set(control.get(), "filename", options.file.c_str())) {
        throw failure(exit_failed, options.file + ": " + kora_app_error(host.get()));
    }
    for (const auto& [name, value] : options.attributes) {
        if (!kora_control_set(control.get(), name.c_str(), value.c_str())) {
            throw failure(exit_usage, "--set " + name + "=" + value + ": " + kora_app_error(host.get()));
        }
    }
    if (options.raw) {
        default_field_of_view(host, control.get(), options.attributes);
    } else {
        frame_model(host, control.get(), options.attributes, radius);
    }
    return control;
}

void check_size(const gl_context& context, const render_options& options) {
    if (std::max(options.width, options.height) > context.max_size) {
        const std::string limit = std::to_string(context.max_size);
        throw failure(exit_usage, "--size: this driver draws pictures of at most " + limit + "x" + limit);
    }
}

int allowed_samples(const gl_context& context, int wanted) {
    if (wanted <= context.max_samples) return wanted;
    notice("this driver has " +
           (context.max_samples > 1 ? "at most " + std::to_string(context.max_samples) + " samples a pixel"
                                    : std::string("no multisampling")) +
           ": drawing with " + std::to_string(context.max_samples));
    return context.max_samples;
}

void set_target(const host_app& host, const render_options& options) {
    kora_target target{};
    target.scale_x = target.scale_y = 1;
    target.is_surface = options.surface;
    target.has_display_info = options.rotation_deg != 0;
    target.rotation_deg = options.rotation_deg;
    kora_app_set_target(host.get(), &target);
}

// Blending leaves colours multiplied by alpha; PNG has them straight.
void straighten(std::vector<uint8_t>& pixels) {
    for (size_t i = 0; i < pixels.size(); i += 4) {
        const unsigned alpha = pixels[i + 3];
        for (size_t k = i; alpha != 0 && k < i + 3; ++k) {
            pixels[k] = static_cast<uint8_t>(std::min(255u, (pixels[k] * 255u + alpha / 2) / alpha));
        }
    }
}

picture draw(const gl_context& context, const framebuffer& target, kora_control* control,
             const log_watch& log, const render_options& options) {
    const bool premultiplied = !options.raw && options.background[3] != 255;
    float color[4];
    for (size_t i = 0; i < 4; ++i)
        color[i] = static_cast<float>(options.background[i]) / 255;
    for (size_t i = 0; premultiplied && i < 3; ++i)
        color[i] *= color[3];

    for (int frame = 0; frame < options.frames && log.cause().empty(); ++frame) {
        target.begin(color);
        kora_control_render(control);
        context.gl.Finish();
    }
    if (!log.cause().empty()) throw failure(exit_failed, options.file + ": was not drawn: " + log.cause());

    picture result{target.width(), target.height(), !options.surface, target.read()};
    if (const GLenum error = context.gl.GetError(); error != GL_NO_ERROR) {
        char code[16];
        snprintf(code, sizeof code, "0x%04x", error);
        throw failure(exit_failed, options.file + ": was not drawn: GL error " + code);
    }
    if (premultiplied) straighten(result.pixels);
    return result;
}

json describe(const render_options& options, const gl_context& context, const framebuffer& target,
              const model_counts& counts, float radius, const missing_list& missing) {
    json times = json::object();
    for (const phase_times& phase : timings) {
        const auto us = [](int64_t ns) { return static_cast<double>(ns) / 1000; };
        times[phase.label] = {{"count", phase.count},
                              {"total_us", us(phase.total_ns)},
                              {"min_us", us(phase.min_ns)},
                              {"max_us", us(phase.max_ns)}};
    }
    return {{"file", options.file},
            {"output", options.output},
            {"width", target.width()},
            {"height", target.height()},
            {"samples", target.samples()},
            {"frames", options.frames},
            {"gl_renderer", context.text(GL_RENDERER)},
            {"gl_version", context.text(GL_VERSION)},
            {"model",
             {{"vertices", counts.vertices},
              {"faces", counts.faces},
              {"segments", counts.segments},
              {"materials", counts.materials},
              {"textures", counts.textures},
              {"radius", json_float(radius)}}},
            {"missing", json_missing(missing.entries())},
            {"timings", times}};
}

} // namespace

void run_render(const render_options& options) {
    if (!options.attributes.empty()) check_attributes(options.attributes);

    missing_list missing;
    input_files inputs;
    model_counts counts;
    float radius = 0;
    inputs.add(plugin_path());
    {
        const host_app host = make_host(missing, &inputs);
        const model loaded(host, options.file);
        inputs.add(loaded.textures());
        counts = loaded.counts();
        radius = loaded.radius();
    }
    if (counts.faces == 0) notice(options.file + ": no triangles: the picture shows the background only");
    check_output(options.output, inputs);

    const gl_context context;
    check_size(context, options);
    const log_watch log(options.verbosity);
    const host_app host = make_host(missing, &inputs); // goes while the context is still there
    load_plugin(host, options.plugin_option.empty() ? nullptr : options.plugin_option.c_str(), "cannot draw");
    kora_app_set_image_limits(host.get(), options.image_limit_mib << 20, options.image_budget_mib << 20);
    set_target(host, options);
    if (options.json) kora_app_set_timing_hook(host.get(), on_timing);
    for (const auto& [key, value] : options.data)
        kora_app_set_data(host.get(), key.c_str(), value);

    const control_handle control = make_control(host, options, radius);
    const bool upright = options.rotation_deg % 180 == 0;
    const framebuffer target(context, upright ? options.width : options.height,
                             upright ? options.height : options.width,
                             allowed_samples(context, options.samples));
    const picture image = draw(context, target, control.get(), log, options);
    missing.report();
    write_png(image, options.output, inputs);
    if (options.json) print_json(describe(options, context, target, counts, radius, missing));
}
