// The commands of model3d and their arguments.

#include "attributes.h"
#include "common/program.h"
#include "info.h"
#include "render.h"

#include <charconv>

const char* const program_name = "model3d";

namespace {

[[noreturn]] void wrong_usage(const std::string& text) {
    throw failure(exit_usage, text);
}

// `base` is for integers only.
template <class T, class... Base> bool parse_whole(std::string_view text, T& value, Base... base) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, base...);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

void parse_size(const std::string& text, render_options& options) {
    const size_t cross = text.find('x');
    const std::string_view whole(text);
    if (cross == text.npos || !parse_whole(whole.substr(0, cross), options.width) ||
        !parse_whole(whole.substr(cross + 1), options.height) || options.width < 1 || options.height < 1) {
        wrong_usage("--size " + text + ": not a size such as 640x480");
    }
}

void parse_background(const std::string& text, render_options& options) {
    std::string_view digits(text);
    if (digits.substr(0, 1) == "#") digits.remove_prefix(1);
    bool good = digits.size() == 6 || digits.size() == 8;
    for (size_t i = 0; good && i < digits.size() / 2; ++i) {
        good = parse_whole(digits.substr(2 * i, 2), options.background[i], 16);
    }
    if (!good) wrong_usage("--background " + text + ": not a colour such as 2b333d or #2b333d80");
    if (digits.size() == 6) options.background[3] = 255;
}

// NAME=VALUE, at the first "=".
std::pair<std::string, std::string> split_setting(const char* option, const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == text.npos || equals == 0)
        wrong_usage(std::string(option) + " " + text + ": has no NAME=VALUE");
    return {text.substr(0, equals), text.substr(equals + 1)};
}

void parse_settings(const std::vector<std::string>& sets, const std::vector<std::string>& data,
                    render_options& options) {
    for (const std::string& text : sets) {
        auto setting = split_setting("--set", text);
        if (setting.first == "filename") wrong_usage("--set filename: the model is given as FILE");
        options.attributes.push_back(std::move(setting));
    }
    for (const std::string& text : data) {
        const auto [key, value] = split_setting("--data", text);
        float number = 0;
        const std::string_view digits(value);
        if (!parse_whole(digits.substr(digits.substr(0, 1) == "+" ? 1 : 0), number)) {
            wrong_usage("--data " + text + ": \"" + value + "\" is not a number");
        }
        options.data.emplace_back(key, number);
    }
}

void check_combinations(const render_options& options) {
    if (options.surface && options.rotation_deg != 0) {
        wrong_usage("--surface and --rotation exclude each other: surfaces are not turned");
    }
    if (options.json && options.output == "-") {
        wrong_usage("--json and -o - exclude each other: both would go to standard output");
    }
}

constexpr const char* render_footer =
    R"(Unless --raw or a camera_position_* is given, the camera looks down -z from where the whole model is
in view, with a field of view of 40 degrees; azimuth and elevation then turn it around the model.
With --raw only the attributes given are set, and camera_field_of_view, to its default, when it is not.

A background that is not opaque gives a picture with straight alpha; with --raw the framebuffer's
bytes, which are multiplied by alpha where the model is transparent, are written as they are.

Log lines and what a model asks for in vain go to standard error.
The plug-in is ../lib/libmodel3d.so beside the program, or the file that MODEL3D_PLUGIN names.

Example:
  model3d render gauge.obj -o gauge.png --size 800x600 --set shading_model=blinn-phong --set azimuth=30)";

struct command_line {
    static constexpr exit_code no_answer = exit_failed;
    CLI::App app{"Draws and inspects models for the model3d render extension, without a display."};
    CLI::App* render = nullptr;
    CLI::App* info = nullptr;
    CLI::App* attributes = nullptr;
    render_options options;
    std::string size, background;
    std::vector<std::string> sets, data;
    std::string info_file;
    bool info_json = false, attributes_json = false;

