// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/headless_playback.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "cli/command_failures.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Pictures.h"
#include "video/video_coll_Playback.h"

namespace vistels {

namespace {

constexpr double longest_wait_seconds = 60;
constexpr int largest_side = 3840;
constexpr int bytes_a_pixel = 4;

// Whole pixels of a side; even, as most formats want it.
int whole_side(double pixels) {
    return std::clamp(static_cast<int>(std::lround(pixels / 2)) * 2, 2, largest_side);
}

picture black_picture(int width, int height) {
    constexpr int row_alignment = 64;
    picture black;
    black.width = width;
    black.height = height;
    black.stride = (width * bytes_a_pixel + row_alignment - 1) / row_alignment * row_alignment;
    black.bytes.assign(static_cast<std::size_t>(black.stride) * static_cast<std::size_t>(height), 0);
    for (std::size_t alpha = 3; alpha < black.bytes.size(); alpha += bytes_a_pixel) black.bytes[alpha] = 255;
    return black;
}

// What fits of `shown` with its upper left corner at (left, top).
void paint(picture& on, const picture& shown, int left, int top) {
    const int width = std::min(shown.width, on.width - left);
    const int height = std::min(shown.height, on.height - top);
    if (width <= 0) return;
    for (int y = 0; y < height; ++y) {
        auto* to = on.bytes.data() + static_cast<std::ptrdiff_t>(top + y) * on.stride + left * bytes_a_pixel;
        std::memcpy(to, shown.row(y), static_cast<std::size_t>(width) * bytes_a_pixel);
    }
}

// Lays `over` on `on` by its own opacity times `opacity`; what lies outside is left out.
void blend(picture& on, const picture& over, int left, int top, double opacity) {
    const int first_y = std::max(0, -top);
    const int last_y = std::min(over.height, on.height - top);
    const int first_x = std::max(0, -left);
    const int last_x = std::min(over.width, on.width - left);
    for (int y = first_y; y < last_y; ++y) {
        for (int x = first_x; x < last_x; ++x) {
            const auto* from = over.row(y) + static_cast<std::ptrdiff_t>(x) * bytes_a_pixel;
            auto* to = on.bytes.data() + static_cast<std::ptrdiff_t>(top + y) * on.stride +
                       static_cast<std::ptrdiff_t>(left + x) * bytes_a_pixel;
            const double share = opacity * from[3] / 255.0;
            for (int channel = 0; channel < 3; ++channel) {
                to[channel] =
                    static_cast<std::uint8_t>(std::lround(share * from[channel] + (1 - share) * to[channel]));
            }
        }
    }
}

// The vistel's overlay over its picture, which stands in `area` (pixels).
result<void> paint_overlay(picture& on, const single_Vistel_CTR& vistel, const rectangle& area) {
    const auto overlay = vistel.overlay();
    const std::string path = overlay_path(vistel);
    if (path.empty()) return {};
    const rectangle frame{area.x + overlay->frame.x * area.width, area.y + overlay->frame.y * area.height,
                          overlay->frame.width * area.width, overlay->frame.height * area.height};
    const auto pixels = [](double length) {
        return static_cast<int>(std::lround(std::clamp(length, -1.0 * largest_side, 1.0 * largest_side)));
    };
    if (!(frame.width >= 1) || !(frame.height >= 1)) return {};
    const auto over = read_still_picture(path, pixels(frame.width), pixels(frame.height));
    if (!over) return over.error();
    blend(on, over.value(), pixels(frame.x + (frame.width - over.value().width) / 2),
          pixels(frame.y + (frame.height - over.value().height) / 2), overlay->opacity);
    return {};
}

}  // namespace

result<void> headless_playback::open(const std::string& folder, const home_places& places,
                                     const std::string& vistel) {
    auto loaded = load_collection(folder, places.local_vistels());
    if (!loaded) return loaded.error();
    folder_ = folder;
    collection_ = std::move(loaded.value().collection);
    played_ = playback_vistels_of(collection_);
    // Of one vistel alone, too, every time of the collection can be shown.
    double first = 0;
    double last = 0;
    for (const auto& one : played_) {
        const double duration = one.parts.empty() ? 0 : one.parts.back().start + one.parts.back().duration;
        first = std::min(first, -one.lead);
        last = std::max(last, duration - one.lead);
    }
    playback_.set_least_range(first, last);
    if (!vistel.empty()) {
        const auto chosen = collection_.find_vistel(vistel);
        if (!chosen) return collection_has_no_such_vistel(folder, vistel);
        std::erase_if(played_, [&](const auto& one) { return one.uuid != chosen->uuid(); });
    }
    if (played_.empty()) return collection_has_no_vistels(folder);
    playback_.set_volume(0);
    playback_.set_vistels(played_);
    if (auto settled = seek(collection_.movie_time()); !settled) return settled;
    failure first_found;
    for (const auto& one : played_) {
        const failure found = problem(one.uuid);
        if (!found) return {};
        if (!first_found) first_found = found;
    }
    return no_vistel_can_be_shown(folder, first_found);
}

void headless_playback::set_view_sizes(int width, int height) {
    for (const auto& vistel : played_) playback_.set_view_size(vistel.uuid, width, height);
}

result<void> headless_playback::seek(double collection_seconds) {
    bool done = false;
    playback_.seek(collection_seconds, [&done] { done = true; });
    const bool settled = loop_.run_until([&] { return done || work_.is_cancelled(); }, longest_wait_seconds);
    if (work_.is_cancelled()) return seeking_was_cancelled(folder_);
    if (!settled) return frames_did_not_come(folder_);
    return {};
}

// A frame in the size before counts as shown until the vistel's queue has come to the new one.
result<void> headless_playback::seek_in(const std::map<std::string, size_in_pixels>& sizes) {
    if (auto settled = seek(playback_.collection_time()); !settled) return settled;
    const bool made = loop_.run_until(
        [&] {
            return work_.is_cancelled() || std::all_of(sizes.begin(), sizes.end(), [&](const auto& wanted) {
                       const auto shown = playback_.picture(wanted.first);
                       return playback_.state(wanted.first) == vistel_state::unreadable ||
                              (shown && shown->width == wanted.second.width &&
                               shown->height == wanted.second.height);
                   });
        },
        longest_wait_seconds);
    if (work_.is_cancelled()) return showing_was_cancelled(folder_);
    if (!made) return frames_did_not_come(folder_);
    return {};
}

void headless_playback::run(double seconds, const std::function<bool()>& done) {
    loop_.run_until([&] { return work_.is_cancelled() || done(); }, seconds);
}

std::optional<double> headless_playback::frame_time(const std::string& vistel) const {
    return playback_.state(vistel) == vistel_state::showing ? playback_.picture_seconds(vistel)
                                                            : std::nullopt;
}

failure headless_playback::problem(const std::string& vistel) const {
    const failure from_playback = playback_.problem(vistel);
    return from_playback ? from_playback : collection_.find_vistel(vistel)->problem();
}

rectangle headless_playback::frame_of(const std::string& vistel) const {
    if (played_.size() == 1) return {0, 0, 1, 1};
    return collection_.find_vistel(vistel)->proportion_rect().value_or(rectangle{0, 0, 1, 1});
}

result<picture> headless_playback::compose() {
    // As large as the movies are, so that none is enlarged.
    double width = 0;
    double height = 0;
    for (const auto& vistel : played_) {
        const auto shown = playback_.picture(vistel.uuid);
        const auto frame = frame_of(vistel.uuid);
        if (!shown || !(frame.width > 0) || !(frame.height > 0)) continue;
        width = std::max(width, shown->width / frame.width);
        height = std::max(height, shown->height / frame.height);
    }
    if (width <= 0 || height <= 0) {
        constexpr int plain_width = 1280;
        constexpr int plain_height = 720;
        return black_picture(plain_width, plain_height);
    }
    const double shrink = std::min({1.0, largest_side / width, largest_side / height});
    picture composed = black_picture(whole_side(width * shrink), whole_side(height * shrink));
    std::map<std::string, size_in_pixels> sizes;
    for (const auto& vistel : played_) {
        const auto shown = playback_.picture(vistel.uuid);
        if (!shown) continue;
        const auto frame = frame_of(vistel.uuid);
        const double scale = std::min(frame.width * composed.width / shown->width,
                                      frame.height * composed.height / shown->height);
        sizes[vistel.uuid] = {whole_side(shown->width * scale), whole_side(shown->height * scale)};
        playback_.set_view_size(vistel.uuid, sizes[vistel.uuid].width, sizes[vistel.uuid].height);
    }
    if (auto settled = seek_in(sizes); !settled) return settled.error();
    for (const auto& vistel : played_) {
        const auto shown = playback_.picture(vistel.uuid);
        if (!shown) continue;
        const auto frame = frame_of(vistel.uuid);
        const double left = frame.x * composed.width + (frame.width * composed.width - shown->width) / 2;
        const double top = frame.y * composed.height + (frame.height * composed.height - shown->height) / 2;
        const auto x = static_cast<int>(std::max(left, 0.0));
        const auto y = static_cast<int>(std::max(top, 0.0));
        paint(composed, *shown, x, y);
        const auto record = collection_.find_vistel(vistel.uuid);
        const auto painted =
            paint_overlay(composed, *record,
                          {static_cast<double>(x), static_cast<double>(y), static_cast<double>(shown->width),
                           static_cast<double>(shown->height)});
        if (!painted) return painted.error();
    }
    return composed;
}

}  // namespace vistels
