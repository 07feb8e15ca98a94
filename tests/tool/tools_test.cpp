// What no command line brings about: signals, disks and allocations that fail at a given place.
#include "common/output_file.h"
#include "qelf/commands.h"
#include "scarce_heap.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <new>

const char* const program_name = "test";

namespace {

int disk_error;

} // namespace

// Stands in for the library's.
int fsync(int) {
    errno = disk_error;
    return disk_error ? -1 : 0;
}

namespace {

struct tools : testing::Test {
    tools() {
        std::filesystem::create_directory(folder);
        std::filesystem::current_path(folder);
    }
    ~tools() override {
        std::filesystem::current_path("/");
        std::filesystem::remove_all(folder);
    }
    const std::string folder = testing::TempDir() + "tools_" + std::to_string(getpid());
};

// What the command wrote into "out.qel", or why it failed.
std::string outcome(const std::function<int()>& command) {
    try {
        if (command() != exit_done) return "the file is no good";
    } catch (const std::exception& problem) {
        return dynamic_cast<const std::bad_alloc*>(&problem) ? "memory" : problem.what();
    }
    std::ifstream stream("out.qel", std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST_F(tools, leave_no_unfinished_file) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const auto write = [signal](FILE*) { return raise(signal) == 0; };
        EXPECT_EXIT(write_file("out", {}, write), testing::KilledBySignal(signal), "");
    }
    disk_error = ENOSPC;
    const auto save = [] {
        return write_file("out.qel", {}, [](FILE* f) { return fputs("all", f) > 0; }), 0;
    };
    EXPECT_NE(outcome(save).find("No space left"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty("."));
    disk_error = 0;
    EXPECT_EQ(outcome(save), "all");
}

TEST_F(tools, do_not_blame_the_file_for_short_memory) {
    // A model and its material library in one.
    std::ofstream("m.obj") << "mtllib m.obj\nnewmtl a\nmap_Kd a.png\nv 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\n"
                              "usemtl a\nf 1 2 3\nf 1 3 4\n";
    const std::string scene = ASSETS "/robot/robot.qel";
    const std::function<int()> commands[] = {[&] { return run_check(scene, false); },
                                             [&] { return run_compare(scene, scene); },
                                             [&] { return run_convert(scene, "out.qel", true); },
                                             [&] { return run_convert("m.obj", "out.qel", true); }};
    for (const auto& command : commands) {
        const std::string whole = outcome(command);
        bool failed = true;
        for (long successes = 0; failed; ++successes) {
            shortage here(successes / 2, successes % 2 ? 1 : LONG_MAX);
            const std::string got = outcome(command);
            failed = here.end();
            EXPECT_TRUE(got == whole || got.find("memory") != got.npos) << successes << ": " << got;
        }
    }
}

} // namespace
