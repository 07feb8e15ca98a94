#include "paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

const char* error_reason(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return "no such file";
    case EACCES:
        return "permission denied";
    default:
        return strerror(error);
    }
}

// Why `path` cannot be read as a file, or null. Asks before anything is opened: opening a pipe may wait
// for ever.
const char* unreadable_reason(const char* path) {
    struct stat info;
    if (stat(path, &info) != 0) return error_reason(errno);
    if (S_ISDIR(info.st_mode)) return "is a directory";
    if (!S_ISREG(info.st_mode)) return "is not a regular file";
    return access(path, R_OK) == 0 ? nullptr : error_reason(errno);
}

} // namespace

std::string path_finder::resolve(const char* kind, const char* name) const {
    std::vector<std::string> paths;
    if (name[0] == '/' || roots.empty())
        paths.push_back(name);
    else
        for (const std::string& root : roots)
            paths.push_back(root.empty() || root.back() == '/' ? root + name : root + '/' + name);

    std::vector<const char*> reasons;
    for (const std::string& path : paths) {
        reasons.push_back(unreadable_reason(path.c_str()));
        if (reasons.back()) continue;
        if (found) found(path.c_str(), found_user);
        return path;
    }
    for (size_t i = 0; i < paths.size(); ++i)
        tell_missing(kind, name, paths[i].c_str(), reasons[i]);
    return {};
}
