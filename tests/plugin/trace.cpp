#include "plugin/trace.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

std::vector<std::string> trace::text(std::initializer_list<channel> from, bool nested) const {
    std::vector<std::string> result;
    for (const line& l : lines) {
        if (l.nested && !nested) continue;
        for (const channel c : from)
            if (l.from == c) result.push_back(l.text);
    }
    return result;
}

std::vector<std::string> trace::log(int most_severe, int least_severe) const {
    std::vector<std::string> result;
    for (const line& l : lines) {
        const int level = l.from == channel::log ? std::atoi(l.text.c_str()) : -1;
        if (level >= most_severe && level <= least_severe && level >= 0) result.push_back(l.text);
    }
    return result;
}

int trace::count(const std::string& prefix) const {
    int n = 0;
    for (const line& l : lines)
        n += l.text.starts_with(prefix);
    return n;
}

trace& recorded() {
    static trace instance;
    return instance;
}

std::string vprint(const char* format, va_list args) {
    va_list again;
    va_copy(again, args);
    std::string text(static_cast<size_t>(std::vsnprintf(nullptr, 0, format, args)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

std::string print(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::string text = vprint(format, args);
    va_end(args);
    return text;
}

void record(channel from, const char* format, ...) {
    va_list args;
    va_start(args, format);
    recorded().lines.push_back({from, recorded().depth > 0, vprint(format, args)});
    va_end(args);
}

void fault(const char* format, ...) {
    va_list args;
    va_start(args, format);
    recorded().faults.push_back(vprint(format, args));
    va_end(args);
}

std::string number(double value) {
    return print("%g", std::round(value * 1e4) / 1e4 + 0.0);
}
