// qelf: prints, checks, compares, describes and converts scene files.

#include "commands.h"
#include "common/program.h"
#include "scene_file.h"

const char* const program_name = "qelf";

int run_print(const std::string& file) {
    const scene_file scene(file, exit_usage);
    require_tree(scene);
    for (const std::string& line : scene.reports()) {
        notice(file + ": " + line);
    }
    QELF_print(scene.tree());
    finish_output();
    return exit_done;
}

namespace {

struct command_line {
    static constexpr exit_code no_answer = exit_usage; // not that of an invalid or different file
    CLI::App app{"Prints, checks, compares, describes and converts scene files (.qel)."};
    std::string a, b;
    bool as_json = false, weld = false;

    command_line() {
        app.name("qelf");
        app.set_version_flag("--version", "qelf " MODEL3D_VERSION);
        app.require_subcommand(1);
        app.footer("Exit codes: 0 done, valid or equal; 1 unreadable, not valid or different; 2 wrong usage, "
                   "or no answer:\na file that cannot be opened, or memory is short.\n\nExample:\n  qelf "
                   "convert gauge.obj gauge.qel");
        add("print", "Print everything in a scene file, but for the mesh arrays", "qelf print gauge.qel");
        CLI::App* check =
            add("check", "Check the container and the scene; every finding is a line on standard error",
                "qelf check gauge.qel --json");
        check->add_flag("--json", as_json, "Print the findings as one JSON object, too");
        add("compare", "Compare two scene files and name the first difference",
            "qelf compare old.qel new.qel")
            ->add_option("B", b, "The other scene file")
            ->required();
        CLI::App* info =
            add("info", "Say what is in a scene file, and which data keys move it", "qelf info gauge.qel");
        info->add_flag("--json", as_json, "Print one JSON object. Numbers that are not finite are null");
        CLI::App* convert = add("convert", "Make a scene file from an .obj model, or write a .qel file anew",
                                "qelf convert gauge.obj gauge.qel --weld");
        convert
            ->add_option(
                "OUT", b,
                "The scene file to write, - is standard output; texture paths become relative to its folder")
            ->required()
            ->type_name("OUT.qel");
        convert->add_flag("--weld", weld, "Merge vertices that are the same in everything");
    }

    CLI::App* add(const std::string& name, const std::string& text, const std::string& example) {
        CLI::App* command = app.add_subcommand(name, text);
        command->add_option("FILE", a, "The file")->required();
        command->footer("Example:\n  " + example);
        return command;
    }

    int run() {
        const std::string name = app.get_subcommands().front()->get_name();
        if (name == "print") return run_print(a);
        if (name == "check") return run_check(a, as_json);
        if (name == "compare") return run_compare(a, b);
        if (name == "info") return run_scene_info(a, as_json);
        return run_convert(a, b, weld);
    }
};

} // namespace

int main(int argc, char** argv) {
    return run_program<command_line>(argc, argv, [](command_line& line) { return line.run(); });
}
