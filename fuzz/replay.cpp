// Stands in for libFuzzer where there is none: runs a target over files, and over a fixed series of faulty
// copies of each, and holds it to its limits. Every input is first stored as LAST, where it is found after a
// crash.
//   replay_TARGET LAST FILE_OR_FOLDER...
#include "fuzz.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace {

using bytes = std::vector<uint8_t>;
constexpr int copies = 60;

// What a file of a few kilobytes may cost.
constexpr clock_t most_time = CLOCKS_PER_SEC;
constexpr long most_kilobytes = 64 * 1024;

// A line of the kernel's account of this process, in kB.
long process_status(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        long number = 0;
        if (word == field && status >> number) return number;
    }
    return 0;
}

// The peak is of address space, so that memory counts that was asked for and never touched. It says nothing
// under a sanitizer, an emulator, or valgrind, which preloads a library.
#if defined(__SANITIZE_ADDRESS__) || defined(EMULATED)
constexpr bool measured = false;
#else
constexpr bool measured = true;
#endif
long memory() {
    if (!measured || getenv("LD_PRELOAD")) return 0;
    static const long start = process_status("VmSize:");
    return process_status("VmPeak:") - start;
}

clock_t slowest;

void run(const char* last, const bytes& input) {
    std::ofstream(last, std::ios::binary)
        .write(reinterpret_cast<const char*>(input.data()), static_cast<std::streamsize>(input.size()));
    // A block of the very size, so that reading past the end shows.
    const auto exact = std::make_unique<uint8_t[]>(input.size());
    std::copy(input.begin(), input.end(), exact.get());
    const clock_t start = clock();
    LLVMFuzzerTestOneInput(exact.get(), input.size());
    slowest = std::max(slowest, clock() - start);
    require(slowest < most_time, "a small file takes less than a second");
    require(memory() < most_kilobytes, "a small file takes less than 64 MiB");
}

// A few bytes changed to what counts and sizes break at, cut out, or doubled.
bytes spoil(bytes input, std::minstd_rand& random) {
    constexpr uint8_t values[] = {0, 1, 0x7f, 0x80, 0xff, ' ', '-', '/'};
    for (unsigned changes = 1 + random() % 4; changes > 0 && !input.empty(); --changes) {
        const auto at = input.begin() + static_cast<ptrdiff_t>(random() % input.size());
        const auto length = std::min<ptrdiff_t>(1 + static_cast<ptrdiff_t>(random() % 8), input.end() - at);
        switch (random() % 4) {
        case 0:
            input.erase(at, at + length);
            break;
        case 1: {
            const bytes piece(at, at + length);
            input.insert(at, piece.begin(), piece.end());
            break;
        }
        case 2:
            *at = static_cast<uint8_t>(random());
            break;
        default:
            std::fill_n(at, random() % 2 ? 1 : length, values[random() % std::size(values)]);
        }
    }
    return input;
}

void replay(const char* last, const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const bytes input{std::istreambuf_iterator<char>(file), {}};
    fprintf(stderr, "%s\n", path.c_str());
    run(last, input);
    std::minstd_rand random;
    for (int i = 0; i < copies; ++i)
        run(last, spoil(input, random));
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3 || !freopen("/dev/null", "w", stdout)) return 2;
    memory();
    std::set<std::filesystem::path> files;
    for (const std::string name : std::span(argv, static_cast<size_t>(argc)).subspan(2)) {
        if (!std::filesystem::is_directory(name))
            files.insert(name);
        else
            for (const auto& entry : std::filesystem::recursive_directory_iterator(name))
                if (entry.is_regular_file()) files.insert(entry.path());
    }
    for (const auto& file : files)
        replay(argv[1], file);
    std::filesystem::remove(argv[1]);
    fprintf(stderr, "%zu files, at most %ld ms and %ld KiB\n", files.size(), slowest * 1000 / CLOCKS_PER_SEC,
            memory());
    return files.empty();
}
