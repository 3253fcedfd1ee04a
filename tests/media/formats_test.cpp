// SPDX-License-Identifier: GPL-3.0-or-later
// Movies of every kind that cameras and programs write: each frame is found by its time.
#include <gtest/gtest.h>

#include "media/frame_reader.h"

#if VISTELS_HAVE_MEDIA

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

#include <cstring>
#include <memory>
#include <vector>

#include "support/coded_movie.h"
#include "support/temporary_folder.h"

namespace vistels {
namespace {

using namespace vistels::testing;

constexpr int width = 320;
constexpr int height = 240;
constexpr int frames = 50;
constexpr int frame_rate = 25;

struct codec_kind {
    const char* encoder;
    AVPixelFormat pixels;
    const char* options;  // of the encoder, as key=value:key=value
    const char* endings;  // of the files that hold it
};

constexpr codec_kind kinds[] = {
    {"libx264", AV_PIX_FMT_YUV420P, "preset=ultrafast:bf=2", "mp4 mov mkv avi ts"},
    {"libx265", AV_PIX_FMT_YUV420P, "preset=ultrafast:x265-params=log-level=none", "mp4 mov mkv ts"},
    {"libvpx-vp9", AV_PIX_FMT_YUV420P, "deadline=realtime:cpu-used=8", "mp4 mkv"},
    {"libsvtav1", AV_PIX_FMT_YUV420P, "preset=12", "mp4 mkv"},
    {"libaom-av1", AV_PIX_FMT_YUV420P, "cpu-used=8:usage=realtime", "mp4 mkv"},
    {"prores_ks", AV_PIX_FMT_YUV422P10LE, "", "mov mkv"},
    {"mjpeg", AV_PIX_FMT_YUVJ420P, "", "mp4 mov mkv avi"},
};

struct deleter {
    void operator()(AVCodecContext* held) const { avcodec_free_context(&held); }
    void operator()(AVFrame* held) const { av_frame_free(&held); }
    void operator()(AVPacket* held) const { av_packet_free(&held); }
};

// The number as light and dark squares in the brightness, on a pattern that moves.
void draw(AVFrame& frame, int number) {
    std::vector<std::uint8_t> bgra(static_cast<std::size_t>(width * height * 4));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            bgra[static_cast<std::size_t>((y * width + x) * 4)] =
                static_cast<std::uint8_t>(60 + ((x + 3 * number) / 8 * 13 + y / 8 * 29) % 120);
        }
    }
    draw_frame_number(bgra.data(), width, static_cast<unsigned>(number));
    const bool is_wide = frame.format == AV_PIX_FMT_YUV422P10LE;
    for (int plane = 0; plane < 3; ++plane) {
        const int rows = plane == 0 || is_wide ? height : height / 2;
        const int columns = plane == 0 ? width : width / 2;
        for (int y = 0; y < rows; ++y) {
            std::uint8_t* const row =
                frame.data[plane] + static_cast<std::ptrdiff_t>(y) * frame.linesize[plane];
            for (int x = 0; x < columns; ++x) {
                const std::uint8_t value =
                    plane == 0 ? bgra[static_cast<std::size_t>((y * width + x) * 4)] : 128;
                if (is_wide) {
                    const auto ten_bits = static_cast<std::uint16_t>(value << 2U);
                    std::memcpy(row + x * 2, &ten_bits, 2);
                } else {
                    row[x] = value;
                }
            }
        }
    }
}

