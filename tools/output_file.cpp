#include "output_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "report.h"

namespace {

struct close_file {
    void operator()(FILE* file) const { fclose(file); }
};
using open_file = std::unique_ptr<FILE, close_file>;

[[noreturn]] void cannot_write(const std::string& file, const std::string& cause) {
    throw failure(exit_failed, file + ": cannot be written: " + cause);
}

std::string folder_of(const std::string& file) {
    const std::string folder = std::filesystem::path(file).parent_path().string();
    return folder.empty() ? "." : folder;
}

bool is_special(const std::string& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

// Through symbolic links, so that a rename replaces the file and not the link.
std::string real_target(const std::string& file) {
    const std::unique_ptr<char, void (*)(void*)> real(realpath(file.c_str(), nullptr), free);
    return real ? real.get() : file;
}

// Calls the writer and makes sure that everything has left the stream.
void fill(FILE* out, const std::string& name, const std::function<bool(FILE*)>& write) {
    errno = 0;
    if (!write(out) || fflush(out) != 0 || ferror(out))
        cannot_write(name, errno ? strerror(errno) : "write error");
}

} // namespace

void check_output(const std::string& file, const std::string& source) {
    if (file == "-") return;
    std::error_code ignored;
    if (std::filesystem::equivalent(file, source, ignored)) {
        throw failure(exit_usage, file + ": the output would replace the input");
    }
    struct stat status {};
    if (stat(file.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) cannot_write(file, "is a directory");
        if (access(file.c_str(), W_OK) != 0) cannot_write(file, strerror(errno));
        if (!S_ISREG(status.st_mode)) return;
    }
    const std::string folder = folder_of(real_target(file));
    if (access(folder.c_str(), W_OK | X_OK) != 0) cannot_write(file, folder + ": " + strerror(errno));
}

void write_file(const std::string& file, const std::function<bool(FILE*)>& write) {
    if (file == "-") return fill(stdout, "standard output", write);
    if (is_special(file)) {
        const open_file out(fopen(file.c_str(), "wb"));
        if (!out) cannot_write(file, strerror(errno));
        return fill(out.get(), file, write);
    }
    const std::string target = real_target(file);
    const std::string temporary = folder_of(target) + "/.model3d-" + std::to_string(getpid()) + ".part";
    const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    open_file out(descriptor < 0 ? nullptr : fdopen(descriptor, "wb"));
    if (!out) cannot_write(file, strerror(errno));
    try {
        fill(out.get(), file, write);
        if (fclose(out.release()) != 0 || rename(temporary.c_str(), target.c_str()) != 0) {
            cannot_write(file, strerror(errno));
        }
    } catch (...) {
        unlink(temporary.c_str());
        throw;
    }
}
