// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <malloc.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// What the benchmarks share: processor time, medians of paired runs, memory, and printing beside a target.
namespace vistels::bench {

// Takes "--short" out of the arguments; true when it was there. A run of about a second is asked for then,
// which shows that the benchmark works: its figures say nothing, and no target is judged.
inline bool take_short(int& count, char** arguments) {
    char** const end = std::remove_if(arguments + 1, arguments + count, [](const char* argument) {
        return std::strcmp(argument, "--short") == 0;
    });
    const int kept = static_cast<int>(end - arguments);
    return std::exchange(count, kept) != kept;
}

// Of all threads of this process, in the program and in the kernel on its behalf.
inline double processor_seconds() {
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

template <class Work>
double seconds_of(Work&& work) {
    const double from = processor_seconds();
    std::forward<Work>(work)();
    return processor_seconds() - from;
}

inline double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// Two pieces of work measured alternately, so that both meet the same state of the machine.
struct paired_runs {
    std::vector<double> ours;    // seconds
    std::vector<double> theirs;  // seconds

    void add(double our_seconds, double their_seconds) {
        ours.push_back(our_seconds);
        theirs.push_back(their_seconds);
    }
    // The median of the runs' ratios.
    double ratio() const {
        std::vector<double> ratios;
        for (std::size_t n = 0; n < ours.size(); ++n) ratios.push_back(ours[n] / theirs[n]);
        return median(std::move(ratios));
    }
};

// Prints the runs beside their target; true when it is met.
inline bool tell(const char* what, const paired_runs& runs, double most) {
    const bool met = runs.ratio() <= most;
    std::printf("%-58s %9.2f ms to %9.2f ms  %6.3f times (at most %.2f)%s\n", what, median(runs.ours) * 1e3,
                median(runs.theirs) * 1e3, runs.ratio(), most, met ? "" : "  MISSED");
    std::fflush(stdout);
    return met;
}

// A line of /proc/self/status in bytes: "VmRSS" (what is resident now), "VmHWM" (the most that ever was).
inline double resident_bytes(const char* name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name)) return std::strtod(line.c_str() + std::strlen(name) + 1, nullptr) * 1024;
    }
    return 0;
}

[[noreturn]] inline void stop_with(const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
    std::exit(2);
}

// Runs `work` in a process of its own, which begins with what this one has and keeps nothing behind, and
// returns the numbers that it found.
inline std::vector<double> in_child(const std::function<std::vector<double>()>& work) {
    std::fflush(nullptr);
    int ends[2];
    if (::pipe(ends) != 0) stop_with("No pipe can be made");
    const pid_t child = ::fork();
    if (child < 0) stop_with("No process can be started");
    if (child == 0) {
        ::close(ends[0]);
        const auto found = work();
        const auto bytes = found.size() * sizeof(double);
        const auto written = ::write(ends[1], found.data(), bytes);
        std::fflush(nullptr);
        ::_exit(written == static_cast<ssize_t>(bytes) ? 0 : 3);
    }
    ::close(ends[1]);
    std::vector<double> found;
    for (double number = 0; ::read(ends[0], &number, sizeof number) == sizeof number;)
        found.push_back(number);
    ::close(ends[0]);
    int status = 0;
    if (::waitpid(child, &status, 0) != child || status != 0) stop_with("A part of the benchmark failed");
    return found;
}

}  // namespace vistels::bench
