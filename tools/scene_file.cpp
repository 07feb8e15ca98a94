#include "scene_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sys/stat.h>

#include "report.h"

namespace {

std::string pending;

void collect(const char* format, va_list arguments) {
    char text[1024];
    const int length = vsnprintf(text, sizeof text, format, arguments);
    pending.append(text, std::min(sizeof text - 1, static_cast<size_t>(std::max(length, 0))));
}

} // namespace

report_lines::report_lines() {
    pending.clear();
    IFF_errorCallback = collect;
}

report_lines::~report_lines() {
    IFF_errorCallback = IFF_errorCallbackStderr;
}

std::vector<std::string> report_lines::take() {
    std::vector<std::string> lines;
    size_t begin = 0;
    for (size_t end; (end = pending.find('\n', begin)) != pending.npos; begin = end + 1) {
        if (end > begin) lines.push_back(pending.substr(begin, end - begin));
    }
    pending.erase(0, begin);
    return lines;
}

scene_file::scene_file(const std::string& file, int cannot_open) : file_(file) {
    const auto fail = [&](const char* cause) {
        throw failure(static_cast<exit_code>(cannot_open), file + ": " + cause);
    };
    const std::unique_ptr<FILE, int (*)(FILE*)> stream(fopen(file.c_str(), "rb"), fclose);
    if (!stream) fail(strerror(errno));
    struct stat status {};
    if (fstat(fileno(stream.get()), &status) == 0 && S_ISDIR(status.st_mode))
        fail("is a directory, not a scene file");
    report_lines reports;
    tree_ = QELF_readFd(stream.get());
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
