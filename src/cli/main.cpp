// SPDX-License-Identifier: GPL-3.0-or-later
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/logger_commands.h"
#include "util/json.h"

namespace vistels {

namespace {

constexpr int exit_done = 0;
constexpr int exit_failed = 1;
constexpr int exit_wrong_usage = 2;

job* cancelled_by_signal = nullptr;  // a signal handler gets no other argument

extern "C" void end_asked_for(int) {
    if (cancelled_by_signal) cancelled_by_signal->cancel();
}

void cancel_on_signals(job& work) {
    cancelled_by_signal = &work;
    struct sigaction action {};
    action.sa_handler = end_asked_for;
    // A second one ends the program at once.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

// One line on standard error.
void complain(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char letter) { return letter == '\n' || letter == '\r'; }, ' ');
    while (!text.empty() && text.back() == ' ') text.pop_back();
    std::cerr << "vistels-cli: " << text << '\n';
}

constexpr const char* no_progress = "\r     \r";

void show_progress(double fraction) {
    std::fprintf(stderr, "\r%3d %%", static_cast<int>(fraction * 100));
    if (fraction >= 1) std::fputs(no_progress, stderr);
}

int run_chosen(command_line& line) {
    cancel_on_signals(line.command_job());
    const auto done = line.chosen()();
    cancelled_by_signal = nullptr;
    // Work that broke off left its line standing.
    if (::isatty(STDERR_FILENO) && line.command_job().progress() < 1) std::fputs(no_progress, stderr);
    if (!done) {
        complain(done.message());
        return exit_failed;
    }
    std::cout << write_json(done.value().printed) << std::flush;
    if (!std::cout) {
        complain("The result could not be written to standard output.");
        return exit_failed;
    }
    return done.value().exit_status;
}

int run(int count, char** values) {
    CLI::App program("Vistels without a window: timelines, collections and code windows for scripts.",
                     "vistels-cli");
    command_line line(::isatty(STDERR_FILENO) ? show_progress : std::function<void(double)>());
    program.require_subcommand(1);
    program.set_version_flag("--version", "vistels-cli " VISTELS_VERSION);
    program.add_option("--home", line.home(),
                       "folder that holds the home vault and the state folder (else VISTELS_HOME)");
    register_startup_commands(program, line);
    register_demo_command(program, line);
    register_timeline_commands(program, line);
    register_collection_commands(program, line);
    register_formula_commands(program, line);
    register_filter_commands(program, line);
    register_logger_commands(program, line);
    try {
        auto arguments = line.prepared_arguments(program, {values + 1, values + std::max(count, 1)});
        // The parser takes them from the last to the first.
        std::reverse(arguments.begin(), arguments.end());
        program.parse(std::move(arguments));
    } catch (const CLI::Success& asked_for_text) {
        program.exit(asked_for_text);
        return exit_done;
    } catch (const CLI::ParseError& wrong) {
        complain(std::string(wrong.what()) + " (--help shows how it is used.)");
        return exit_wrong_usage;
    }
    return run_chosen(line);
}

}  // namespace

}  // namespace vistels

int main(int count, char** values) {
    return vistels::run(count, values);
}
