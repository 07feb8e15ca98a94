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
    fprintf(stderr, "%s: %s\n", program_name, printable(text).c_str());
}

void finish_output() {
    if (fflush(stdout) != 0 || ferror(stdout)) throw failure(exit_failed, "cannot write to standard output");
}

host_app make_host(missing_list& missing) {
    host_app app(kora_app_create());
    if (!app) throw failure(exit_failed, "out of memory");
    kora_app_set_missing_callback(app.get(), missing_list::add, &missing);
    return app;
}

void missing_list::add(const char* kind, const char* name, const char* path, const char* reason, void* list) {
    auto* self = static_cast<missing_list*>(list);
    missing_entry entry{std::string_view(kind) == "image" ? "texture" : self->file_kind_, name ? name : "",
                        path ? path : "", reason ? reason : ""};
    std::vector<missing_entry>& all = self->entries_;
    if (std::find(all.begin(), all.end(), entry) == all.end()) all.push_back(std::move(entry));
}

void missing_list::report() const {
    for (const missing_entry& entry : entries_) {
        const char* what = entry.kind == "library" ? "material library" : entry.kind.c_str();
        notice("not found: " + std::string(what) + " \"" + entry.name + "\" (tried " + entry.path + ": " +
               entry.reason + ")");
    }
}
