// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/coded_pictures.h"

#include <cmath>
#include <utility>

#include "media/demultiplexer.h"
#include "media/multiplexer.h"
#include "util/job_failures.h"

namespace vistels {

namespace {

constexpr std::size_t most_pictures = 1000;
constexpr AVRational time_base{1, 90000};

using coded_pictures = std::vector<ffmpeg_owner<AVPacket>>;

result<coded_pictures> read_pictures(demultiplexer& movie, const std::string& path) {
    coded_pictures pictures;
    for (;;) {
        ffmpeg_owner<AVPacket> packet(av_packet_alloc());
        const int error = movie.read(*packet, *movie.video());
        if (error == AVERROR_EOF) break;
        if (error < 0) return ffmpeg_failure(movie_could_not_be_read, path, error);
        if ((packet->flags & AV_PKT_FLAG_KEY) == 0 || pictures.size() == most_pictures) {
            return movie_pictures_have_no_order(path);
        }
        pictures.push_back(std::move(packet));
    }
    if (pictures.empty()) return movie_has_no_pictures(path);
    return pictures;
}

}  // namespace

result<void> show_coded_pictures(const std::string& from, const std::string& to,
                                 const std::vector<double>& times, double end, job& work) {
    auto movie = demultiplexer::open(from);
    if (!movie) return movie.error();
    if (movie.value()->video() == nullptr) return movie_has_no_pictures(from);
    const auto pictures = read_pictures(*movie.value(), from);
    if (!pictures) return pictures.error();
    auto file = multiplexer::create(to, to);
    if (!file) return file.error();
    const auto track = file.value()->add_track(*movie.value()->video(), time_base);
    if (!track) return track.error();
    if (auto begun = file.value()->begin(); !begun) return begun;
    const auto stamp = [](double seconds) { return std::llround(seconds * time_base.den); };
    for (std::size_t n = 0; n < times.size(); ++n) {
        if (work.is_cancelled()) return job_was_cancelled();
        const double until = n + 1 < times.size() ? times[n + 1] : end;
        const ffmpeg_owner<AVPacket> packet(
            av_packet_clone(pictures.value()[n % pictures.value().size()].get()));
        if (!packet) return file.value()->failed(AVERROR(ENOMEM));
        packet->pts = packet->dts = stamp(times[n]);
        packet->duration = stamp(until) - packet->pts;
        if (auto written = file.value()->write(*packet, *track.value(), time_base); !written) return written;
        work.set_progress(static_cast<double>(n + 1) / static_cast<double>(times.size() + 1));
    }
    return file.value()->finish();
}

}  // namespace vistels
