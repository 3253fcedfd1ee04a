// SPDX-License-Identifier: GPL-3.0-or-later
// A press engine as a code window pane sees it.
#include <unordered_map>

#include "logger/press_engine.h"
#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_view.h"
#include "timeline/files/timeline_document.h"
#include "util/transport.h"

namespace vistels {
namespace {

code_button::band band_of(const markup_Button_Item& button) {
    if (button.is(button_type::clip) || button.is(button_type::timer_clip)) return code_button::band::left;
    const bool stamps = button.is(button_type::qualifier) || button.is(button_type::attribute);
    return stamps ? code_button::band::below : code_button::band::none;
}

class engine_source final : public code_window_source {
  public:
    engine_source(press_engine& engine, timeline_document& timeline, transport& playing)
        : engine_(engine), timeline_(timeline), playing_(playing) {
        observed_.push_back(engine_.fired.connect([this](const button_fired& fired) {
            blocked_[fired.button] = fired.blocked && fired.is_down;
            states_changed.emit();
        }));
        observed_.push_back(engine_.buttons_changed.connect([this] { buttons_changed.emit(); }));
        observed_.push_back(timeline_.changed.connect([this](const change_set& change) {
            if ((change.kinds & (change_set::rows_changed | change_set::clips_changed)) != 0)
                states_changed.emit();
        }));
    }

    std::vector<code_button> buttons() const override {
        std::vector<code_button> made;
        made.reserve(engine_.buttons().size());
        for (const button_record& each : engine_.buttons()) made.push_back(face_of(*each, made.size()));
        return made;
    }

    code_button_state state(const std::string& uuid) const override {
        code_button_state made;
        const markup_Button_Item* button = engine_.button(uuid);
        if (!button) return made;
        const bool makes_clips = band_of(*button) == code_button::band::left;
        if (const auto down = engine_.down_since(uuid)) {
            made.is_down = true;
            made.is_live = button->is(button_type::clip);
            made.down_since = down->since;
        }
        const auto blocked = blocked_.find(uuid);
        made.is_blocked = blocked != blocked_.end() && blocked->second;
        if (makes_clips) made.count = clips_of(*button);
        return made;
    }

    void press(const std::string& button, double clock_seconds) override {
        engine_.press(button, playing_.collection_time_at(clock_seconds));
    }
    void release(const std::string& button, double clock_seconds) override {
        engine_.release(button, playing_.collection_time_at(clock_seconds));
    }
    double collection_time() const override { return playing_.shown_time(); }

  private:
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
        made.shows_name = !display.hide_name;
        return made;
    }

    // Of the row that the button's clips go to.
    std::uint32_t clips_of(const markup_Button_Item& button) const {
        row_pointer found;
        for (const row_pointer& row : timeline_.timeline().rows()) {
            if (row->name() != button.name()) continue;
            if (!found) found = row;
            if (row->category() != button.category()) continue;
            found = row;
            break;
        }
        return found ? static_cast<std::uint32_t>(found->clips().size()) : 0;
    }

    press_engine& engine_;
    timeline_document& timeline_;
    transport& playing_;
    std::unordered_map<std::string, bool> blocked_;
    std::vector<connection> observed_;
};

}  // namespace

std::unique_ptr<code_window_source> source_of(press_engine& engine, timeline_document& timeline,
                                              transport& playing) {
    return std::make_unique<engine_source>(engine, timeline, playing);
}

}  // namespace vistels
