// Times and memory of pieces of work, for tables of ratios.
#ifndef BENCH_MEASURE_H
#define BENCH_MEASURE_H

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>

// Processor time of a piece of work, so that others on the machine count little.
template <class Work> double milliseconds(Work work) {
    const auto now = [] {
        timespec t = {};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) * 1e-6;
    };
    const double begin = now();
    work();
    return now() - begin;
}

// Medians of pieces of work done by turns, so that a change of the machine's mood meets all of them. Each
// returns its own milliseconds.
template <class... Work> std::array<double, sizeof...(Work)> medians(Work... work) {
    constexpr size_t rounds = 9;
    std::array<std::array<double, rounds>, sizeof...(Work)> times;
    for (size_t round = 0; round < rounds; ++round) {
        size_t i = 0;
        ((times[i++][round] = work()), ...);
    }
    std::array<double, sizeof...(Work)> result;
    for (size_t i = 0; i < result.size(); ++i) {
        std::nth_element(times[i].begin(), times[i].begin() + rounds / 2, times[i].end());
        result[i] = times[i][rounds / 2];
    }
    return result;
}

// A line of the kernel's account of this process, in MB.
inline double process_megabytes(const char* field) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0;
        if (word == field && status >> kilobytes) return kilobytes * 1024 / 1e6;
    }
    abort();
}

// The memory that a piece of work has at most, over what it finds, in a process of its own.
template <class Work> double peak_megabytes(Work work) {
    int ends[2];
    if (pipe(ends) != 0) abort();
    const pid_t child = fork();
    if (child == 0) {
        std::ofstream("/proc/self/clear_refs") << "5"; // the peak starts at what there is
        const double before = process_megabytes("VmRSS:");
        work();
        const double peak = process_megabytes("VmHWM:") - before;
        _exit(write(ends[1], &peak, sizeof(peak)) != sizeof(peak));
    }
    double peak = 0;
    int status = 0;
    if (child < 0 || read(ends[0], &peak, sizeof(peak)) != sizeof(peak) || waitpid(child, &status, 0) < 0) {
        abort();
    }
    close(ends[0]);
    close(ends[1]);
    return peak;
}

#endif
