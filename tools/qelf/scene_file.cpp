#include "scene_file.h"

#include "base/heap.h"
#include "common/input_file.h"
#include "loaders/path.h"
#include "scene_walk.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string_view>

namespace {

std::string pending;

bool lost = false; // a report, for want of memory

// The library cannot be left with an exception.
void collect(const char* format, va_list arguments) noexcept {
    char text[1024];
    const int length = vsnprintf(text, sizeof text, format, arguments);
    try {
        pending.append(text, std::min(sizeof text - 1, static_cast<size_t>(std::max(length, 0))));
    } catch (...) {
        lost = true;
    }
}

// What does not begin as one of the containers would be read whole, as bytes of an unknown kind.
bool begins_as_container(FILE* file) {
    char id[4];
    const size_t length = fread(id, 1, sizeof id, file);
    rewind(file);
    const std::string_view read(id, length);
    return length < sizeof id || read == "FORM" || read == "CAT " || read == "LIST";
}

} // namespace

report_lines::report_lines() {
    pending.clear();
    lost = false;
    IFF_errorCallback = collect;
}

report_lines::~report_lines() {
    IFF_errorCallback = IFF_errorCallbackStderr;
}

std::vector<std::string> report_lines::take() {
    if (lost) throw std::bad_alloc();
    std::vector<std::string> lines;
    size_t begin = 0;
    for (size_t end; (end = pending.find('\n', begin)) != pending.npos; begin = end + 1) {
        if (end > begin) lines.push_back(pending.substr(begin, end - begin));
    }
    pending.erase(0, begin);
    return lines;
}

scene_file::scene_file(const std::string& file, exit_code cannot_open) : file_(file) {
    const open_file stream = open_input(file, "a scene file", cannot_open);
    if (!begins_as_container(stream.get())) {
        reports_ = {"Not a valid IFF-85 file: it begins with none of 'FORM', 'CAT ' and 'LIST'"};
        return;
    }
    report_lines reports;
    errno = 0;
    tree_ = QELF_readFd(stream.get());
    // The reports do not tell a failed allocation or read from bytes that are not there.
    const int error = errno;
    if (!tree_ && (error == ENOMEM || ferror(stream.get()))) {
        throw failure(cannot_open, file + ": cannot be read: " + strerror(error));
    }
    end_ = ftell(stream.get());
    reports_ = reports.take();
}

scene_file::~scene_file() {
    if (tree_) QELF_free(tree_);
}

void require_tree(const scene_file& scene) {
    if (scene.tree()) return;
    std::string text = scene.file() + ": cannot be read";
    if (!scene.reports().empty()) text += ": " + scene.reports().front();
    throw failure(exit_failed, text + " (at byte " + std::to_string(scene.end()) + ")");
}

std::string texture_file(const std::string& scene, const QELF_Texture& from) {
    const heap_ptr<char> directory{directory_of(scene.c_str())};
    texture image{};
    if (!directory || !texture_create_beside(&image, directory.get(), scene_text(from.path).c_str())) {
        throw std::bad_alloc();
    }
    const heap_ptr<char> path{image.filename};
    return path.get();
}
