// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/frame_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "media/decoder.h"
#include "media/demultiplexer.h"
#include "media/key_packets.h"
#include "media/picture_scaler.h"

namespace vistels {

namespace {

constexpr double reading_on_seconds = 3;  // a shorter way is read, where the file has no index
constexpr int most_seek_tries = 5;
constexpr int frames_certain = 3;  // before the wanted one: at a steady rate it is among them
constexpr int largest_side = 16384;
constexpr double largest_ticks = 4e18;

}  // namespace

struct frame_reader::implementation {
    explicit implementation(std::shared_ptr<picture_pool> pool) : scaler(std::move(pool)) {}

    std::string path;
    std::unique_ptr<demultiplexer> file;
    AVStream* stream = nullptr;
    std::optional<key_packets> packets;
    std::optional<decoder> pictures;
    ffmpeg_owner<AVFrame> current{av_frame_alloc()};
    ffmpeg_owner<AVFrame> pending{av_frame_alloc()};  // the one after current
    bool has_current = false;
    bool has_pending = false;
    std::int64_t current_stamp = 0;
    std::int64_t pending_stamp = 0;
    std::int64_t first_stamp = 0;  // of the stream, where our stamps are 0
    std::int64_t floor_stamp = std::numeric_limits<std::int64_t>::min();  // what is earlier is not whole
    bool floor_is_open = false;     // the next key packet says where the floor is
    bool floor_by_any = false;      // ... or the next packet of any kind
    std::int64_t needed_from = 0;   // before that, unreferenced frames are passed over
    bool passed_over = false;       // some were
    std::int64_t last_wanted = -1;  // by the last seek
    frames_decoded decoded = frames_decoded::all;
    bool references_missing = false;  // after key frames only, reading on gives damaged frames
    int sparse_frames = 0;            // how many frames from here on may have a gap before them
    std::int64_t spacing = 0;         // frames nearer than that to the one before are not given
    bool left_out = false;            // some were, since the current frame
    bool pending_is_sparse = false;
    picture_scaler scaler;

