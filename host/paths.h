// Where resource names lead, and word about those that lead nowhere.
#ifndef HOST_PATHS_H
#define HOST_PATHS_H

#include "kora/host.h"

#include <string>
#include <vector>

struct path_finder {
    std::vector<std::string> roots;
    kora_missing_callback missing = nullptr;
    void* missing_user = nullptr;
    kora_found_callback found = nullptr;
    void* found_user = nullptr;

    // The first regular, readable file that `name` leads to, after telling about it, or an empty text after
    // telling about every path tried.
    std::string resolve(const char* kind, const char* name) const;

    void tell_missing(const char* kind, const char* name, const char* path, const char* reason) const {
        if (missing) missing(kind, name, path, reason, missing_user);
    }
};

#endif
