// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/growing_movie.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "media/decoder.h"
#include "media/demultiplexer.h"
#include "media/picture_scaler.h"

namespace vistels {

namespace {

constexpr int buffer_bytes = 1 << 15;
constexpr std::int64_t box_head = 16;  // with a size of 64 bits

std::uint64_t big_endian(const std::uint8_t* from, int bytes) {
    std::uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) value = value << 8 | from[i];
    return value;
}

// The packets of a file in fragments. FFmpeg's reader takes the end of a file for final. So it is shown the
// head and the whole fragments that have come, and for those that come later another one is opened, which is
// shown an empty box in place of what was read: all bytes keep their places, to which fragments may refer.
class growing_fragments final : public packet_source {
  public:
    explicit growing_fragments(std::string path) : path_(std::move(path)) {}
    ~growing_fragments() override {
        close_reader();
        if (file_ >= 0) ::close(file_);
    }
    growing_fragments(const growing_fragments&) = delete;
    growing_fragments& operator=(const growing_fragments&) = delete;

    // False when the head or the first fragment is not there yet.
    result<bool> open() {
        silence_ffmpeg();
        file_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
        if (file_ < 0) return ffmpeg_failure(movie_could_not_be_read, path_, AVERROR(errno));
        find_fragments();
        if (whole_until_ <= head_until_) return false;
        if (const int error = open_reader(); error < 0)
            return ffmpeg_failure(movie_could_not_be_read, path_, error);
        const int video = av_find_best_stream(format_, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        if (video < 0) return movie_has_no_pictures(path_);
        video_ = video;
        return true;
    }

    // As long as nothing was read.
    const AVStream& video() const { return *format_->streams[video_]; }

    int read(AVPacket& packet) override {
        for (;;) {
            const int error = av_read_frame(format_, &packet);
            if (error != AVERROR_EOF) return error;
            find_fragments();
            if (whole_until_ == shown_until_) return AVERROR(EAGAIN);
            if (const int again = open_reader(); again < 0) return again;
        }
    }
    const std::string& path() const override { return path_; }

  private:
    // Walks over the boxes that have come to be whole.
    void find_fragments() {
        struct stat about {};
        if (::fstat(file_, &about) != 0) return;
        for (;;) {
            std::uint8_t head[box_head];
            if (::pread(file_, head, box_head, walked_until_) < 8) return;
            std::uint64_t size = big_endian(head, 4);
            if (size == 1) size = big_endian(head + 8, 8);
            const auto left = static_cast<std::uint64_t>(about.st_size - walked_until_);
            if (size < 8 || size > left) return;
            walked_until_ += static_cast<std::int64_t>(size);
            const std::string kind(head + 4, head + 8);
            if (kind == "moov") head_until_ = whole_until_ = walked_until_;
            if (kind == "moof") has_fragments_ = true;
            if (kind == "mdat" && has_fragments_) whole_until_ = walked_until_;
        }
    }

    int open_reader() {
        close_reader();
        shown_from_ = std::max(shown_until_, head_until_);
        shown_until_ = whole_until_;
        at_ = 0;
        auto* const buffer = static_cast<std::uint8_t*>(av_malloc(buffer_bytes));
        bytes_ = avio_alloc_context(buffer, buffer_bytes, 0, this, &read_bytes, nullptr, &move);
        format_ = avformat_alloc_context();
        format_->pb = bytes_;
        return avformat_open_input(&format_, nullptr, av_find_input_format("mov"), nullptr);
    }

    void close_reader() {
        avformat_close_input(&format_);
        if (bytes_ != nullptr) av_freep(&bytes_->buffer);
        avio_context_free(&bytes_);
    }

    static int read_bytes(void* self, std::uint8_t* to, int size) {
        auto& its = *static_cast<growing_fragments*>(self);
        if (its.at_ >= its.shown_until_) return AVERROR_EOF;
        const bool is_gone = its.at_ >= its.head_until_ && its.at_ < its.shown_from_;
        const std::int64_t end = is_gone                     ? its.shown_from_
                                 : its.at_ < its.head_until_ ? its.head_until_
                                                             : its.shown_until_;
        const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(size, end - its.at_));
        auto got = static_cast<std::int64_t>(wanted);
        if (is_gone) {
            its.write_empty_box(to, wanted);
        } else {
            got = ::pread(its.file_, to, wanted, its.at_);
        }
        if (got <= 0) return got < 0 ? AVERROR(errno) : AVERROR_EOF;
        its.at_ += got;
        return static_cast<int>(got);
    }

