/* One ordered record of everything the plug-in asks of its host and of GL.
 *
 * The recording libkora and libGLESv2 append lines; tests read them back by channel. A line is nested
 * when it was written while the host's pool was building a program. A fault is a call that no host or
 * driver would forgive; every test ends by checking that there was none.
 */
#ifndef TESTS_PLUGIN_TRACE_H
#define TESTS_PLUGIN_TRACE_H

#include <initializer_list>
#include <string>
#include <vector>

enum class channel {
    log,    // "LEVEL app|null TEXT", host log
    diag,   // "app|null TEXT", log lines that bypass the host's filter (level -1)
    map,    // string maps, except look-ups
    lookup, // string map look-ups and enabled attribute arrays: order left free
    host,   // every other host function and service
    gl,
};

struct trace {
    struct line {
        channel from;
        bool nested;
        std::string text;
    };
    std::vector<line> lines;
    std::vector<std::string> faults;
    int depth = 0;

    void clear() { lines.clear(); }
    // Lines of the given channels in order; without `nested`, only those outside program building.
    std::vector<std::string> text(std::initializer_list<channel> from, bool nested = false) const;
    std::vector<std::string> log(int most_severe, int least_severe) const;
    // Lines of any channel that start with `prefix`.
    int count(const std::string& prefix) const;
};

trace& recorded();
void record(channel from, const char* format, ...) __attribute__((format(printf, 2, 3)));
void fault(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string print(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string vprint(const char* format, va_list args) __attribute__((format(printf, 1, 0)));
/* Up to four decimals, as short as possible, no negative zero. */
std::string number(double value);

#endif