    command_line() {
        app.name("model3d"); // not the path it was called by
        app.set_version_flag("--version", "model3d " MODEL3D_VERSION);
        app.require_subcommand(1);
        app.footer("Exit codes: 0 done; 1 the file could not be loaded or drawn; 2 wrong usage.\n\n"
                   "Example:\n  model3d render gauge.obj -o gauge.png");
        add_render();

        info = app.add_subcommand("info", "Say what is in a model, and which data keys move it");
        info->add_option("FILE", info_file, "The model")->required();
        info->add_flag("--json", info_json, "Print one JSON object. Numbers that are not finite are null");
        info->footer("Needs no GL. Textures count as found when their file can be read.\n\n"
                     "Example:\n  model3d info gauge.obj --json");

        attributes = app.add_subcommand("attributes", "List the control attributes that --set takes");
        attributes->add_flag("--json", attributes_json, "Print a JSON list");
        attributes->footer("Asks the plug-in, which needs libGLESv2 and libEGL, but no "
                           "display.\n\nExample:\n  model3d attributes");
    }

    void add_render() {
        render = app.add_subcommand("render", "Draw a model into a PNG file");
        // A later option overrides an earlier one, so that scripts can add to a command line.
        render->option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
        const auto list = [&](const char* name, std::vector<std::string>& values, const char* type,
                              const char* text) {
            render->add_option(name, values, text)->allow_extra_args(false)->take_all()->type_name(type);
        };
        render->add_option("FILE", options.file, "The model, an .obj or .qel file")->required();
        render->add_option("-o,--output", options.output, "The picture; - is standard output")
            ->required()
            ->type_name("OUT.png");
        render->add_option("--size", size, "Size of the control in pixels [640x480]")->type_name("WxH");
        list("--set", sets, "NAME=VALUE",
             "Set a control attribute; may be repeated (see model3d attributes)");
        list("--data", data, "KEY=VALUE", "Set a value of the data manager; may be repeated");
        render->add_option("--background", background, "Colour behind the model [2b333d]")
            ->type_name("[#]RRGGBB[AA]");
        render->add_option("--rotation", options.rotation_deg, "Turn of the display, degrees [0]")
            ->check(CLI::IsMember({0, 90, 180, 270}))
            ->type_name("");
        render->add_flag("--surface", options.surface, "Draw as into an off-screen surface, y downwards");
        render->add_option("--samples", options.samples, "Samples a pixel, as far as the driver can [4]")
            ->check(CLI::Range(1, 1024))
            ->type_name("N");
        render->add_option("--frames", options.frames, "Draw N frames and keep the last [1]")
            ->check(CLI::Range(1, 1000000000))
            ->type_name("N");
        const auto mebibytes = [&](const char* name, size_t& value, const char* text) {
            render->add_option(name, value, text)->check(CLI::Range(1, 4095))->type_name("MIB");
        };
        mebibytes("--image-limit", options.image_limit_mib,
                  "Most memory of one decoded picture, in MiB [64]");
        mebibytes("--image-budget", options.image_budget_mib, "Most memory of all textures, in MiB [256]");
        render
            ->add_option("--option", options.plugin_option,
                         "Option text of the plug-in: novbo, diag=5 to diag=9")
            ->type_name("TEXT");
        render->add_flag("--raw", options.raw, "Set nothing that was not asked for; keep the bytes GL drew");
        render->add_flag("--json", options.json, "Print facts of the run and times of its phases as JSON");
        render->add_flag("-v", options.verbosity, "More of the log: -v level 5, -vv level 9");
        render->footer(render_footer);
    }

    void run() {
        if (render->parsed()) {
            if (render->count("--size")) parse_size(size, options);
            if (render->count("--background")) parse_background(background, options);
            parse_settings(sets, data, options);
            check_combinations(options);
            run_render(options);
        } else if (info->parsed()) {
            run_info(info_file, info_json);
        } else {
            run_attributes(attributes_json);
        }
    }
};

} // namespace

int main(int argc, char** argv) {
    return run_program<command_line>(argc, argv, [](command_line& line) {
        line.run();
        return exit_done;
    });
}
