#include "loaders/path.h"

#include "base/heap.h"

char* directory_of(const char* filename) {
    const char* const slash = strrchr(filename, '/');
    return slash ? strndup(filename, static_cast<size_t>(slash - filename)) : heap_text("./");
}

char* join_path(const char* directory, const char* name) {
    const size_t length = strlen(directory);
    const size_t name_size = strlen(name) + 1;
    char* path = heap_array<char>(length + 1 + name_size);
    if (!path) return nullptr;
    memcpy(path, directory, length);
    path[length] = '/';
    memcpy(path + length + 1, name, name_size);
    return path;
}

// texture_create turns the backslashes of some exporters into slashes.
int texture_create_beside(texture* t, const char* directory, const char* name) {
    const heap_ptr<char> path{join_path(directory, name)};
    return path && texture_create(t, path.get());
}
