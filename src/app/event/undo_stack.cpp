// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/undo_stack.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace vistels {

namespace {

std::shared_ptr<const std::vector<document_part>> shared(std::vector<document_part> parts) {
    return std::make_shared<const std::vector<document_part>>(std::move(parts));
}

}  // namespace

// What of an edit begins or ends things that grow.
struct undo_stack::growth {
    bool begins = false;
    std::map<std::string, part_list> prepared;  // by place
    std::vector<std::string> cleared;
    std::vector<std::string> ended;
    part_list own;  // takes back the edit but for what began or was given up
};

undo_stack::undo_stack(editable_document& document, const run_loop& loop) : document_(document), loop_(loop) {
    made_ = document.made.connect(
        [this](const document_edit& edit, const document_edit& inverse) { take(edit, inverse); });
}

void undo_stack::take(const document_edit& edit, const document_edit& inverse) {
    if (is_moving_) {
        moved_ = inverse;
        return;
    }
    if (inverse.parts.empty()) return;
    auto growing = growth_of(edit, inverse);
    for (const auto& place : growing.cleared) prepared_.erase(place);
    for (auto& [place, made_there] : growing.prepared)
        prepared_[place] = joined(std::move(prepared_[place]), made_there);
    if (growing.own.empty() && growing.ended.empty()) {
        if (growing.begins) redo_.clear();
        forget_void_steps();
        changed.emit();
        return;
    }
    part_list back = std::move(growing.own);
    for (const auto& ended : growing.ended) {
        if (auto made_there = prepared_.extract(ended)) back = joined(std::move(made_there.mapped()), back);
    }
    const double now = loop_.time().seconds();
    if (joins_last(edit, now)) {
        auto& last = undo_.back();
        last.parts = shared(joined(*last.parts, back));
        last.seconds = now;
    } else {
        const bool in_group = group_depth_ > 0;
        undo_.push_back({in_group ? group_name_ : edit.name, edit.scope, shared(std::move(back)), now,
                         !in_group && only_sets_values(edit)});
        group_has_step_ = in_group;
        if (undo_.size() > most_steps) {
            undo_.erase(undo_.begin());
            lacks_older_ = true;
        }
    }
    redo_.clear();
    forget_void_steps();
    changed.emit();
}

// What is left out of `own` the end of what began takes back.
undo_stack::growth undo_stack::growth_of(const document_edit& edit, const document_edit& inverse) const {
    growth all;
    for (const auto& back : inverse.parts) {
        const auto* document = document_.find(back.document);
        const auto part = std::find_if(edit.parts.begin(), edit.parts.end(),
                                       [&](const auto& one) { return one.document == back.document; });
        if (!document || part == edit.parts.end()) {
            all.own.push_back(back);
            continue;
        }
        auto found = document->growing(*part->change, *back.change);
        all.ended.insert(all.ended.end(), found.ended.begin(), found.ended.end());
        all.begins = all.begins || found.begins;
        for (const auto& one : found.prepared)
            all.prepared[one.place].push_back({back.document, one.back, nullptr});
        all.cleared.insert(all.cleared.end(), found.cleared.begin(), found.cleared.end());
        if (found.is_plain()) {
            all.own.push_back(back);
        } else if (found.own) {
            all.own.push_back({back.document, found.own, nullptr});
        }
    }
    return all;
}

bool undo_stack::only_sets_values(const document_edit& edit) const {
    return std::all_of(edit.parts.begin(), edit.parts.end(), [this](const document_part& part) {
        const auto* document = document_.find(part.document);
        return document && document->only_sets_values(*part.change);
    });
}

bool undo_stack::joins_last(const document_edit& edit, double now) const {
    if (undo_.empty()) return false;
    if (group_depth_ > 0) return group_has_step_;
    const auto& last = undo_.back();
    return last.may_merge && last.name == edit.name && last.scope == edit.scope &&
           now - last.seconds <= merge_seconds && only_sets_values(edit);
}

// The parts that take back `later` and then `earlier`, where it can be with one part for each document.
undo_stack::part_list undo_stack::joined(part_list earlier, const part_list& later) const {
    part_list both;
    for (const auto& part : later) {
        const auto* document = document_.find(part.document);
        const auto is_same = [&](const auto& one) { return document_.find(one.document) == document; };
        const auto before = std::find_if(earlier.begin(), earlier.end(), is_same);
        auto one =
            document && before != earlier.end() && std::count_if(later.begin(), later.end(), is_same) == 1
                ? document->joined(*before, part)
                : std::nullopt;
        if (one) earlier.erase(before);
        both.push_back(one ? std::move(*one) : part);
    }
    std::move(earlier.begin(), earlier.end(), std::back_inserter(both));
    return both;
}

undo_stack::part_list undo_stack::still_possible(const part_list& parts) const {
    part_list possible;
    for (const auto& part : parts) {
        const auto* document = document_.find(part.document);
        auto change = document ? document->still_possible(part.change) : nullptr;
        if (change) possible.push_back({part.document, std::move(change), part.back});
    }
    return possible;
}

result<void> undo_stack::undo() {
    return move_back(undo_, redo_);
}

result<void> undo_stack::redo() {
    return move_back(redo_, undo_);
}

result<void> undo_stack::move_back(std::vector<step>& from, std::vector<step>& to) {
    forget_void_steps();
    if (from.empty() || is_moving_) return {};
    step back = from.back();
    moved_.reset();
    is_moving_ = true;
    auto applied = document_.make({back.name, back.scope, still_possible(*back.parts), true});
    is_moving_ = false;
    // A step that cannot be put on record stays; so does the history before it.
    if (!applied) return applied;
    from.pop_back();
    if (moved_) {
        to.push_back({back.name, back.scope, shared(std::move(moved_->parts)), 0, false});
    }
    forget_void_steps();
    changed.emit();
    return {};
}

void undo_stack::forget_void_steps() {
    for (auto* steps : {&undo_, &redo_}) {
        while (!steps->empty() && still_possible(*steps->back().parts).empty()) steps->pop_back();
    }
}

void undo_stack::restore(undo_history history) {
    undo_ = std::move(history.undo);
    redo_ = std::move(history.redo);
    prepared_ = std::move(history.prepared);
    lacks_older_ = history.lacks_older;
    forget_void_steps();
    changed.emit();
}

void undo_stack::add(const document_edit& edit, const document_edit& inverse) {
    take(edit, inverse);
    if (!undo_.empty()) undo_.back().may_merge = false;  // when it was done is not known
}

void undo_stack::begin_group(std::string name) {
    if (group_depth_++ > 0) return;
    group_name_ = std::move(name);
    group_has_step_ = false;
}

void undo_stack::end_group() {
    if (group_depth_ > 0) --group_depth_;
}

void undo_stack::forget_redo() {
    redo_.clear();
    changed.emit();
}

void undo_stack::clear() {
    undo_.clear();
    redo_.clear();
    prepared_.clear();
    lacks_older_ = false;
    changed.emit();
}

}  // namespace vistels
