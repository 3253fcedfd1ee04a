// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/filming.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <numeric>
#include <optional>

#include "demo/demo_failures.h"
#include "demo/film_camera.h"
#include "demo/frame_painter.h"
#include "demo/sound_mixer.h"
#include "media/movie_writer.h"
#include "util/serial_queue.h"

namespace vistels::demo {

namespace {

constexpr std::size_t sound_frames_per_picture = sound_rate / film_frame_rate;
constexpr int frames_per_report = 15;

// What the workers share.
class film_crew {
  public:
    film_crew(const game_record& game, const std::vector<film_order>& orders, job& work)
        : game_(game), work_(work), orders_(in_turn(orders)) {
        for (const film_order* order : orders_)
            for (const film_part& part : order->parts) frames_to_do_ += part.frames;
    }

    // Films one order after another until none is left. Any number of threads at once.
    void film_what_is_left() {
        while (!ends()) {
            const std::size_t turn = next_++;
            if (turn >= orders_.size()) return;
            const result<void> filmed = film(*orders_[turn]);
            if (!filmed) fail(filmed.error());
        }
    }

    result<void> outcome() const {
        if (failure_) return failure_;
        if (work_.is_cancelled()) return demo_was_cancelled();
        return {};
    }

  private:
    // Cameras that follow the ball take longest; begun first, they keep nobody waiting at the end.
    static std::vector<const film_order*> in_turn(const std::vector<film_order>& orders) {
        std::vector<const film_order*> sorted;
        for (const film_order& order : orders) sorted.push_back(&order);
        std::stable_sort(sorted.begin(), sorted.end(), [](const film_order* a, const film_order* b) {
            return film_camera_at(a->camera).follows && !film_camera_at(b->camera).follows;
        });
        return sorted;
    }

    bool ends() const { return work_.is_cancelled() || failed_; }

    void fail(failure reason) {
        const std::lock_guard<std::mutex> guard(mutex_);
        if (!failure_) failure_ = std::move(reason);
        failed_ = true;
    }

    void report(int frames) {
        const std::lock_guard<std::mutex> guard(mutex_);
        frames_done_ += frames;
        work_.set_progress(static_cast<double>(frames_done_) / std::max(1, frames_to_do_));
    }

    result<void> film(const film_order& order) {
        const film_camera camera = film_camera_at(order.camera);
        const auto seed = static_cast<std::uint64_t>(order.camera) + 1;
        frame_painter painter(game_, camera, seed);
        const sound_mixer sound(game_, camera, seed);
        for (const film_part& part : order.parts) {
            result<void> filmed = film_movie(order, part, painter, sound);
            if (!filmed || ends()) return filmed;
        }
        return {};
    }

    result<void> film_movie(const film_order& order, const film_part& part, frame_painter& painter,
                            const sound_mixer& sound) {
        movie_writer_settings settings;
        settings.width = film_width;
        settings.height = film_height;
        settings.frame_rate = film_frame_rate;
        settings.threads = 2;  // so that the last camera to end takes both processors
        // The fastest preset with one fineness for all pictures: a bit rate to be kept would make the encoder
        // look at each of them first, which costs a fifth of its time. Without the deblocking that the preset
        // leaves out, the grass would fall into squares.
        settings.preset = "ultrafast";
        settings.encoder_options = "deblock=1:qp=24";
        settings.sound_coder = "fast";
        settings.sound_rate = sound_rate;
        settings.sound_channels = sound_channels;
        auto created = movie_writer::create(part.path, settings);
        if (!created) return created.error();
        const std::unique_ptr<movie_writer> writer = std::move(created).value();
        for (int done = 0; done < part.frames; ++done) {
            if (ends()) return {};
            const int frame = part.first_frame + done;
            const double now = order.starts_at + static_cast<double>(frame) / film_frame_rate;
            auto added =
                writer->add_picture(painter.paint(now, static_cast<std::uint32_t>(frame)), painter.stride());
            if (!added) return added;
            const std::vector<float> heard = sound.mix(now, sound_frames_per_picture);
            added = writer->add_sound(heard.data(), sound_frames_per_picture);
            if (!added) return added;
            if ((done + 1) % frames_per_report == 0) report(frames_per_report);
        }
        report(part.frames % frames_per_report);
        return writer->finish();
    }

    const game_record& game_;
    job& work_;
    const std::vector<const film_order*> orders_;
    int frames_to_do_ = 0;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<bool> failed_ = false;
    std::mutex mutex_;  // guards what follows
    int frames_done_ = 0;
    failure failure_;
};

}  // namespace

result<void> film_game(const game_record& game, const std::vector<film_order>& orders, job& work) {
    film_crew crew(game, orders, work);
    {
        // One more than processors are counted on, so that none of them waits while the last camera films.
        serial_queue first("demo film 1");
        serial_queue second("demo film 2");
        serial_queue third("demo film 3");
        for (serial_queue* queue : {&first, &second, &third})
            queue->post([&crew] { crew.film_what_is_left(); });
        for (serial_queue* queue : {&first, &second, &third}) queue->drain();
    }
    return crew.outcome();
}

}  // namespace vistels::demo
