// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "app/vaults/home_vault.h"
#include "util/job.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// What a command prints on standard output as JSON, and the exit status.
struct command_outcome {
    property_value printed;
    int exit_status = 0;
};

// The command line while it is parsed: commands are registered, the one that was chosen is run. Main thread.
class command_line {
  public:
    using work = std::function<result<command_outcome>()>;

    // `on_progress` gets the progress of long work (0 to 1).
    explicit command_line(std::function<void(double)> on_progress) : job_(std::move(on_progress)) {}

    // A command that holds commands: exactly one must follow.
    CLI::App* group(CLI::App& above, const std::string& name, const std::string& description);
    // A command that is run by `run` when it is chosen. The values that its options are bound to must live as
    // long as `run` does.
    CLI::App* command(CLI::App& above, const std::string& name, const std::string& description, work run);

    // A positional text of `command` that is taken as it stands, also when it is empty or begins with "-".
    // One that is spelt like an option of the command needs a "--" before it.
    CLI::Option* add_text(CLI::App* command, const std::string& name, std::string& text,
                          const std::string& description);
    // The arguments in their order, those marked that the parser would mistake for options: such texts, and
    // numbers like "-.5".
    std::vector<std::string> prepared_arguments(const CLI::App& program,
                                                std::vector<std::string> arguments) const;

    const work& chosen() const { return chosen_; }
    home_places places() const { return find_home_places(home_); }
    // Cancelled by Ctrl-C.
    job& command_job() { return job_; }
    std::string& home() { return home_; }

  private:
    std::string home_;
    job job_;
    std::set<const CLI::App*> take_texts_;
    work chosen_;
};

// A number of seconds or the like, taken as it stands ("-3", "-.5"); one that is not finite is wrong usage.
CLI::Option* add_number(CLI::App* command, const std::string& name, double& number,
                        const std::string& description);

// "1,2.5,-3" as numbers; a failure names what is no number.
result<std::vector<double>> numbers_from_list(const std::string& text);
// "a,b" as texts, without empty ones.
std::vector<std::string> texts_from_list(const std::string& text);

// The lines of a file as they stand, in `bytes`; the last one need not be ended.
std::vector<std::string_view> lines_of(std::string_view bytes);

}  // namespace vistels
