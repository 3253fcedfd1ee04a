// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/ffmpeg_handles.h"

#include <array>

namespace vistels {

void silence_ffmpeg() {
    av_log_set_level(AV_LOG_QUIET);
}

std::string ffmpeg_error_text(int error) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return text.data();
}

failure ffmpeg_failure(const failure_of<a_path, a_cause>& kind, const std::string& path, int error) {
    return kind(path, movie_library_refuses(ffmpeg_error_text(error)));
}

}  // namespace vistels
