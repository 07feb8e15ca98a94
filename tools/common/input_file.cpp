#include "input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

open_file open_input(const std::string& file, const char* kind, exit_code code) {
    const auto fail = [&](const std::string& cause) { throw failure(code, file + ": " + cause); };
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) fail(strerror(errno));
    if (S_ISDIR(status.st_mode)) fail(std::string("is a directory, not ") + kind);
    if (!S_ISREG(status.st_mode)) fail("is not a regular file");
    // Should it have become a pipe by now, opening still does not wait.
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) fail(strerror(errno));
    open_file stream(fdopen(descriptor, "rb"));
    if (!stream) {
        close(descriptor);
        fail(strerror(ENOMEM));
    }
    return stream;
}

void input_files::add(const std::string& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
        known_.emplace(status.st_dev, status.st_ino);
    }
}

void input_files::add(const std::vector<std::string>& files) {
    for (const std::string& file : files)
        add(file);
}

bool input_files::contains(const std::string& file) const {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 && known_.count({status.st_dev, status.st_ino}) > 0;
}
