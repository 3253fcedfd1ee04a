// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/key_packets.h"

namespace vistels {

namespace {

constexpr std::int64_t far_behind = std::numeric_limits<std::int64_t>::max() / 4;

std::int64_t decoded_at(const AVPacket& packet) {
    return packet.dts == AV_NOPTS_VALUE ? packet.pts : packet.dts;
}

}  // namespace

int key_packets::seek(std::int64_t stamp) {
    last_key_ = nowhere;
    return file_.seek(stream_, stamp);
}

// Where there is no other in the index, reading goes on as it would. Indices tell when frames are decoded,
// and seeks go by when they are shown, which is later: so the place to go to is the one just before the next
// but one.
void key_packets::go_to_next_key() {
    auto* const stream = const_cast<AVStream*>(&stream_);  // which is only looked at
    const int entry = av_index_search_timestamp(stream, last_key_ + 1, 0);
    const int last = av_index_search_timestamp(stream, last_key_, AVSEEK_FLAG_BACKWARD);
    const AVIndexEntry* const key = entry < 0 ? nullptr : avformat_index_get_entry(stream, entry);
    if (key == nullptr || key->timestamp <= last_key_ || entry <= last + 1) return;
    const int beyond = av_index_search_timestamp(stream, key->timestamp + 1, 0);
    const AVIndexEntry* const after = beyond < 0 ? nullptr : avformat_index_get_entry(stream, beyond);
    (void)file_.seek(stream_, after != nullptr ? after->timestamp - 1 : far_behind);
}

bool key_packets::is_wanted(const AVPacket& packet) const {
    if (!only_keys_ || packet.stream_index != stream_.index) return true;
    if ((packet.flags & AV_PKT_FLAG_KEY) == 0) return false;
    return last_key_ == nowhere || decoded_at(packet) == AV_NOPTS_VALUE || decoded_at(packet) > last_key_;
}

int key_packets::read(AVPacket& packet) {
    if (only_keys_ && last_key_ != nowhere) go_to_next_key();
    for (;;) {
        const int error = file_.read(packet);
        if (error < 0) return error;
        if (is_wanted(packet)) break;
        av_packet_unref(&packet);
    }
    const bool is_key = packet.stream_index == stream_.index && (packet.flags & AV_PKT_FLAG_KEY) != 0;
    if (is_key && decoded_at(packet) != AV_NOPTS_VALUE) last_key_ = decoded_at(packet);
    return 0;
}

}  // namespace vistels
