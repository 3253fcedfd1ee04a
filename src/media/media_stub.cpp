// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the folder answers when the program was built without FFmpeg and GStreamer.
#include "media/coded_pictures.h"
#include "media/deinterlace.h"
#include "media/frame_reader.h"
#include "media/growing_movie.h"
#include "media/movie_failures.h"
#include "media/movie_writer.h"
#include "media/packet_index.h"
#include "media/sound_output.h"
#include "media/sound_reader.h"
#include "media/sound_speed.h"

namespace vistels {

namespace {

failure without_media(const std::string& path) {
    return movie_without_media(path);
}

failure without_media() {
    return built_without_media();
}

}  // namespace

struct frame_reader::implementation {
    movie_information information;
};
struct growing_movie::implementation {};
struct movie_writer::implementation {};
struct sound_reader::implementation {};
struct sound_output::implementation {};
struct sound_speed::implementation {};

result<movie_information> probe_movie(const std::string& path) {
    return without_media(path);
}
result<void> deinterlace_movie(const std::string& from, const std::string&, const std::string&, job&) {
    return without_media(from);
}
result<void> show_coded_pictures(const std::string& from, const std::string&, const std::vector<double>&,
                                 double, job&) {
    return without_media(from);
}
result<packet_index> read_packet_index(const std::string& path) {
    return without_media(path);
}
result<picture> read_still_picture(const std::string& path, int, int) {
    return without_media(path);
}
result<void> write_png(const picture&, const std::string& path) {
    return without_media(path);
}

frame_reader::~frame_reader() = default;
result<std::unique_ptr<frame_reader>> frame_reader::open(const std::string& path, int,
                                                         std::shared_ptr<picture_pool>) {
    return without_media(path);
}
const movie_information& frame_reader::information() const {
    return its_->information;
}
double frame_reader::seconds_per_tick() const {
    return 1;
}
std::int64_t frame_reader::stamp_at(double) const {
    return 0;
}
double frame_reader::seconds_at(std::int64_t) const {
    return 0;
}
result<picture_pointer> frame_reader::frame_at(double, int, int) {
    return without_media();
}
result<picture_pointer> frame_reader::next(int, int) {
    return without_media();
}
result<void> frame_reader::seek(std::int64_t, std::int64_t) {
    return without_media();
}
std::optional<std::int64_t> frame_reader::key_stamp(std::int64_t) const {
    return std::nullopt;
}
bool frame_reader::should_seek(std::int64_t) const {
    return false;
}
bool frame_reader::is_certain() const {
    return true;
}
result<bool> frame_reader::advance() {
    return without_media();
}
std::optional<std::int64_t> frame_reader::next_stamp() const {
    return std::nullopt;
}
std::int64_t frame_reader::current_stamp() const {
    return 0;
}
std::int64_t frame_reader::current_until() const {
    return 0;
}
result<picture_pointer> frame_reader::paint(int, int) {
    return without_media();
}
void frame_reader::set_decoded(frames_decoded) {}
void frame_reader::set_needed_from(std::int64_t) {}
void frame_reader::set_spacing(std::int64_t) {}

growing_movie::~growing_movie() = default;
result<std::unique_ptr<growing_movie>> growing_movie::open(const std::string& path) {
    return without_media(path);
}
result<picture_pointer> growing_movie::next(int, int) {
    return without_media();
}

movie_writer::~movie_writer() = default;
result<std::unique_ptr<movie_writer>> movie_writer::create(const std::string& path,
                                                           const movie_writer_settings&) {
    return without_media(path);
}
result<void> movie_writer::add_picture(const std::uint8_t*, int) {
    return without_media();
}
result<void> movie_writer::add_picture_at(const std::uint8_t*, int, double) {
    return without_media();
}
result<void> movie_writer::add_sound(const float*, std::size_t) {
    return without_media();
}
result<void> movie_writer::finish() {
    return without_media();
}

sound_reader::~sound_reader() = default;
result<std::unique_ptr<sound_reader>> sound_reader::open(const std::string& path) {
    return without_media(path);
}
result<void> sound_reader::read(double, float*, std::size_t) {
    return without_media();
}

sound_speed::~sound_speed() = default;
result<std::unique_ptr<sound_speed>> sound_speed::open(double, bool) {
    return without_media();
}
result<void> sound_speed::add(const float*, std::size_t) {
    return without_media();
}
std::size_t sound_speed::take(float*, std::size_t) {
    return 0;
}

sound_output::~sound_output() = default;
result<std::unique_ptr<sound_output>> sound_output::open() {
    return without_media();
}
result<void> sound_output::add(const float*, std::size_t) {
    return without_media();
}
void sound_output::flush() {}
double sound_output::heard_seconds() const {
    return 0;
}
double sound_output::added_seconds() const {
    return 0;
}
void sound_output::set_volume(double) {}

}  // namespace vistels