    void write_empty_box(std::uint8_t* to, std::size_t bytes) const {
        std::uint8_t head[box_head] = {0, 0, 0, 1, 'f', 'r', 'e', 'e'};
        const auto size = static_cast<std::uint64_t>(shown_from_ - head_until_);
        for (int i = 0; i < 8; ++i) head[8 + i] = static_cast<std::uint8_t>(size >> (56 - 8 * i));
        const std::int64_t into = at_ - head_until_;
        for (std::size_t i = 0; i < bytes; ++i) {
            const std::int64_t place = into + static_cast<std::int64_t>(i);
            to[i] = place < box_head ? head[place] : 0;
        }
    }

    static std::int64_t move(void* self, std::int64_t to, int whence) {
        auto& its = *static_cast<growing_fragments*>(self);
        if (whence == AVSEEK_SIZE) return its.shown_until_;
        if (whence == SEEK_CUR) to += its.at_;
        if (whence == SEEK_END) to += its.shown_until_;
        if (to < 0) return AVERROR(EINVAL);
        return its.at_ = to;
    }

    const std::string path_;
    int file_ = -1;
    std::int64_t walked_until_ = 0;  // all boxes before it are whole
    std::int64_t head_until_ = 0;
    bool has_fragments_ = false;
    std::int64_t whole_until_ = 0;  // the last whole fragment's end
    std::int64_t shown_from_ = 0;   // what the reader is shown beside the head
    std::int64_t shown_until_ = 0;
    std::int64_t at_ = 0;
    AVIOContext* bytes_ = nullptr;
    AVFormatContext* format_ = nullptr;
    int video_ = -1;
};

}  // namespace

struct growing_movie::implementation {
    explicit implementation(const std::string& path) : fragments(path) {}

    growing_fragments fragments;
    decoder pictures{fragments, movie_could_not_be_read};
    AVRational time_base{1, 1};
    ffmpeg_owner<AVFrame> frame{av_frame_alloc()};
    picture_scaler scaler{std::make_shared<picture_pool>()};
    std::optional<std::int64_t> first_stamp;
};

growing_movie::growing_movie(std::unique_ptr<implementation> made) : its_(std::move(made)) {}
growing_movie::~growing_movie() = default;

result<std::unique_ptr<growing_movie>> growing_movie::open(const std::string& path) {
    auto made = std::make_unique<implementation>(path);
    const auto opened = made->fragments.open();
    if (!opened) return opened.error();
    if (!opened.value()) return movie_has_no_fragment_yet(path);
    const AVStream& video = made->fragments.video();
    made->time_base = video.time_base;
    if (auto ready = made->pictures.open(video, 1); !ready) return ready.error();
    return std::unique_ptr<growing_movie>(new growing_movie(std::move(made)));
}

result<picture_pointer> growing_movie::next(int width, int height) {
    implementation& its = *its_;
    const auto decoded = its.pictures.next(*its.frame);
    if (!decoded) return decoded.error();
    if (!decoded.value()) return picture_pointer();
    const AVFrame& frame = *its.frame;
    auto scaled =
        its.scaler.scale(frame, width > 0 ? width : frame.width, height > 0 ? height : frame.height, 0);
    if (!scaled) return movie_cannot_be_shown(its.fragments.path(), scaled.error());
    picture& shown = *scaled.value();
    if (!its.first_stamp) its.first_stamp = frame.best_effort_timestamp;
    shown.stamp = frame.best_effort_timestamp - *its.first_stamp;
    shown.time = static_cast<double>(shown.stamp) * seconds_of(its.time_base);
    return picture_pointer(std::move(scaled).value());
}

}  // namespace vistels