    double tick_seconds() const { return seconds_of(stream->time_base); }
    std::int64_t frame_ticks() const;
    std::int64_t end_stamp() const;
    result<void> seek_stream(std::int64_t stamp);
    result<bool> decode_pending();
    bool take_pending();
    void apply_decoded();
    void look_at(const AVPacket& packet);
};

std::int64_t frame_reader::implementation::frame_ticks() const {
    const double rate = file->information().frame_rate;
    const double seconds = rate > 0 ? 1 / rate : 0.04;
    return std::max<std::int64_t>(1, std::llround(seconds / tick_seconds()));
}

std::int64_t frame_reader::implementation::end_stamp() const {
    const std::int64_t length = current->pkt_duration > 0 ? current->pkt_duration : frame_ticks();
    return std::max(current_stamp + length, stream->duration > 0 ? stream->duration : 0);
}

// Before the decoder gets it.
void frame_reader::implementation::look_at(const AVPacket& packet) {
    const bool has_stamp = packet.pts != AV_NOPTS_VALUE;
    // A seek in a file without an index ends between key frames: what lacks others there is no picture.
    if (floor_is_open && (floor_by_any || (packet.flags & AV_PKT_FLAG_KEY) != 0)) {
        floor_is_open = false;
        floor_stamp = has_stamp ? packet.pts : std::numeric_limits<std::int64_t>::min();
    }
    if (decoded != frames_decoded::all) return;
    const bool is_unneeded = has_stamp && packet.pts - first_stamp < needed_from;
    pictures->context().skip_frame = is_unneeded ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    passed_over = passed_over || is_unneeded;
}

// Whether the frame just decoded is one to show: whole, and later than the one before.
bool frame_reader::implementation::take_pending() {
    std::int64_t stamp = pending->best_effort_timestamp;
    if (stamp == AV_NOPTS_VALUE)
        stamp = has_current ? current_stamp + first_stamp + frame_ticks() : first_stamp;
    if (stamp < floor_stamp) return false;
    pending_stamp = stamp - first_stamp;
    if (has_current && pending_stamp <= current_stamp) return false;
    // With key frames the same ones are given wherever reading began.
    if (has_current && pending_stamp < current_stamp + spacing && pending->key_frame == 0) {
        left_out = true;
        return false;
    }
    pending_is_sparse = sparse_frames > 0 || left_out;
    if (decoded == frames_decoded::all && sparse_frames > 0) --sparse_frames;
    return true;
}

result<bool> frame_reader::implementation::decode_pending() {
    has_pending = false;
    left_out = false;
    for (;;) {
        auto decoded_one = pictures->next(*pending);
        if (!decoded_one.ok() || !decoded_one.value()) return decoded_one;
        if (!take_pending()) continue;
        has_pending = true;
        return true;
    }
}

void frame_reader::implementation::apply_decoded() {
    pictures->context().skip_frame = decoded == frames_decoded::all                    ? AVDISCARD_DEFAULT
                                     : decoded == frames_decoded::without_unreferenced ? AVDISCARD_NONREF
                                                                                       : AVDISCARD_NONKEY;
    packets->set_only_keys(decoded == frames_decoded::key_frames_only);
}

result<void> frame_reader::implementation::seek_stream(std::int64_t stamp) {
    apply_decoded();
    const int error = packets->seek(stamp);
    if (error < 0) {
        const int again = packets->seek(std::numeric_limits<std::int64_t>::min() / 4);
        if (again < 0 && packets->seek(first_stamp) < 0) {
            return ffmpeg_failure(movie_could_not_be_moved_in, path, error);
        }
    }
    pictures->restart();
    has_current = false;
    references_missing = false;
    sparse_frames = decoded == frames_decoded::all ? 0 : 1;
    floor_stamp = std::numeric_limits<std::int64_t>::max();
    floor_is_open = true;
    floor_by_any = false;
    return {};
}

frame_reader::frame_reader(std::unique_ptr<implementation> made) : its_(std::move(made)) {}
frame_reader::~frame_reader() = default;

result<std::unique_ptr<frame_reader>> frame_reader::open(const std::string& path, int threads,
                                                         std::shared_ptr<picture_pool> pool) {
    auto opened = demultiplexer::open(path);
    if (!opened.ok()) return opened.error();
    if (!pool) pool = std::make_shared<picture_pool>();
    auto made = std::make_unique<implementation>(std::move(pool));
    made->path = path;
    made->file = std::move(opened).value();
    made->stream = made->file->video();
    if (made->stream == nullptr) return movie_has_no_pictures(path);
    made->file->read_only(*made->stream);
    made->packets.emplace(*made->file, *made->stream);
    made->pictures.emplace(*made->packets, movie_could_not_be_read);
    if (auto ready = made->pictures->open(*made->stream, threads); !ready.ok()) return ready.error();
    made->pictures->set_look([its = made.get()](AVPacket& packet) -> result<void> {
        if (packet.stream_index == its->stream->index) its->look_at(packet);
        return {};
    });
    const auto first = made->decode_pending();
    if (!first.ok()) return first.error();
    if (!first.value()) return movie_cannot_be_decoded(path);
    made->first_stamp = made->pending_stamp;
    made->pending_stamp = 0;
    return std::unique_ptr<frame_reader>(new frame_reader(std::move(made)));
}

const movie_information& frame_reader::information() const {
    return its_->file->information();
}
double frame_reader::seconds_per_tick() const {
    return its_->tick_seconds();
}

std::int64_t frame_reader::stamp_at(double seconds) const {
    const double ticks = std::floor((seconds + frame_tolerance_seconds) / its_->tick_seconds());
    return static_cast<std::int64_t>(std::clamp(ticks, -largest_ticks, largest_ticks));
}

double frame_reader::seconds_at(std::int64_t stamp) const {
    return static_cast<double>(stamp) * its_->tick_seconds();
}

std::int64_t frame_reader::current_stamp() const {
    return its_->current_stamp;
}

std::int64_t frame_reader::current_until() const {
    return its_->has_pending ? its_->pending_stamp : its_->end_stamp();
}

std::optional<std::int64_t> frame_reader::next_stamp() const {
    return its_->has_pending ? std::optional(its_->pending_stamp) : std::nullopt;
}

bool frame_reader::should_seek(std::int64_t stamp) const {
    const implementation& its = *its_;
    if (its.references_missing) return true;
    if (!its.has_pending) return !its.has_current || stamp < its.current_stamp;
    if (stamp < its.pending_stamp) return true;
    if (stamp <= its.last_wanted) return false;  // this is as near as the last seek got
    const std::int64_t reorder = its.pictures->context().has_b_frames * its.frame_ticks();
    const int entry =
        av_index_search_timestamp(its.stream, stamp + its.first_stamp - reorder, AVSEEK_FLAG_BACKWARD);
    if (entry < 0)
        return its.tick_seconds() * static_cast<double>(stamp - its.pending_stamp) > reading_on_seconds;
    const AVIndexEntry* key = avformat_index_get_entry(its.stream, entry);
    return key != nullptr && key->timestamp > its.pending_stamp + its.first_stamp;
}

std::optional<std::int64_t> frame_reader::key_stamp(std::int64_t stamp) const {
    const implementation& its = *its_;
    const std::int64_t reorder = its.pictures->context().has_b_frames * its.frame_ticks();
    const int entry =
        av_index_search_timestamp(its.stream, stamp + its.first_stamp - reorder, AVSEEK_FLAG_BACKWARD);
    const AVIndexEntry* key = entry < 0 ? nullptr : avformat_index_get_entry(its.stream, entry);
    if (key == nullptr) return std::nullopt;
    return std::max<std::int64_t>(0, key->timestamp - its.first_stamp);
}

result<void> frame_reader::seek(std::int64_t stamp, std::int64_t needed_from) {
    implementation& its = *its_;
    const std::int64_t wanted = std::max<std::int64_t>(stamp, 0);
    // Some files are indexed by decoding time, which for a key frame is earlier than its presentation: the
    // first try may come out after the frame that is wanted.
    std::int64_t back = 0;
    its.last_wanted = wanted;
    its.needed_from = needed_from;
    its.passed_over = false;
    for (int tries = 0;; ++tries) {
        const bool last_try = tries == most_seek_tries;
        if (auto moved = its.seek_stream(last_try ? std::numeric_limits<std::int64_t>::min() / 4
                                                  : its.first_stamp + wanted - back);
            !moved.ok()) {
            return moved;
        }
        its.floor_by_any = last_try;
        auto decoded = its.decode_pending();
        if (!decoded.ok()) return decoded.error();
        if (decoded.value() && its.pending_stamp <= wanted) return {};
        if (last_try) {
            // Nothing before this frame can be decoded: it stands in its place.
            its.pending_stamp = std::min(its.pending_stamp, wanted);
            return {};
        }
        back = std::max(2 * back, static_cast<std::int64_t>(1 / its.tick_seconds()));
    }
}

void frame_reader::set_needed_from(std::int64_t stamp) {
    its_->needed_from = stamp;
}

bool frame_reader::is_certain() const {
    return !its_->passed_over || its_->current_stamp >= its_->needed_from;
}

result<bool> frame_reader::advance() {
    implementation& its = *its_;
    if (!its.has_pending) return false;
    std::swap(its.current, its.pending);
    its.current_stamp = its.pending_stamp;
    its.has_current = true;
    auto decoded = its.decode_pending();
    if (!decoded.ok()) return decoded;
    return true;
}

result<picture_pointer> frame_reader::paint(int width, int height) {
    implementation& its = *its_;
    const movie_information& known = its.file->information();
    if (!its.has_current) return movie_has_no_picture_here(its.path);
    const int w = std::clamp(width > 0 ? width : known.width, 1, largest_side);
    const int h = std::clamp(height > 0 ? height : known.height, 1, largest_side);
    auto made = its.scaler.scale(*its.current, w, h, known.rotation);
    if (!made.ok()) return movie_cannot_be_shown(its.path, made.error());
    picture& shown = *made.value();
    shown.stamp = its.current_stamp;
    shown.until_stamp = current_until();
    shown.time = seconds_at(shown.stamp);
    shown.until = seconds_at(shown.until_stamp);
    shown.last = !its.has_pending;
    // The last key frame need not be the last frame.
    shown.sparse = its.has_pending ? its.pending_is_sparse
                                   : its.left_out || its.decoded == frames_decoded::key_frames_only;
    return picture_pointer(std::move(made).value());
}

result<picture_pointer> frame_reader::frame_at(double seconds, int width, int height) {
    implementation& its = *its_;
    const std::int64_t wanted = std::max<std::int64_t>(stamp_at(seconds), 0);
    const auto is_shown = [&] {
        return its.has_current && its.current_stamp <= wanted &&
               (!its.has_pending || wanted < its.pending_stamp);
    };
    const auto read_on = [&]() -> result<void> {
        while (!is_shown()) {
            auto advanced = advance();
            if (!advanced.ok()) return advanced.error();
            if (!advanced.value() || its.current_stamp > wanted) break;
        }
        return {};
    };
    if (!is_shown() && should_seek(wanted)) {
        if (auto moved = seek(wanted, wanted - frames_certain * its.frame_ticks()); !moved.ok()) {
            return moved.error();
        }
    }
    if (auto there = read_on(); !there.ok()) return there.error();
    if (!is_certain()) {  // a frame that stands long: one after it may have been passed over
        if (auto moved = seek(wanted); !moved.ok()) return moved.error();
        if (auto there = read_on(); !there.ok()) return there.error();
    }
    return paint(width, height);
}

result<picture_pointer> frame_reader::next(int width, int height) {
    auto advanced = advance();
    if (!advanced.ok()) return advanced.error();
    if (!advanced.value()) return picture_pointer();
    return paint(width, height);
}

void frame_reader::set_spacing(std::int64_t ticks) {
    its_->spacing = ticks;
}

void frame_reader::set_decoded(frames_decoded which) {
    implementation& its = *its_;
    if (which == its.decoded) return;
    if (its.decoded == frames_decoded::key_frames_only) its.references_missing = true;
    // Frames already in the decoder come out first, in order of presentation.
    its.sparse_frames = its.pictures->context().has_b_frames + 2;
    its.decoded = which;
    if (!its.references_missing) its.apply_decoded();
}

}  // namespace vistels
