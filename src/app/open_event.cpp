// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/open_event.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "app/settings.h"
#include "logger/logger_Dict_funcs.h"
#include "logger/press_engine.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "util/uuid.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Playback.h"

namespace vistels {

namespace {

constexpr double tick_seconds = 1.0 / 60;
// How far the clock of a timeline without a collection runs.
constexpr double longest_event_seconds = 24 * 3600;

void add_all(std::vector<std::string>& to, const std::vector<std::string>& from) {
    std::copy(from.begin(), from.end(), std::back_inserter(to));
}

// What would be saved, but for the time of saving.
property_dictionary record_of(const video_collection_ROOT& collection) {
    return write_collection(collection, 0);
}

bool has_movies(const video_collection_ROOT& collection) {
    const auto vistels = collection.vistels();
    return std::any_of(vistels.begin(), vistels.end(),
                       [](const auto& vistel) { return !vistel->parts().parts.empty(); });
}

// A collection whose record is gone, with copies of it left, is still a collection.
bool is_timeline_alone(const std::string& folder) {
    bool has_timeline = false;
    for (const auto& name : names_in_folder(folder)) {
        if (name.starts_with(collection_file_name)) return false;
        has_timeline = has_timeline || name.starts_with(timeline_file_name);
    }
    return has_timeline;
}

}  // namespace

open_event::open_event(std::string folder, home_places places, run_loop& loop)
    : folder_(std::move(folder)), places_(std::move(places)), loop_(loop) {}

result<std::unique_ptr<open_event>> open_event::open(const std::string& folder, const home_places& places,
                                                     run_loop& loop) {
    std::unique_ptr<open_event> event(new open_event(folder, places, loop));
    if (auto loaded = event->load(); !loaded) return loaded.error();
    return event;
}

open_event::~open_event() {
    if (tick_timer_) loop_.stop_timer(*tick_timer_);
    if (!undo_) return;  // it was not opened
    logger_->release_all(playback_->collection_time());
    // What cannot be saved of the timeline stays in its journal.
    (void)save_all();
    timeline_->set_save_companion({});
}

result<void> open_event::load() {
    has_collection_ = !is_timeline_alone(folder_);
    if (has_collection_) {
        if (auto loaded = load_collection_record(); !loaded) return loaded;
    }
    if (auto opened = open_timeline(); !opened) return opened;
    has_collection_ ? link_records() : name_timeline();
    playback_ = std::make_unique<synchronised_playback>(loop_);
    playback_->set_top_speed(load_playback_top_speed(places_).rate);
    if (!has_collection_) playback_->set_least_range(start_seconds(), longest_event_seconds);
    feed_playback();
    playback_->seek(movie_time_to_restore());
    logger_ = std::make_unique<press_engine>(*timeline_, loop_.time());
    logger_->set_transport(playback_.get());
    logger_->set_earliest_time(playback_->first_time());
    open_code_window();
    fired_ = logger_->fired.connect([this](const button_fired&) { follow_presses(); });
    open_undo();
    return {};
}

result<void> open_event::load_collection_record() {
    auto loaded = load_collection(folder_, places_.local_vistels());
    if (!loaded) return loaded.error();
    collection_ = std::move(loaded.value().collection);
    add_all(messages_, loaded.value().messages);
    saved_record_ = record_of(collection_);
    return {};
}

result<void> open_event::try_to_write(bool take_over) {
    if (auto taken = timeline_->try_to_write(take_over); !taken || !has_collection_) return taken;
    // What the other program saved meanwhile is not written over.
    if (auto loaded = load_collection_record(); !loaded) return loaded;
    link_records();
    feed_playback();
    collection_changed.emit();
    return {};
}

result<void> open_event::open_timeline() {
    auto opened = timeline_document::open(folder_, loop_);
    if (!opened) return opened.error();
    timeline_ = std::move(opened).value();
    add_all(messages_, timeline_->messages());
    // The playhead goes into the timeline's header with every background save, so it outlives a kill.
    edited_ = timeline_->edited.connect([this](const timeline_edit&, const timeline_edit&) {
        if (playback_) timeline_->header().cursor_seconds = playback_->collection_time();
    });
    return {};
}

// The history is kept for each file that is saved; what the journal brought back comes after it.
void open_event::open_undo() {
    const std::string uuid = timeline_->timeline().uuid();
    undo_ = std::make_unique<undo_stack>(*timeline_, loop_);
    take_up_history();
    access_ = timeline_->access_changed.connect([this] { take_up_history(); });
    timeline_->set_save_companion([this, uuid] {
        return [places = places_, uuid, history = undo_->history()](const auto& coming, const auto& earlier) {
            // Without it the steps before are not taken back after closing; the timeline is saved all the
            // same.
            (void)save_undo_history(places, uuid, coming, earlier, history);
        };
    });
}

void open_event::take_up_history() {
    const std::string uuid = timeline_->timeline().uuid();
    undo_->restore(load_undo_history(places_, uuid, timeline_->opened_file()));
    for (const auto& [edit, inverse] : timeline_->take_recovered()) undo_->add(edit, inverse);
}

void open_event::name_timeline() {
    auto& header = timeline_->header();
    if (header.uuid.empty()) header.uuid = timeline_->timeline().uuid();
    if (header.name.empty()) header.name = path_name(folder_);
}

std::string open_event::name() const {
    const std::string& name = has_collection_ ? collection_.name() : timeline_->header().name;
    return name.empty() ? path_name(folder_) : name;
}

// Collection and timeline name each other; an older collection gets what it lacks.
void open_event::link_records() {
    if (collection_.uuid().empty()) collection_.set_uuid(new_uuid());
    if (!collection_.stored().contains("UUID video group quick")) {
        collection_.set_quick_number(new_quick_number());
    }
    if (collection_.name().empty()) collection_.set_name(path_name(folder_));
    if (collection_.linked_timeline().empty()) collection_.set_linked_timeline(timeline_->timeline().uuid());
    if (has_movies(collection_)) collection_.set_state(video_type_state::playback);
    auto& header = timeline_->header();
    if (header.uuid.empty()) header.uuid = timeline_->timeline().uuid();
    if (header.linked_collection.empty()) header.linked_collection = collection_.uuid();
    if (header.name.empty()) header.name = collection_.name();
}

// The later of the two records of the playhead: the collection's, or after a kill the timeline's.
double open_event::movie_time_to_restore() const {
    const auto& header = timeline_->header();
    if (!has_collection_) return header.cursor_seconds;
    const double saved = collection_.stored().number("seconds updated").value_or(0);
    return header.last_saved > saved ? header.cursor_seconds : collection_.movie_time();
}

void open_event::feed_playback() {
    playback_->set_vistels(playback_vistels_of(collection_));
    playback_->set_sound_vistel(collection_.vistel_for_sound());
    playback_->set_enlarged(enlarged());
    feed_volume();
}

void open_event::feed_volume() {
    playback_->set_volume(collection_.volume() * load_application_volume(places_));
}

// A code window that cannot be read is not written over; a general one stands in for it.
void open_event::open_code_window() {
    std::string logger_folder = logger_folder_of(folder_);
    // A timeline's code window may lie beside it.
    if (!has_collection_ && has_button_dict(folder_)) logger_folder = folder_;
    button_dict buttons;
    if (has_button_dict(logger_folder)) {
        auto loaded = load_button_dict(logger_folder);
        if (!loaded) messages_.push_back(loaded.message() + " A general code window is shown instead.");
        buttons = loaded ? std::move(loaded).value() : general_code_window();
    } else {
        buttons = general_code_window();
    }
    if (has_collection_ && !has_button_dict(logger_folder)) {
        auto settings = load_logger_settings(logger_folder);
        settings.linked_timeline_uuid = timeline_->timeline().uuid();
        auto saved = save_button_dict(buttons, logger_folder);
        if (saved) saved = save_logger_settings(settings, logger_folder);
        if (!saved) messages_.push_back(saved.message());
    }
    logger_->set_buttons(std::move(buttons.buttons), playback_->collection_time());
}

// The engine is told the time as long as it has something to wait for.
void open_event::follow_presses() {
    if (!tick_timer_) tick_timer_ = loop_.start_timer(tick_seconds, true, [this] { tick(); });
}

void open_event::tick() {
    logger_->tick(playback_->collection_time());
    if (!logger_->down_buttons().empty() || logger_->unrecorded() > 0) return;
    loop_.stop_timer(*tick_timer_);
    tick_timer_.reset();
}

double open_event::start_seconds() const {
    if (!has_collection_) {
        double first = 0;
        for (const auto& row : timeline_->timeline().rows()) {
            const auto& clips = row->clips();
            if (clips.size() > 0) first = std::min(first, clips[0]->secs_start());
        }
        return first;
    }
    return playback_->first_time();
}

double open_event::end_seconds() const {
    if (!has_collection_) return std::max(timeline_->timeline().last_end(), playback_->collection_time());
    return playback_->last_time();
}

std::string open_event::problem(const std::string& vistel) const {
    const std::string from_playback = playback_->problem(vistel);
    if (!from_playback.empty()) return from_playback;
    // A vistel that has other parts shows those.
    const auto found = collection_.find_vistel(vistel);
    return found && found->parts().parts.empty() ? found->problem() : std::string();
}

result<void> open_event::set_offset(const std::string& vistel, double seconds) {
    const auto found = collection_.find_vistel(vistel);
    if (!found) return failure{"The collection has no vistel \"" + vistel + "\"."};
    found->set_manual_start_offset(seconds);
    feed_playback();
    logger_->set_earliest_time(playback_->first_time());
    auto saved = save_collection();
    collection_changed.emit();
    return saved;
}

result<void> open_event::set_sound_vistel(const std::string& vistel) {
    collection_.set_vistel_for_sound(vistel);
    playback_->set_sound_vistel(vistel);
    auto saved = save_collection();
    collection_changed.emit();
    return saved;
}

result<void> open_event::set_volume(double volume) {
    collection_.set_volume(std::clamp(volume, 0.0, 1.0));
    feed_volume();
    collection_changed.emit();
    return {};
}

void open_event::set_enlarged(const std::string& vistel) {
    for (const auto& one : collection_.vistels())
        one->set_flicked_in(!vistel.empty() && one->uuid() == vistel);
    playback_->set_enlarged(vistel);
    collection_changed.emit();
}

std::string open_event::enlarged() const {
    for (const auto& vistel : collection_.vistels()) {
        if (vistel->flicked_in()) return vistel->uuid();
    }
    return {};
}

result<void> open_event::save_collection() {
    if (!has_collection_) return {};
    if (timeline_->is_read_only()) {
        return failure{"\"" + path_join(folder_, collection_file_name) +
                       "\" was not saved: another program has the event open."};
    }
    collection_.set_movie_time(playback_->collection_time());
    auto saved = vistels::save_collection(collection_, folder_);
    if (saved) saved_record_ = record_of(collection_);
    return saved;
}

result<void> open_event::save_changed_collection() {
    if (!has_collection_ || timeline_->is_read_only()) return {};
    collection_.set_movie_time(playback_->collection_time());
    return record_of(collection_) == saved_record_ ? result<void>() : save_collection();
}

result<void> open_event::save_all() {
    if (timeline_->is_read_only()) return {};  // changes were refused, or are on record
    timeline_->header().cursor_seconds = playback_->collection_time();
    auto saved = timeline_->save_now();
    auto collection_saved = save_changed_collection();
    return saved ? collection_saved : saved;
}

}  // namespace vistels
