// SPDX-License-Identifier: GPL-3.0-or-later
// A press engine as a code window pane sees it.
#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "app/event/button_outputs.h"
#include "logger/link_graph.h"
#include "logger/press_engine.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_view.h"
#include "shell/panes/code_window/link_words.h"
#include "timeline/files/timeline_document.h"
#include "util/transport.h"

namespace vistels {
namespace {

constexpr double greatest_name_size = 200;
// Of keys it is the other one, so that neither lets go of what the other holds.
constexpr int pointer_hand = 1;

code_button::band band_of(const markup_Button_Item& button) {
    if (button.is(button_type::clip) || button.is(button_type::timer_clip)) return code_button::band::left;
    const bool stamps = button.is(button_type::qualifier) || button.is(button_type::attribute);
    return stamps ? code_button::band::below : code_button::band::none;
}

class engine_source final : public code_window_source {
  public:
    engine_source(press_engine& engine, timeline_document& timeline, transport& playing,
                  button_outputs* outputs)
        : engine_(engine), timeline_(timeline), playing_(playing), outputs_(outputs) {
        take_links();
        if (outputs_) observed_.push_back(outputs_->changed.connect([this] { states_changed.emit(); }));
        observed_.push_back(engine_.fired.connect([this](const button_fired& fired) {
            blocked_[fired.button] = fired.blocked && fired.is_down;
            const bool others_change = !found_none_.empty() || !waiting_.empty();
            if (fired.is_down) found_none_ = fired.nothing_to_stamp ? fired.button : std::string();
            if (!engine_.has_waiting_attributes()) waiting_.clear();
            if (fired.waits) waiting_.insert(fired.button);
            // All that a round made is there when the first of its changes is told.
            const bool is_further = std::exchange(round_, fired.round) == fired.round;
            if (is_further && !others_change) return state_changed.emit(fired.button);
            states_changed.emit();
        }));
        observed_.push_back(engine_.looks_changed.connect([this] { buttons_changed.emit(); }));
        observed_.push_back(
            engine_.center_wanted.connect([this](const std::string& button) { center_wanted.emit(button); }));
        observed_.push_back(
            engine_.link_fired.connect([this](const std::string& from, const std::string& to,
                                              const link_kind& kind) { link_fired.emit(from, to, kind); }));
        observed_.push_back(engine_.attributes_given_up.connect([this] { states_changed.emit(); }));
        observed_.push_back(engine_.buttons_changed.connect([this] {
            are_rows_known_ = false;
            buttons_changed.emit();
            if (take_links()) links_changed.emit();
        }));
        observed_.push_back(timeline_.changed.connect([this](const change_set& change) {
            if ((change.kinds & (change_set::rows_changed | change_set::clips_changed)) == 0) return;
            are_rows_known_ = false;
            if (!engine_.is_recording()) states_changed.emit();
        }));
    }

    std::vector<code_button> buttons() const override {
        std::vector<code_button> made;
        made.reserve(engine_.buttons().size());
        for (const button_record& each : engine_.buttons()) {
            made.push_back(face_of(*each, made.size()));
            made.back().has_output = outputs_ && outputs_->text_of(made.back().uuid);
            wear(made.back(), *each);
        }
        return made;
    }

    code_button_state state(const std::string& uuid) const override {
        code_button_state made;
        const markup_Button_Item* button = engine_.button(uuid);
        if (!button) return made;
        if (const auto down = engine_.down_since(uuid)) {
            made.is_down = true;
            made.is_live = button->makes_clips();
            made.is_latched = down->is_latched;
            made.down_since = down->since;
        }
        const auto blocked = blocked_.find(uuid);
        made.is_blocked = blocked != blocked_.end() && blocked->second;
        made.found_none = uuid == found_none_;
        if (outputs_) {
            made.output = QString::fromStdString(outputs_->text_of(uuid).value_or(""));
            made.output_problem = words_of(outputs_->problem_of(uuid));
        }
        made.waits = engine_.has_waiting_attributes() && waiting_.contains(uuid);
        if (band_of(*button) == code_button::band::left)
            made.count = static_cast<std::uint32_t>(clips_of(uuid).size());
        return made;
    }

    void press(const std::string& button, double clock_seconds, const QPointF& place, bool latches) override {
        engine_.press(button, playing_.collection_time_at(clock_seconds),
                      {press_cause::press, latches, point{place.x(), place.y()}, pointer_hand});
    }
    void release(const std::string& button, double clock_seconds) override {
        engine_.release(button, playing_.collection_time_at(clock_seconds), press_cause::press, pointer_hand);
    }
    double collection_time() const override { return playing_.shown_time(); }

    clip_list clips_of(const std::string& uuid) const override {
        const row_pointer row = row_of(uuid);
        return row ? row->clips() : clip_list();
    }

    std::vector<bound_button> bound_buttons() const override {
        return vistels::bound_buttons(engine_.buttons());
    }

    bool has_links() const override {
        const auto& all = engine_.buttons();
        return std::any_of(all.begin(), all.end(),
                           [](const button_record& one) { return one->has_action_links(); });
    }
    std::vector<code_link> links() const override {
        const std::vector<button_record>& buttons = engine_.buttons();
        std::vector<code_link> all;
        for (std::size_t i = 0; i < buttons.size(); ++i) {
            for (const auto& link : graph().links_of(i))
                all.push_back({buttons[i]->uuid(), buttons[link.target]->uuid(), link.kind});
        }
        return all;
    }
    QStringList link_words(const std::string& button) const override {
        const std::vector<button_record>& buttons = engine_.buttons();
        for (std::size_t i = 0; i < buttons.size() && has_links(); ++i) {
            if (buttons[i]->uuid() == button) return vistels::link_words(buttons, graph(), i);
        }
        return {};
    }
    QStringList link_problems() const override { return vistels::link_problems(engine_.buttons(), graph()); }

