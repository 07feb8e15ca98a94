// The commands of qelf, and model3d info, on scene files and on models that are their own material library.
//   fuzz_tools -dict=fuzz/scene.dict CORPUS SEEDS/scene SEEDS/obj tests/crashers
#include "common/report.h"
#include "fuzz.h"
#include "model3d/info.h"
#include "qelf/commands.h"

#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

const char* const program_name = "fuzz";

namespace {

// A folder in memory, where there is one. It goes with every input, since fuzzers end without clearing up.
struct folder {
    folder() {
        char name[] = "/dev/shm/fuzz-XXXXXX", other[] = "/tmp/fuzz-XXXXXX";
        const char* const made = mkdtemp(name) ? name : mkdtemp(other);
        require(made, "there is a place for files");
        path = made;
    }
    ~folder() { std::filesystem::remove_all(path); }
    std::string path;
};

// Whether the command found nothing wrong. What it says goes nowhere.
template <class Command> bool done(Command command) {
    static FILE* const nowhere = fopen("/dev/null", "w");
    FILE *const out = stdout, *const errors = stderr;
    stdout = stderr = nowhere;
    int code = exit_failed;
    try {
        code = command();
    } catch (const failure&) {
    }
    stdout = out;
    stderr = errors;
    return code == exit_done;
}

std::string contents(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const folder files;
    const bool model = size == 0 || strchr("#vfmu", data[0]);
    const std::string in = files.path + (model ? "/in.obj" : "/in.qel"), out = files.path + "/out.qel";
    const std::string again = files.path + "/again.qel", welded = files.path + "/welded.qel";
    std::ofstream(in, std::ios::binary)
        << (model ? "mtllib in.obj\n" : "") << std::string(reinterpret_cast<const char*>(data), size);

    const bool valid = !model && done([&] { return run_check(in, true); });
    if (!model) done([&] { return run_scene_info(in, false); });
    const bool loads = done([&] { return run_info(in, false), 0; });
    const bool converted = done([&] { return run_convert(in, out, false); });
    const bool form = size > 12 && memcmp(data, "FORM", 4) == 0 && memcmp(data + 8, "QELF", 4) == 0;
    require(loads || !valid || !form, "what is valid loads"); // in other containers the loader does not look
    require(converted || !(model ? loads : valid), "what is valid converts");
    if (!converted) return 0;
    // Sizes that do not fit what is there are put right, and so not copied.
    require(!valid || done([&] { return run_compare(in, out); }), "the copy of a scene is equal");
    require(!valid || done([&] { return run_check(out, false); }), "and as valid");
    require(!loads || done([&] { return run_info(out, true), 0; }),
            "what loads does so when it is converted");
    require(done([&] { return run_convert(out, again, false); }) && contents(out) == contents(again),
            "the same scene, the same bytes");
    const bool merged = done([&] { return run_convert(out, welded, true); });
    require(merged || !valid, "a valid scene can be welded");
    if (!merged) return 0;
    require(!valid || done([&] { return run_check(welded, false); }), "a welded scene is as valid");
    done([&] { return run_compare(out, welded); });
    return 0;
}
