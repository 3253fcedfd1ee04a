// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/code_window.h"

#include <utility>

namespace vistels {

result<code_window> load_code_window(const std::string& logger_folder, std::vector<failure>* messages) {
    auto buttons = load_button_dict(logger_folder);
    if (!buttons) return buttons.error();
    // The count of the buttons is only written, but the file may hold more.
    if (messages) (void)read_code_window_file(path_join(logger_folder, logger_file_name), messages);
    return code_window{std::move(buttons).value(), load_logger_settings(logger_folder, messages),
                       load_logger_offsets(logger_folder, messages)};
}

result<void> save_code_window(const code_window& window, const std::string& logger_folder,
                              const code_window* saved, file_system& files, std::vector<file_conflict>* met) {
    const code_window nothing;
    const code_window& before = saved ? *saved : nothing;
    if (!saved || !(window.buttons == before.buttons)) {
        if (auto done = save_button_dict(window.buttons, logger_folder, files, met); !done) return done;
    }
    if (!(window.settings == before.settings)) {
        if (auto done = save_logger_settings(window.settings, logger_folder, files, met); !done) return done;
    }
    if (window.offsets == before.offsets) return {};
    return save_logger_offsets(window.offsets, logger_folder, files, met);
}

}  // namespace vistels
