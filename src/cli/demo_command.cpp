// SPDX-License-Identifier: GPL-3.0-or-later
#include <memory>

#include "cli/command_failures.h"
#include "cli/commands.h"
#if VISTELS_HAVE_MEDIA
#include "demo/demo_event.h"
#endif

namespace vistels {

namespace {

struct demo_values {
    std::string parent;
    int cameras = 4;
    int seconds = 60;
};

#if VISTELS_HAVE_MEDIA

result<command_outcome> make_demo(const demo_values& values, command_line& line) {
    demo_options options;
    options.cameras = values.cameras;
    options.seconds = values.seconds;
    const auto made = make_demo_event(absolute_path(values.parent), options, line.command_job());
    if (!made) return made.error();
    const auto& paths = made.value();
    property_dictionary printed;
    printed.add("vault", paths.vault);
    printed.add("collection", paths.collection);
    printed.add("timeline", paths.timeline);
    printed.add("logger", paths.logger);
    printed.add("composer", property_value());
    return command_outcome{std::move(printed)};
}

#else

result<command_outcome> make_demo(const demo_values& values, command_line&) {
    return demo_without_media(values.parent);
}

#endif

}  // namespace

void register_demo_command(CLI::App& program, command_line& line) {
    constexpr int most_cameras = 16;
    constexpr int shortest_seconds = 2;
    constexpr int longest_seconds = 7200;
    const auto values = std::make_shared<demo_values>();
    CLI::App* command = line.command(program, "demo", "make a vault with a complete example event",
                                     [values, &line] { return make_demo(*values, line); });
    command->add_option("PARENT", values->parent, "folder in which the vault is made")->required();
    command->add_option("--cameras", values->cameras, "how many vistels")
        ->check(CLI::Range(1, most_cameras))
        ->capture_default_str();
    command->add_option("--seconds", values->seconds, "how long each camera films")
        ->check(CLI::Range(shortest_seconds, longest_seconds))
        ->capture_default_str();
}

}  // namespace vistels
