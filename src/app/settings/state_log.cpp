// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/state_log.h"

#include <fcntl.h>

#include "util/clock.h"
#include "util/file_system.h"
#include "util/text_forms.h"

namespace vistels {

void log_line(const home_places& places, std::string_view text, const std::string& log) {
    constexpr std::int64_t largest_log_bytes = 1'000'000;
    const std::string folder = path_join(places.state_folder, "System");
    const std::string path = path_join(folder, log + ".txt");
    auto& files = machine_files();
    if (!make_folders(folder)) return;
    file_identity found;
    if (files.identity(path, found) == 0 && found.size > largest_log_bytes) {
        files.rename(path, path_join(folder, log + " 1.txt"));
    }
    // One write, so that the lines of two programs do not mix.
    std::string line = date_text(seconds_since_1970()) + " ";
    for (const char one : text) line += one == '\n' || one == '\r' ? ' ' : one;
    line += '\n';
    int descriptor = -1;
    if (files.open(path, O_WRONLY | O_APPEND | O_CREAT, descriptor) != 0) return;
    (void)write_whole(files, descriptor, line);
    files.close(descriptor);
}

}  // namespace vistels
