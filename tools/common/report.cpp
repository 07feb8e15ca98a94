#include "report.h"

#include "input_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

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
    errno = 0;
    if (fflush(stdout) == 0 && !ferror(stdout)) return;
    throw failure(exit_failed, std::string("cannot write to standard output") +
                                   (errno ? std::string(": ") + strerror(errno) : ""));
}

host_app make_host(missing_list& missing, input_files* inputs) {
    host_app app(kora_app_create());
    if (!app) throw failure(exit_failed, "out of memory");
    kora_app_set_missing_callback(app.get(), missing_list::add, &missing);
    const auto note = [](const char* path, void* list) { static_cast<input_files*>(list)->add(path); };
    if (inputs) kora_app_set_found_callback(app.get(), note, inputs);
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