  private:
    // Whether they are others than before, or lead to others; most edits of a code window leave them alone.
    bool take_links() {
        const auto is_alike = [](const button_record& a, const button_record& b) {
            return a.pointer() == b.pointer() || (a->uuid() == b->uuid() && a->name() == b->name() &&
                                                  a->action_links() == b->action_links());
        };
        const auto& now = engine_.buttons();
        const bool is_other = !std::equal(linked_.begin(), linked_.end(), now.begin(), now.end(), is_alike);
        linked_ = now;
        if (is_other) graph_.reset();
        return is_other;
    }
    const link_graph& graph() const {
        if (!graph_) graph_.emplace(engine_.buttons());
        return *graph_;
    }

    static code_button face_of(const markup_Button_Item& button, std::size_t number) {
        const logger_item_display_info display = button.display();
        const rectangle& place = display.logger_rect;
        code_button made;
        made.uuid = button.uuid();
        made.name = QString::fromStdString(button.name());
        made.what = QString::fromUtf8(button_type_name(button.type_code()).data());
        made.marks = band_of(button);
        made.place = QRectF(place.x, place.y, place.width, place.height);
        made.colour =
            display.button_colour ? to_qt(*display.button_colour) : theme::current().item_colour(number);
        if (display.binding && display.show_keys) {
            made.key = QString::fromStdString(binding_text(*display.binding));
        }
        made.fires_in_centre = button.center_fire();
        made.lists_clips = button.lister();
        made.list_title = QString::fromStdString(button.lister_text());
        if (made.list_title.isEmpty()) made.list_title = made.name;
        set_look(made, display);
        return made;
    }

    // As links and presses have made it look in this run.
    void wear(code_button& made, const markup_Button_Item& button) const {
        const button_looks::look* look = engine_.looks().of(made.uuid);
        if (!look) return;
        if (look->button_colour) made.colour = to_qt(*look->button_colour);
        if (look->mark_colour) made.made_colour = to_qt(*look->mark_colour);
        made.depth = look->depth;
        for (const point& trace : look->traces) made.traces.append({trace.x, trace.y});
        made.traces_are_lines = button.field().trace_type.find("line") != std::string::npos;
    }

    static void set_look(code_button& made, const logger_item_display_info& display) {
        made.shape = QString::fromStdString(display.button_shape);
        if (display.mask_colour && display.mask_colour != display.button_colour)
            made.made_colour = to_qt(*display.mask_colour);
        made.opacity = std::isfinite(display.alpha) ? std::clamp(display.alpha, 0.0, 1.0) : 1;
        made.shows_name = !display.hide_name;
        made.fits_name = display.fit_name;
        if (display.name_colour) made.name_colour = to_qt(*display.name_colour);
        made.name_font = QString::fromStdString(display.name_font);
        made.name_size = std::clamp(display.name_font_size.value_or(0), 0.0, greatest_name_size);
        made.name_offset = {display.name_offset.x, display.name_offset.y};
        made.key_offset = {display.keys_offset.x, display.keys_offset.y};
        made.hides_down_state = display.hide_down_state;
        made.shows_ping = display.show_pinger;
        made.shows_clock = display.clock_time;
        made.shows_down_time = display.down_time;
        made.output_font = QString::fromStdString(display.formula_output_font);
        made.output_size = std::clamp(display.formula_output_font_size.value_or(0), 0.0, greatest_name_size);
        made.output_colour = to_qt(display.formula_output_colour);
        made.output_offset = {display.filter_output_offset.x, display.filter_output_offset.y};
    }

    // The row that the button's clips go to. All are looked up once after each change of the timeline,
    // however many buttons and rows there are.
    row_pointer row_of(const std::string& uuid) const {
        if (!std::exchange(are_rows_known_, true)) {
            rows_.clear();
            const std::vector<row_pointer> all = engine_.rows_of_all();
            for (std::size_t i = 0; i < all.size(); ++i) rows_[engine_.buttons()[i]->uuid()] = all[i];
        }
        const auto found = rows_.find(uuid);
        return found == rows_.end() ? nullptr : found->second.lock();
    }

    press_engine& engine_;
    timeline_document& timeline_;
    transport& playing_;
    button_outputs* outputs_;
    std::vector<button_record> linked_;
    mutable std::optional<link_graph> graph_;  // theirs, when it is wanted
    std::unordered_map<std::string, bool> blocked_;
    std::optional<std::uint64_t> round_;  // that was told of last
    std::string found_none_;              // the button pressed last, when there was nothing to stamp
    std::set<std::string> waiting_;       // whose attributes wait for a qualifier
    // By button; not held, or the next edit would have to copy them.
    mutable std::unordered_map<std::string, std::weak_ptr<const sxy_ROW>> rows_;
    mutable bool are_rows_known_ = false;
    std::vector<connection> observed_;
};

}  // namespace

std::unique_ptr<code_window_source> source_of(press_engine& engine, timeline_document& timeline,
                                              transport& playing, button_outputs* outputs) {
    return std::make_unique<engine_source>(engine, timeline, playing, outputs);
}

}  // namespace vistels
