// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/deinterlace.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "media/decoder.h"
#include "media/demultiplexer.h"
#include "media/encoder.h"
#include "media/multiplexer.h"
#include "media/video_filter.h"

namespace vistels {

namespace {

constexpr const char* filters = "bwdif=mode=send_field:parity=auto:deint=all,format=yuv420p";
constexpr const char* quality = "18";  // x264's constant rate factor: no loss that is seen
constexpr const char* preset = "veryfast";
constexpr int unlimited_threads = 0;

// One movie being written anew, from opening to the trailer.
class deinterlacing {
  public:
    deinterlacing(std::string from, std::unique_ptr<demultiplexer> movie, std::unique_ptr<multiplexer> file,
                  job& work)
        : from_(std::move(from)), movie_(std::move(movie)), file_(std::move(file)), work_(work) {}

    result<void> run();

  private:
    result<void> begin(const AVFrame& first);
    result<void> look_at(AVPacket& packet);
    void keep_sound(AVPacket& packet);
    result<void> copy_sound();
    result<void> take_filtered();
    failure cannot_read(int error) const { return ffmpeg_failure(movie_could_not_be_read, from_, error); }

    const std::string from_;
    const std::unique_ptr<demultiplexer> movie_;
    const std::unique_ptr<multiplexer> file_;
    job& work_;
    video_filter filter_;
    encoder pictures_{*file_};
    AVStream* sound_ = nullptr;  // owned by the file; null without sound
    ffmpeg_owner<AVFrame> filtered_{av_frame_alloc()};
    std::vector<ffmpeg_owner<AVPacket>> early_sound_;  // not written yet
};

// What is not known before the first picture: its format and colours.
result<void> deinterlacing::begin(const AVFrame& first) {
    const AVRational rate = av_guess_frame_rate(&movie_->format(), movie_->video(), nullptr);
    if (const int error = filter_.open(filters, first, movie_->video()->time_base, rate); error < 0) {
        return cannot_read(error);
    }
    if (auto found = pictures_.find("libx264"); !found) return found;
    AVCodecContext& settings = pictures_.settings();
    filter_.describe(settings);
    // A key frame a second: what lies before it has to be decoded whenever somebody goes there.
    const double pictures_a_second = av_q2d(settings.framerate);
    if (pictures_a_second >= 1) settings.gop_size = static_cast<int>(std::lround(pictures_a_second));
    settings.color_range = first.color_range;
    settings.colorspace = first.colorspace;
    settings.color_primaries = first.color_primaries;
    settings.color_trc = first.color_trc;
    if (auto opened = pictures_.open({{"preset", preset}, {"crf", quality}}); !opened) return opened;
    pictures_.set_packet_ticks(av_rescale_q(1, av_inv_q(settings.framerate), settings.time_base));
    if (auto set = file_->set_rotation(pictures_.track(), movie_->information().rotation); !set) return set;
    if (movie_->sound() != nullptr) {
        auto track = file_->add_track(*movie_->sound(), movie_->sound()->time_base);
        if (!track) return track.error();
        sound_ = track.value();
    }
    return file_->begin();
}

void deinterlacing::keep_sound(AVPacket& packet) {
    early_sound_.emplace_back(av_packet_alloc());
    av_packet_move_ref(early_sound_.back().get(), &packet);
}

// As it is, once the file has begun.
result<void> deinterlacing::copy_sound() {
    if (!file_->has_begun()) return {};
    for (const auto& sound : early_sound_) {
        if (auto written = file_->write(*sound, *sound_, movie_->sound()->time_base); !written)
            return written;
    }
    early_sound_.clear();
    return {};
}

// Every packet that is read, before the decoder gets it.
result<void> deinterlacing::look_at(AVPacket& packet) {
    if (work_.is_cancelled()) return deinterlacing_was_cancelled(from_);
    if (movie_->sound() != nullptr && packet.stream_index == movie_->sound()->index) {
        keep_sound(packet);
        return copy_sound();
    }
    const double duration = movie_->information().duration;
    const AVStream& video = *movie_->video();
    if (packet.stream_index == video.index && packet.pts != AV_NOPTS_VALUE && duration > 0) {
        const std::int64_t first = video.start_time == AV_NOPTS_VALUE ? 0 : video.start_time;
        const double done = static_cast<double>(packet.pts - first) * seconds_of(video.time_base);
        work_.set_progress(std::clamp(done / duration, 0.0, 1.0));
    }
    return {};
}

result<void> deinterlacing::take_filtered() {
    for (;;) {
        const int error = filter_.next(*filtered_);
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return {};
        if (error < 0) return cannot_read(error);
        filtered_->pict_type = AV_PICTURE_TYPE_NONE;  // the encoder chooses its key frames
        filtered_->interlaced_frame = 0;
        if (auto encoded = pictures_.encode(filtered_.get()); !encoded) return encoded;
    }
}

result<void> deinterlacing::run() {
    decoder pictures(*movie_, movie_could_not_be_read);
    if (auto opened = pictures.open(*movie_->video(), unlimited_threads); !opened) return opened;
    pictures.set_look([this](AVPacket& packet) { return look_at(packet); });
    const ffmpeg_owner<AVFrame> frame(av_frame_alloc());
    for (;;) {
        const auto decoded = pictures.next(*frame);
        if (!decoded) return decoded.error();
        if (!decoded.value() && !filter_.is_open()) {
            return movie_cannot_be_decoded(from_);
        }
        frame->pts = frame->best_effort_timestamp;
        if (!filter_.is_open()) {
            if (auto begun = begin(*frame); !begun) return begun;
        }
        const int added = filter_.add(decoded.value() ? frame.get() : nullptr);
        if (added < 0) return cannot_read(added);
        if (auto taken = take_filtered(); !taken) return taken;
        if (!decoded.value()) break;
    }
    if (auto encoded = pictures_.encode(nullptr); !encoded) return encoded;
    if (auto copied = copy_sound(); !copied) return copied;
    return file_->finish();
}

}  // namespace

result<void> deinterlace_movie(const std::string& from, const std::string& to, const std::string& container,
                               job& work) {
    auto movie = demultiplexer::open(from);
    if (!movie) return movie.error();
    if (movie.value()->video() == nullptr) return movie_has_no_pictures(from);
    auto file = multiplexer::create(to, container);
    if (!file) return file.error();
    return deinterlacing(from, std::move(movie).value(), std::move(file).value(), work).run();
}

}  // namespace vistels
