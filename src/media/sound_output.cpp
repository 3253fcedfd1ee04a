// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound_output.h"

#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>

#include "media/movie_failures.h"
#include "media/sound_reader.h"
#include "util/file_system.h"

namespace vistels {

namespace {

constexpr GstClockTime start_limit_ns = 3 * GST_SECOND;

// A device of ALSA that plays.
bool has_sound_card() {
    const auto devices = names_in_folder("/dev/snd");
    return std::any_of(devices.begin(), devices.end(), [](const std::string& name) {
        return name.starts_with("pcm") && name.ends_with("p");
    });
}

// Without a sound card OpenAL has none either, and both it and ALSA below it say so on standard error when
// its sink is tried.
void pass_over_openal() {
    GstPluginFeature* const sink =
        gst_registry_find_feature(gst_registry_get(), "openalsink", GST_TYPE_ELEMENT_FACTORY);
    if (sink == nullptr) return;
    gst_plugin_feature_set_rank(sink, GST_RANK_NONE);
    gst_object_unref(sink);
}

bool start_gstreamer() {
    if (gst_init_check(nullptr, nullptr, nullptr) == 0) return false;
    if (!has_sound_card()) pass_over_openal();
    return true;
}

// GStreamer is started once in a program; the standard library guards the first call.
bool gstreamer_is_there() {
    static const bool is_there = start_gstreamer();
    return is_there;
}

struct pipeline_deleter {
    void operator()(GstElement* held) const {
        gst_element_set_state(held, GST_STATE_NULL);
        gst_object_unref(held);
    }
};
using pipeline_owner = std::unique_ptr<GstElement, pipeline_deleter>;

pipeline_owner make_pipeline(const std::string& sink) {
    const std::string caps =
        "audio/x-raw,format=F32LE,layout=interleaved,rate=" + std::to_string(sound_samples_per_second) +
        ",channels=" + std::to_string(sound_channels);
    const std::string text = "appsrc name=from format=time is-live=false max-bytes=0 caps=\"" + caps +
                             "\" ! audioconvert ! audioresample ! volume name=volume ! " + sink;
    return pipeline_owner(gst_parse_launch(text.c_str(), nullptr));
}

}  // namespace

struct sound_output::implementation {
    pipeline_owner pipeline;
    GstElement* from = nullptr;  // owned by the pipeline, referenced by us
    GstElement* volume = nullptr;
    bool silent = false;
    std::atomic<std::uint64_t> added{0};  // frames

    ~implementation() {
        if (from != nullptr) gst_object_unref(from);
        if (volume != nullptr) gst_object_unref(volume);
    }
    bool start(const std::string& sink);
};

// Whether the sink can be opened is known once the pipeline is ready; it plays with the first sound.
bool sound_output::implementation::start(const std::string& sink) {
    pipeline = make_pipeline(sink);
    if (!pipeline) return false;
    if (gst_element_set_state(pipeline.get(), GST_STATE_READY) == GST_STATE_CHANGE_FAILURE ||
        gst_element_get_state(pipeline.get(), nullptr, nullptr, start_limit_ns) != GST_STATE_CHANGE_SUCCESS) {
        return false;
    }
    from = gst_bin_get_by_name(GST_BIN(pipeline.get()), "from");
    volume = gst_bin_get_by_name(GST_BIN(pipeline.get()), "volume");
    return gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
}

sound_output::sound_output(std::unique_ptr<implementation> made) : its_(std::move(made)) {}
sound_output::~sound_output() = default;

result<std::unique_ptr<sound_output>> sound_output::open() {
    if (!gstreamer_is_there()) return sound_system_does_not_start();
    // The automatic sink falls back to one that takes sound as fast as it comes, which would be no clock.
    for (const char* sink : {"autoaudiosink", "fakesink sync=true"}) {
        auto made = std::make_unique<implementation>();
        made->silent = sink != std::string("autoaudiosink");
        if (!made->start(sink)) continue;
        if (!made->silent) {
            GstElement* fallen_back = gst_bin_get_by_name(GST_BIN(made->pipeline.get()), "fake-audio-sink");
            if (fallen_back != nullptr) {
                gst_object_unref(fallen_back);
                continue;
            }
        }
        return std::unique_ptr<sound_output>(new sound_output(std::move(made)));
    }
    return sound_device_does_not_open();
}

result<void> sound_output::add(const float* interleaved, std::size_t frames) {
    const std::size_t bytes = frames * sound_channels * sizeof(float);
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, bytes, nullptr);
    if (buffer == nullptr) return memory_for_sound_is_short();
    gst_buffer_fill(buffer, 0, interleaved, bytes);
    const std::uint64_t before = its_->added;
    GST_BUFFER_PTS(buffer) = gst_util_uint64_scale(before, GST_SECOND, sound_samples_per_second);
    GST_BUFFER_DURATION(buffer) = gst_util_uint64_scale(frames, GST_SECOND, sound_samples_per_second);
    if (gst_app_src_push_buffer(GST_APP_SRC(its_->from), buffer) != GST_FLOW_OK) {
        return sound_device_is_stopped();
    }
    its_->added = before + frames;
    return {};
}

void sound_output::flush() {
    gst_element_send_event(its_->pipeline.get(), gst_event_new_flush_start());
    gst_element_send_event(its_->pipeline.get(), gst_event_new_flush_stop(TRUE));
    its_->added = 0;
}

double sound_output::heard_seconds() const {
    gint64 position = 0;
    if (gst_element_query_position(its_->pipeline.get(), GST_FORMAT_TIME, &position) == 0) return 0;
    return std::clamp(static_cast<double>(position) / static_cast<double>(GST_SECOND), 0.0, added_seconds());
}

double sound_output::added_seconds() const {
    return static_cast<double>(its_->added) / sound_samples_per_second;
}

void sound_output::set_volume(double volume) {
    g_object_set(its_->volume, "volume", std::clamp(volume, 0.0, 1.0), nullptr);
}

}  // namespace vistels
