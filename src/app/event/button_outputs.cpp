// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/button_outputs.h"

#include <algorithm>
#include <utility>

#include "formula/parser_ROOT.h"

namespace vistels {

// One that is on its way.
struct button_outputs::count {
    job work;
    std::shared_ptr<formula_tallies> by;
    std::vector<std::optional<clip_tally>> found;
};

button_outputs::button_outputs(timeline_document& document, run_loop& loop)
    : document_(document), loop_(loop), changed_(document.changed.connect([this](const change_set& change) {
          constexpr unsigned counts =
              change_set::rows_changed | change_set::clips_changed | change_set::qualifiers_changed;
          if ((change.kinds & counts) != 0) ask();
      })) {}

button_outputs::~button_outputs() {
    if (running_) running_->work.cancel();
}

void button_outputs::set_buttons(const std::vector<button_record>& buttons) {
    auto before = std::exchange(outputs_, {});
    const auto formulas_before = std::exchange(formulas_, {});
    for (const button_record& button : buttons) {
        button_formula shown = button->formula();
        if (shown.filter.empty()) continue;
        const auto found = std::find(formulas_.begin(), formulas_.end(), shown.filter);
        const auto place = static_cast<std::size_t>(found - formulas_.begin());
        if (found == formulas_.end()) formulas_.push_back(shown.filter);
        const auto known = before.find(button->uuid());
        const bool is_same = known != before.end() && known->second.shown == shown;
        std::string text = is_same ? known->second.text : shown.output_string;
        failure problem =
            is_same ? known->second.problem : parser_ROOT::for_filter(shown.filter).parser_Errors();
        outputs_[button->uuid()] = {place, std::move(shown), std::move(text), std::move(problem)};
    }
    if (formulas_ != formulas_before) {
        if (running_) running_->work.cancel();
        running_.reset();
        tallies_ = formulas_.empty() ? nullptr : std::make_shared<formula_tallies>(formulas_);
    }
    ask();
    changed.emit();
}

std::optional<std::string> button_outputs::text_of(const std::string& button) const {
    const auto found = outputs_.find(button);
    return found == outputs_.end() ? std::nullopt : std::optional(found->second.text);
}

failure button_outputs::problem_of(const std::string& button) const {
    const auto found = outputs_.find(button);
    return found == outputs_.end() ? failure() : found->second.problem;
}

// One count at a time: what changed meanwhile is counted after it.
void button_outputs::ask() {
    if (!tallies_) return;
    asks_again_ = running_ != nullptr;
    if (asks_again_) return;
    if (!queue_) queue_ = std::make_unique<serial_queue>("button outputs");
    running_ = std::make_shared<count>();
    running_->by = tallies_;
    queue_->post([this, running = running_, rows = document_.snapshot().rows] {
        auto found = running->by->count(rows, running->work);
        if (!found) return;
        running->found = std::move(*found);
        loop_.post(guard_.guarded([this, running] { arrive(running); }));
    });
}

void button_outputs::arrive(const std::shared_ptr<count>& counted) {
    if (counted != running_) return;  // the formulas are others
    running_.reset();
    bool is_changed = false;
    for (auto& [button, one] : outputs_) {
        const auto& tally = counted->found[one.formula];
        std::string text = tally ? output_text(one.shown, *tally) : std::string();
        is_changed = is_changed || text != one.text;
        one.text = std::move(text);
    }
    if (is_changed) changed.emit();
    if (asks_again_) ask();
}

}  // namespace vistels
