// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/open_event.h"
#include "app/event/button_outputs.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "app/event/event_failures.h"
#include "app/event/offset_changes.h"
#include "app/event/timeline_links.h"
#include "app/event/vistel_changes.h"
#include "app/settings/code_window_settings.h"
#include "app/settings/settings.h"
#include "app/settings/state_log.h"
#include "app/settings/user_name.h"
#include "app/vaults/mending.h"
#include "logger/code_window_change.h"
#include "logger/press_engine.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "util/uuid.h"
#include "video/blank_movie.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Playback.h"

namespace vistels {

namespace {

// How far the clock of a timeline without a collection runs.
constexpr double longest_event_seconds = 24 * 3600;

void add_all(std::vector<failure>& to, const std::vector<failure>& from) {
    std::copy(from.begin(), from.end(), std::back_inserter(to));
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
    : folder_(std::move(folder)),
      places_(std::move(places)),
      loop_(loop),
      collection_(folder_, loop),
      blank_movie_(std::make_shared<blank_vistel_movie>(places_.temporary_folder())) {
    collection_.set_blank_movie(*blank_movie_);
}

// By the thread that reads, for the main thread to begin with.
struct open_event::what_was_read {
    double movie_time = 0;
    double top_speed = 0;
    pitch_algorithm pitch = pitch_algorithm::varispeed;
    press_settings presses;
    undo_history history;
};

result<std::unique_ptr<open_event>> open_event::read(const std::string& folder, const home_places& places,
                                                     run_loop& loop) {
    std::unique_ptr<open_event> event(new open_event(folder, places, loop));
    if (auto loaded = event->load(); !loaded) return loaded.error();
    return event;
}

result<std::unique_ptr<open_event>> open_event::open(const std::string& folder, const home_places& places,
                                                     run_loop& loop) {
    auto event = read(folder, places, loop);
    if (event) event.value()->begin();
    return event;
}

open_event::~open_event() {
    if (!undo_) return;  // it has not begun
    logger_->release_all(playback_->collection_time());
    // What cannot be saved of the timeline stays in its journal.
    (void)save_all();
    timeline_->set_save_companion({});
}

result<void> open_event::load() {
    read_ = std::make_unique<what_was_read>();
    add_all(messages_, mend_event(folder_, places_.local_vistels()).messages);
    has_collection_ = !is_timeline_alone(folder_);
    collection_.wait_to_begin();
    if (has_collection_) {
        auto loaded = load_collection(folder_, places_.local_vistels());
        if (!loaded) return loaded.error();
        take_up_collection(std::move(loaded).value());
    }
    if (auto opened = read_timeline(); !opened) return opened;
    read_->movie_time = movie_time_to_restore();
    collection_.set_keeper(*timeline_);
    collection_.take_up_recovered(timeline_->recovered_others());
    if (has_collection_) link_collection();
    link_timeline(*timeline_, has_collection_ ? links_to(collection_.record()) : links_of_folder(folder_));
    read_->top_speed = load_playback_top_speed(places_).rate;
    read_->pitch = load_pitch_algorithm(places_);
    application_volume_ = kept_application_volume_ = load_application_volume(places_);
    read_code_window();
    read_->presses = load_press_settings(places_);
    read_->history = load_undo_history(places_, timeline_->timeline().uuid(), timeline_->opened_file());
    return {};
}

void open_event::begin() {
    const auto read = std::exchange(read_, nullptr);
    last_end_ = std::make_unique<last_clip_end>(*timeline_);
    view_ = std::make_unique<clip_view>(*timeline_, loop_);
    {
        // Nothing is saved of a collection that is not whole yet.
        const saving_block block(collection_.record());
        begin_playback(*read);
        begin_presses(*read);
        open_undo();
        take_up_history(read->history);
        open_changes();
        open_saving();
    }
    timeline_->begin();
    collection_.begin();
    code_window_->begin();
    if (has_new_numbers_ && !timeline_->is_read_only()) collection_.note_change(false);
}

void open_event::begin_playback(const what_was_read& read) {
    playback_ = std::make_unique<synchronised_playback>(loop_);
    playback_->set_top_speed(read.top_speed);
    playback_->set_pitch(read.pitch);
    feed_playback();
    playback_->seek(read.movie_time);
}

void open_event::begin_presses(what_was_read& read) {
    logger_ = std::make_unique<press_engine>(*timeline_, loop_.time());
    outputs_ = std::make_unique<button_outputs>(*timeline_, loop_);
    logger_->set_transport(playback_.get());
    presses_ = std::make_unique<tick_task>(playback_->ticks(), tick_step::presses, [this] { tick(); });
    logger_->set_earliest_time(playback_->first_time());
    logger_->set_settings(read.presses);
    show_buttons();
    code_window_->set_output_reader([this](const std::string& button) { return outputs_->text_of(button); });
    buttons_ = code_window_->changed.connect([this] { show_buttons(); });
    logger_->set_button_planner(
        [this](const button_record& changed) { return plan_button(code_window_->window(), changed); });
    playing_ = playback_->state_changed.connect([this] { follow_playing(); });
    press_log_ = std::make_unique<press_log>(*logger_, places_, name(), loop_);
    fired_ = logger_->fired.connect([this](const button_fired&) { follow_presses(); });
    made_again_ = logger_->made_again.connect([this](const std::string& button) {
        log_line(places_, "The clip of \"" + button + "\" was missing when its button went up in \"" +
                              folder_ + "\"; it was made again.");
    });
}

void open_event::open_changes() {
    changes_ = std::make_unique<collection_changes>(collection_, *timeline_);
    changes_->set_undo(undo_.get());
    changes_->set_shift_planner(
        [this](double seconds) { return plan_trigger_shift(code_window_->window(), seconds); });
    made_ = changes_->made.connect([this](double shift) { follow_change(shift); });
}

// The playhead stays on its frame like the clips.
void open_event::follow_change(double shift) {
    const double time = playback_->collection_time();
    if (has_movies(collection_.record())) collection_.record().set_state(video_type_state::playback);
    feed_playback();
    if (shift != 0) {
        playback_->seek(time + shift);
        logger_->shift_times(shift);
    }
    logger_->set_earliest_time(playback_->first_time());
    timeline_->header().cursor_seconds = playback_->collection_time();
    collection_changed.emit();
}

void open_event::take_up_collection(loaded_collection read) {
    add_all(messages_, read.messages);
    alerts_ = std::move(read.alerts);
    has_new_numbers_ = read.has_new_numbers;
    for (const auto& message : read.messages) log_line(places_, message.message());
    collection_.take_up(std::move(read));
}

struct open_event::what_was_read_again {
    result<loaded_collection> collection = loaded_collection();
    undo_history history;
    std::optional<code_window> buttons;  // none: they stay as they are
};

void open_event::prepare_to_write(bool take_over) {
    if (!timeline_->prepare_to_write(take_over)) return;
    auto again = std::make_unique<what_was_read_again>();
    if (has_collection_) again->collection = load_collection(folder_, places_.local_vistels());
    if (!again->collection) timeline_->forget_prepared();
    if (auto loaded = load_code_window(code_window_->folder())) again->buttons = std::move(loaded).value();
    again->history = load_undo_history(places_, timeline_->timeline().uuid(), timeline_->prepared_file());
    again_ = std::move(again);
}

result<void> open_event::write_prepared() {
    const auto again = std::exchange(again_, nullptr);
    if (again && !again->collection) return again->collection.error();
    const connection access = timeline_->access_changed.connect([&] { take_up_history(again->history); });
    if (auto taken = timeline_->write_prepared(); !taken) return taken;
    // What the other program saved meanwhile is not written over.
    if (again && again->buttons) code_window_->take_up(std::move(*again->buttons), true);
    code_window_->take_up_recovered(timeline_->recovered_others());
    show_buttons();
    if (!has_collection_) return {};
    take_up_collection(std::move(again->collection).value());
    collection_.take_up_recovered(timeline_->recovered_others());
    if (has_new_numbers_) collection_.note_change(false);
    link_collection();
    link_timeline(*timeline_, links_to(collection_.record()));
    feed_playback();
    collection_changed.emit();
    return {};
}

result<void> open_event::read_timeline() {
    auto opened = timeline_document::read(folder_, loop_);
    if (!opened) return opened.error();
    timeline_ = std::move(opened).value();
    timeline_->set_author(load_user_name(places_));
    add_all(messages_, timeline_->messages());
    for (const auto& message : timeline_->messages()) log_line(places_, message.message());
    return {};
}

// The history is kept for each file that is saved; what the journal brought back comes after it.
void open_event::open_undo() {
    const std::string uuid = timeline_->timeline().uuid();
    undo_ = std::make_unique<undo_stack>(*timeline_, loop_);
    using companion = timeline_document::save_companion;
    timeline_->set_save_companion([this, uuid] {
        return companion(
            [places = places_, uuid, history = undo_->history()](const auto& coming, const auto& earlier) {
                // Without it the steps before are not taken back after closing; the timeline is saved all the
                // same.
                (void)save_undo_history(places, uuid, coming, earlier, history);
            });
    });
}

void open_event::take_up_history(const undo_history& kept) {
    const std::string uuid = timeline_->timeline().uuid();
    undo_->restore(kept);
    for (auto& [edit, inverse] : timeline_->take_recovered()) {
        undo_->add(document_edit_of(std::move(edit), uuid), document_edit_of(std::move(inverse), uuid));
    }
}

std::string open_event::name() const {
    const std::string& name = has_collection_ ? collection_.record().name() : timeline_->header().name;
    return name.empty() ? path_name(folder_) : name;
}

std::string open_event::uuid() const {
    return has_collection_ ? collection_.record().uuid() : timeline_->header().uuid;
}

// The collection names its timeline; an older one gets what it lacks.
void open_event::link_collection() {
    if (collection_.record().uuid().empty()) collection_.record().set_uuid(new_uuid());
    if (!collection_.record().stored().contains("UUID video group quick")) {
        collection_.record().set_quick_number(new_quick_number());
    }
    if (collection_.record().name().empty()) collection_.record().set_name(path_name(folder_));
    if (collection_.record().linked_timeline().empty())
        collection_.record().set_linked_timeline(timeline_->timeline().uuid());
    if (has_movies(collection_.record())) collection_.record().set_state(video_type_state::playback);
}

// The later of the two records of the playhead, before what was recovered is taken up: the collection's, or
// after a kill the timeline's. What was recovered shifts it as it does the clips; of the collection's that
// part which was not saved with it.
double open_event::movie_time_to_restore() const {
    const auto& header = timeline_->header();
    if (!has_collection_) return header.cursor_seconds;
    const double saved = collection_.record().stored().number("seconds updated").value_or(0);
    if (header.last_saved > saved) return header.cursor_seconds + seconds_recovered(*timeline_);
    return collection_.record().movie_time() +
           collection_changes::seconds_not_saved(collection_.record(), *timeline_);
}

// Only what changed: to be given the same again would interrupt what is heard.
void open_event::feed_playback() {
    // What was coded before the first camera, on the clock alone, can be reached, too.
    const double first = first_clip_seconds(timeline_->timeline());
    const double last = runs_on_clock() ? longest_event_seconds : 0;
    const auto before = std::exchange(fed_range_, {first, last});
    const bool range_changes = before != fed_range_;
    // Between the clock alone and movies the playhead stays: it may be in either range until both are known.
    if (range_changes) {
        playback_->set_least_range(std::min(first, before.first), std::max(last, before.second));
    }
    auto vistels = playback_vistels_of(collection_.record());
    if (vistels != fed_vistels_) {
        fed_vistels_ = vistels;
        playback_->set_vistels(std::move(vistels));
    }
    if (range_changes) playback_->set_least_range(first, last);
    const std::string heard = collection_.record().vistel_for_sound();
    if (std::exchange(fed_sound_, heard) != heard) playback_->set_sound_vistel(heard);
    playback_->set_enlarged(enlarged());
    feed_volume();
}

void open_event::feed_volume() {
    playback_->set_volume(is_silenced_ ? 0 : collection_.record().volume() * application_volume_);
}

// A code window that cannot be read is not written over; a general one stands in for it.
code_window open_event::code_window_to_show(bool& is_kept) {
    const std::string& folder = code_window_->folder();
    is_kept = false;
    if (has_button_dict(folder)) {
        auto loaded = load_code_window(folder, &messages_);
        is_kept = loaded.ok();
        if (loaded) return std::move(loaded).value();
        messages_.push_back(general_code_window_is_shown(loaded.error()));
        return {general_code_window(), {}, {}};
    }
    code_window general{general_code_window(), load_logger_settings(folder, &messages_),
                        load_logger_offsets(folder, &messages_)};
    if (!has_collection_) return general;
    if (general.settings.linked_timeline_uuid.empty())
        general.settings.linked_timeline_uuid = timeline_->timeline().uuid();
    std::vector<file_conflict> met;
    const auto saved = save_code_window(general, folder, nullptr, machine_files(), &met);
    for (const auto& one : met) messages_.push_back(one.told);
    is_kept = saved.ok();
    if (!saved) messages_.push_back(saved.error());
    return general;
}

// A timeline's code window may lie beside it.
void open_event::read_code_window() {
    const bool lies_beside = !has_collection_ && has_button_dict(folder_);
    code_window_ =
        std::make_unique<code_window_document>(lies_beside ? folder_ : logger_folder_of(folder_), loop_);
    code_window_->wait_to_begin();
    bool is_kept = false;
    auto window = code_window_to_show(is_kept);
    code_window_->take_up(std::move(window), is_kept);
    code_window_->set_keeper(*timeline_);
    code_window_->take_up_recovered(timeline_->recovered_others());
}

bool open_event::code_window_is_linked_elsewhere() const {
    const std::string& linked = code_window_->window().settings.linked_timeline_uuid;
    return !linked.empty() && linked != timeline_->timeline().uuid();
}

void open_event::link_code_window() {
    logger_settings settings = code_window_->window().settings;
    settings.linked_timeline_uuid = timeline_->timeline().uuid();
    code_window_->set_settings(std::move(settings));
}

void open_event::show_buttons() {
    logger_->set_buttons(code_window_->window().buttons.buttons, playback_->collection_time());
    if (passes_triggers()) presses_->start();
    outputs_->set_buttons(logger_->buttons());
}

// The engine is told the time as long as it has something to wait for.
void open_event::follow_presses() {
    presses_->start();
}

bool open_event::passes_triggers() const {
    return playback_->is_playing() && playback_->rate() > 0 && logger_->has_triggers();
}

// A seek that ends playing does so behind the jump.
void open_event::jump(double seconds, bool is_loop_turn) {
    const double from = playback_->collection_time();
    is_jumping_ = true;
    playback_->seek(seconds);
    is_jumping_ = false;
    logger_->playhead_jumped(from, playback_->collection_time(), is_loop_turn);
    follow_playing();
}

// What a seek that ends playing says of it comes behind where the hand is by then.
void open_event::scrub(double seconds) {
    const double from = playback_->collection_time();
    is_jumping_ = true;
    playback_->scrub(seconds);
    is_jumping_ = false;
    logger_->playhead_dragged(from, playback_->collection_time());
    follow_playing();
}

void open_event::follow_playing() {
    if (is_jumping_) return;
    logger_->follow_playing(playback_->collection_time(), playback_->is_playing() && playback_->rate() > 0);
    if (passes_triggers()) presses_->start();
}

void open_event::tick() {
    logger_->tick(playback_->collection_time());
    if (logger_->down_buttons().empty() && logger_->unrecorded() == 0 && !passes_triggers()) presses_->stop();
}

bool open_event::runs_on_clock() const {
    return !has_collection_ || !has_movies(collection_.record());
}

double open_event::start_seconds() const {
    return runs_on_clock() ? first_clip_seconds(timeline_->timeline()) : playback_->first_time();
}

double open_event::end_seconds() const {
    if (runs_on_clock()) return std::max(last_clip_end_seconds(), playback_->collection_time());
    return playback_->last_time();
}

failure open_event::problem(const std::string& vistel) const {
    // A vistel that has other parts shows those.
    const auto found = collection_.record().find_vistel(vistel);
    if (found && found->parts().parts.empty() && found->problem()) return found->problem();
    return playback_->problem(vistel);
}

result<void> open_event::set_offset(const std::string& vistel, double seconds) {
    return changes_->make(plan_offset(vistel, seconds));
}

result<void> open_event::set_sound_vistel(const std::string& vistel) {
    return changes_->make(plan_sound_vistel(vistel));
}

void open_event::set_volume(double volume) {
    collection_.record().set_volume(std::clamp(volume, 0.0, 1.0));
    feed_volume();
}

void open_event::set_application_volume(double volume) {
    application_volume_ = std::clamp(volume, 0.0, 1.0);
    feed_volume();
}

void open_event::take_application_volume(double volume) {
    set_application_volume(volume);
    kept_application_volume_ = application_volume_;
}

result<void> open_event::choose_pitch(pitch_algorithm pitch) {
    playback_->set_pitch(pitch);
    return save_pitch_algorithm(places_, pitch);
}

void open_event::set_silenced(bool silenced) {
    is_silenced_ = silenced;
    feed_volume();
}

// Where the event can only be read its own volume lasts as long as it is open.
result<void> open_event::keep_volumes() {
    if (application_volume_ != kept_application_volume_) {
        if (auto saved = save_application_volume(places_, application_volume_); !saved) return saved;
        kept_application_volume_ = application_volume_;
    }
    collection_.note_values();
    collection_.save_soon();
    return {};
}

void open_event::set_enlarged(const std::string& vistel) {
    for (const auto& one : collection_.record().vistels())
        one->set_flicked_in(!vistel.empty() && one->uuid() == vistel);
    playback_->set_enlarged(vistel);
    collection_changed.emit();
}

std::string open_event::enlarged() const {
    for (const auto& vistel : collection_.record().vistels()) {
        if (vistel->flicked_in()) return vistel->uuid();
    }
    return {};
}

// The playhead is saved with the collection, and with the timeline, so that it outlives a kill.
void open_event::note_position() {
    if (!playback_) return;
    collection_.record().set_movie_time(playback_->collection_time());
    timeline_->header().cursor_seconds = playback_->collection_time();
}

std::vector<editable_document*> open_event::documents() {
    return {code_window_.get(), &collection_, timeline_.get()};
}

void open_event::open_saving() {
    problems_.assign(documents().size(), {});
    std::size_t at = 0;
    for (editable_document* one : documents()) {
        saves_.push_back(one->save_begins.connect([this] { note_position(); }));
        saves_.push_back(one->saved.connect([this, at](const failure& problem) {
            problems_[at] = problem;
            const auto any = std::find_if(problems_.begin(), problems_.end(),
                                          [](const failure& found) { return static_cast<bool>(found); });
            save_ended.emit(problem || any == problems_.end() ? problem : *any);
        }));
        ++at;
    }
}

bool open_event::has_unsaved_edits() const {
    return timeline_->has_unsaved_edits() || collection_.has_unsaved_edits() ||
           code_window_->has_unsaved_edits();
}

void open_event::save_soon() {
    note_position();
    collection_.note_values();
    for (editable_document* one : documents()) one->save_soon();
}

result<void> open_event::save_all() {
    if (timeline_->is_read_only()) return {};  // changes were refused, or are on record
    auto saved_timeline = timeline_->save_now();
    note_position();
    collection_.note_values();
    auto saved_collection = collection_.save_now();
    auto saved_buttons = code_window_->save_now();
    if (!saved_timeline) return saved_timeline;
    return saved_collection ? saved_buttons : saved_collection;
}

}  // namespace vistels
