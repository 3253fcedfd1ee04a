// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/program/application_options.h"

#include <optional>

#include "shell/program/option_failures.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

// "1600x1000"
bool read_size(const std::string& text, application_options& options) {
    const auto cross = text.find('x');
    if (cross == std::string::npos) return false;
    const auto width = integer_from_text(text.substr(0, cross));
    const auto height = integer_from_text(text.substr(cross + 1));
    if (!width || !height || *width < 1 || *height < 1 || *width > 16384 || *height > 16384) return false;
    options.width = static_cast<int>(*width);
    options.height = static_cast<int>(*height);
    return true;
}

// Whether `value` is one that the option `name` takes.
bool set_option(const std::string& name, const std::string& value, application_options& options) {
    if (value.empty()) return false;
    if (name == "--home") {
        options.home = value;
    } else if (name == "--screenshot") {
        options.screenshot = value;
    } else if (name == "--filter") {
        options.filter = value;
    } else if (name == "--theme") {
        options.theme = value;
        return value == "dark" || value == "light";
    } else if (name == "--size") {
        return read_size(value, options);
    } else {
        const auto seconds = number_from_text(value);
        options.at_seconds = seconds.value_or(-1);
        return seconds && *seconds >= 0;
    }
    return true;
}

bool takes_value(const std::string& name) {
    return name == "--home" || name == "--screenshot" || name == "--theme" || name == "--size" ||
           name == "--at" || name == "--filter";
}

}  // namespace

result<application_options> read_options(const std::vector<std::string>& arguments) {
    application_options options;
    bool only_paths = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (only_paths || !argument.starts_with('-') || argument == "-") {
            options.paths.push_back(argument);
            continue;
        }
        const auto equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        if (argument == "--") {
            only_paths = true;
        } else if (argument == "--help" || argument == "-h") {
            options.show_help = true;
        } else if (argument == "--version") {
            options.show_version = true;
        } else if (takes_value(name)) {
            const bool joined = equals != std::string::npos;
            if (!joined && i + 1 == arguments.size()) return option_needs_a_value(name);
            const std::string value = joined ? argument.substr(equals + 1) : arguments[++i];
            if (!set_option(name, value, options)) {
                return option_has_another_value(value, name);
            }
        } else {
            return option_is_unknown(argument);
        }
    }
    return options;
}

std::string help_text() {
    return "Usage: vistels [options] [PATH...]\n"
           "\n"
           "Opens each PATH: a vault or a collection's folder, each in a window of its own, or movie files,\n"
           "which together become a new collection in the home vault. The windows that were open last come\n"
           "back behind them; at the very first start without PATH a demo event opens.\n"
           "\n"
           "  --home DIR       keep the home vault and the state folder in DIR\n"
           "  --theme NAME     dark or light; without it as the desktop has it\n"
           "  --size WxH       the size of the windows\n"
           "  --version        print the version\n"
           "  --help           print this\n"
           "\n"
           "vistels-cli does the same work without a window.\n";
}

}  // namespace vistels
