// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/encoder.h"

namespace vistels {

result<void> encoder::find(const char* name) {
    const AVCodec* const codec = avcodec_find_encoder_by_name(name);
    if (codec == nullptr) return file_.failed(AVERROR_ENCODER_NOT_FOUND);
    context_.reset(avcodec_alloc_context3(codec));
    if (!context_) return file_.failed(AVERROR(ENOMEM));
    return {};
}

result<void> encoder::open(const std::vector<std::pair<std::string, std::string>>& options) {
    if (file_.has_global_headers()) context_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    AVDictionary* given = nullptr;
    for (const auto& [name, value] : options) {
        if (!value.empty()) av_dict_set(&given, name.c_str(), value.c_str(), 0);
    }
    const int error = avcodec_open2(context_.get(), nullptr, &given);
    av_dict_free(&given);
    if (error < 0) return file_.failed(error);
    auto track = file_.add_track(*context_);
    if (!track) return track.error();
    track_ = track.value();
    return {};
}

result<AVFrame*> encoder::writable_frame() {
    if (frame_) {
        const int error = av_frame_make_writable(frame_.get());
        return error < 0 ? result<AVFrame*>(file_.failed(error)) : result<AVFrame*>(frame_.get());
    }
    frame_.reset(av_frame_alloc());
    const bool is_sound = context_->codec_type == AVMEDIA_TYPE_AUDIO;
    frame_->format = is_sound ? static_cast<int>(context_->sample_fmt) : static_cast<int>(context_->pix_fmt);
    frame_->width = context_->width;
    frame_->height = context_->height;
    frame_->color_range = context_->color_range;
    frame_->colorspace = context_->colorspace;
    frame_->sample_rate = context_->sample_rate;
    frame_->nb_samples = context_->frame_size;
    int error = is_sound ? av_channel_layout_copy(&frame_->ch_layout, &context_->ch_layout) : 0;
    if (error >= 0) error = av_frame_get_buffer(frame_.get(), 0);
    return error < 0 ? result<AVFrame*>(file_.failed(error)) : result<AVFrame*>(frame_.get());
}

result<void> encoder::encode(const AVFrame* frame) {
    int error = avcodec_send_frame(context_.get(), frame);
    if (error < 0) return file_.failed(error);
    for (;;) {
        error = avcodec_receive_packet(context_.get(), packet_.get());
        if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return {};
        if (error < 0) return file_.failed(error);
        if (packet_ticks_ > 0) packet_->duration = packet_ticks_;
        if (auto written = file_.write(*packet_, *track_, context_->time_base); !written) return written;
    }
}

}  // namespace vistels
