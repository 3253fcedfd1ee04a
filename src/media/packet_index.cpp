// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/packet_index.h"

#include <algorithm>

#include "media/demultiplexer.h"

namespace vistels {

result<packet_index> read_packet_index(const std::string& path) {
    auto opened = demultiplexer::open(path);
    if (!opened.ok()) return opened.error();
    demultiplexer& file = *opened.value();
    if (file.video() == nullptr) return movie_has_no_pictures(path);
    packet_index made;
    made.seconds_per_tick = seconds_of(file.video()->time_base);
    const ffmpeg_owner<AVPacket> packet(av_packet_alloc());
    int error = 0;
    while ((error = file.read(*packet, *file.video())) >= 0) {
        const bool is_shown = packet->pts != AV_NOPTS_VALUE && (packet->flags & AV_PKT_FLAG_DISCARD) == 0;
        if (is_shown) made.stamps.push_back(packet->pts);
        av_packet_unref(packet.get());
    }
    if (error != AVERROR_EOF) return ffmpeg_failure(movie_could_not_be_read, path, error);
    if (made.stamps.empty()) return movie_has_no_pictures(path);
    std::sort(made.stamps.begin(), made.stamps.end());
    const std::int64_t first = made.stamps.front();
    for (auto& stamp : made.stamps) stamp -= first;
    return made;
}

}  // namespace vistels
