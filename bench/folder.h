// A temporary folder of its own, removed at the end.
#ifndef BENCH_FOLDER_H
#define BENCH_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <string>

struct folder {
    std::string path = std::filesystem::temp_directory_path() / "model3d-bench-XXXXXX";
    folder() {
        if (!mkdtemp(path.data())) abort();
    }
    ~folder() { std::filesystem::remove_all(path); }
    folder(const folder&) = delete;
};

#endif