class written_movie {
  public:
    // False when a library refuses.
    bool write(const std::string& path, const codec_kind& kind) {
        const AVCodec* const codec = avcodec_find_encoder_by_name(kind.encoder);
        if (avformat_alloc_output_context2(&file_, nullptr, nullptr, path.c_str()) < 0) return false;
        encoder_.reset(avcodec_alloc_context3(codec));
        encoder_->width = width;
        encoder_->height = height;
        encoder_->pix_fmt = kind.pixels;
        encoder_->time_base = {1, frame_rate};
        encoder_->framerate = {frame_rate, 1};
        encoder_->gop_size = 20;
        encoder_->thread_count = 1;
        encoder_->bit_rate = 2'000'000;
        if (kind.pixels == AV_PIX_FMT_YUVJ420P) encoder_->color_range = AVCOL_RANGE_JPEG;
        if ((file_->oformat->flags & AVFMT_GLOBALHEADER) != 0) encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        AVDictionary* options = nullptr;
        av_dict_parse_string(&options, kind.options, "=", ":", 0);
        const int opened = avcodec_open2(encoder_.get(), codec, &options);
        av_dict_free(&options);
        stream_ = opened < 0 ? nullptr : avformat_new_stream(file_, nullptr);
        if (stream_ == nullptr) return false;
        avcodec_parameters_from_context(stream_->codecpar, encoder_.get());
        stream_->time_base = encoder_->time_base;
        stream_->avg_frame_rate = encoder_->framerate;
        if (avio_open(&file_->pb, path.c_str(), AVIO_FLAG_WRITE) < 0) return false;
        if (avformat_write_header(file_, nullptr) < 0) return false;
        const std::unique_ptr<AVFrame, deleter> frame(av_frame_alloc());
        frame->format = kind.pixels;
        frame->width = width;
        frame->height = height;
        if (av_frame_get_buffer(frame.get(), 0) < 0) return false;
        for (int number = 0; number < frames; ++number) {
            if (av_frame_make_writable(frame.get()) < 0) return false;
            draw(*frame, number);
            frame->pts = number;
            if (!encode(frame.get())) return false;
        }
        return encode(nullptr) && av_write_trailer(file_) >= 0;
    }
    ~written_movie() {
        if (file_ != nullptr && file_->pb != nullptr) avio_closep(&file_->pb);
        avformat_free_context(file_);
    }

  private:
    bool encode(AVFrame* frame) {
        if (avcodec_send_frame(encoder_.get(), frame) < 0) return false;
        const std::unique_ptr<AVPacket, deleter> packet(av_packet_alloc());
        while (avcodec_receive_packet(encoder_.get(), packet.get()) >= 0) {
            packet->duration = 1;
            av_packet_rescale_ts(packet.get(), encoder_->time_base, stream_->time_base);
            packet->stream_index = stream_->index;
            if (av_interleaved_write_frame(file_, packet.get()) < 0) return false;
        }
        return true;
    }

    AVFormatContext* file_ = nullptr;
    std::unique_ptr<AVCodecContext, deleter> encoder_;
    AVStream* stream_ = nullptr;
};

std::vector<std::string> words_of(const std::string& text) {
    std::vector<std::string> words;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

TEST(formats, every_frame_is_found_by_its_time) {
    const temporary_folder folder;
    for (const codec_kind& kind : kinds) {
        if (avcodec_find_encoder_by_name(kind.encoder) == nullptr) continue;  // this machine cannot make one
        for (const std::string& ending : words_of(kind.endings)) {
            const std::string path = folder / (std::string(kind.encoder) + "." + ending);
            SCOPED_TRACE(path);
            {
                written_movie written;
                ASSERT_TRUE(written.write(path, kind));
            }
            const auto opened = frame_reader::open(path);
            ASSERT_TRUE(opened.ok()) << opened.message();
            frame_reader& reader = *opened.value();
            for (const int number : {0, 1, 19, 20, 21, 33, 7, 45, 2, 48, 30, 29, 0}) {
                const auto shown = reader.frame_at(static_cast<double>(number) / frame_rate, width, height);
                ASSERT_TRUE(shown.ok()) << shown.message();
                EXPECT_EQ(read_frame_number(*shown.value()), number);
            }
            int number = 0;
            for (auto shown = reader.frame_at(0, width, height); shown.ok() && shown.value();
                 shown = reader.next(width, height)) {
                EXPECT_EQ(read_frame_number(*shown.value()), number++);
            }
            EXPECT_EQ(number, frames);
        }
    }
}

}  // namespace
}  // namespace vistels

#endif
