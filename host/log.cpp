// The process-wide log.
#include "kora/host.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void write_to_stderr(int, const char* text, void*) {
    fprintf(stderr, "%s\n", text);
}

// At least -1, so that one comparison lets every negative level pass.
int threshold = 2;
kora_log_callback sink = write_to_stderr;
void* sink_user = nullptr;

void emit(int level, char* text) {
    size_t length = strlen(text);
    while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r'))
        text[--length] = '\0';
    sink(level, text, sink_user);
}

} // namespace

void kora_log_set_level(int level) {
    threshold = std::max(level, -1);
}

void kora_log_set_callback(kora_log_callback callback, void* user) {
    sink = callback ? callback : write_to_stderr;
    sink_user = callback ? user : nullptr;
}

// Extensions trace several lines for every uniform of every mesh, so a dropped line must cost no more
// than this comparison.
void kora_app_log(app_record* app, int level, const char* format, ...) {
    if (level > threshold) return;
    va_list args;
    va_start(args, format);
    kora_app_vlog(app, level, format, args);
    va_end(args);
}

void kora_app_vlog(app_record*, int level, const char* format, va_list args) {
    if (level > threshold) return;
    // Most lines fit; shader sources and compiler messages do not.
    char line[512];
    va_list again;
    va_copy(again, args);
    // The checker loses sight of the caller's list when it reads several files in one run.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    const int length = vsnprintf(line, sizeof line, format, args);
    const size_t needed = length < 0 ? 0 : static_cast<size_t>(length) + 1;
    char* longer = needed > sizeof line ? static_cast<char*>(malloc(needed)) : nullptr;
    if (longer) vsnprintf(longer, needed, format, again);
    va_end(again);
    if (length >= 0) emit(level, longer ? longer : line);
    free(longer);
}
