#include "report.h"

#include <algorithm>
#include <cstdio>

std::string printable(std::string_view text) {
    std::string result(text);
    std::replace_if(
        result.begin(), result.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }, '?');
    return result;
}

void notice(std::string_view text) {
    fprintf(stderr, "model3d: %s\n", printable(text).c_str());
}

void finish_output() {
    if (fflush(stdout) != 0 || ferror(stdout)) throw failure(exit_failed, "cannot write to standard output");
}

host_app::host_app() : app_(kora_app_create()) {
    if (!app_) throw failure(exit_failed, "out of memory");
    kora_app_set_missing_callback(app_.get(), on_missing, this);
}

void host_app::on_missing(const char* kind, const char* name, const char* path, const char* reason,
                          void* user) {
    auto* self = static_cast<host_app*>(user);
    missing_entry entry{std::string_view(kind) == "image" ? "texture" : self->file_kind_, name ? name : "",
                        path ? path : "", reason ? reason : ""};
    std::vector<missing_entry>& all = self->missing_;
    if (std::find(all.begin(), all.end(), entry) == all.end()) all.push_back(std::move(entry));
}

void host_app::report_missing() const {
    for (const missing_entry& entry : missing_) {
        const char* what = entry.kind == "library" ? "material library" : entry.kind.c_str();
        notice("not found: " + std::string(what) + " \"" + entry.name + "\" (tried " + entry.path + ": " +
               entry.reason + ")");
    }
}
