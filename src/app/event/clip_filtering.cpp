// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/clip_filtering.h"

#include "formula/parser_ROOT.h"

namespace vistels {

namespace {

// Rows and clips are not named one by one.
bool is_everything(const change_set& changes) {
    constexpr unsigned all = change_set::everything & ~change_set::others_changed;
    return (changes.kinds & all) == all;
}

}  // namespace

// A job on its way; what follows `found` is kept on the main thread meanwhile.
struct clip_filtering::running_job {
    job work;
    std::string text;
    std::shared_ptr<clip_filter> filter;  // the queue's until it has posted
    std::optional<filter_outcome> found;
    // What changed since its snapshot.
    std::unordered_set<std::string> touched_clips;
    std::unordered_set<shared_text> touched_rows;
    bool is_outdated = false;  // everything
};

clip_filtering::clip_filtering(timeline_document& document, run_loop& loop, view_kind kind)
    : document_(document), loop_(loop), is_main_(kind == view_kind::main) {
    standing_.total = standing_.passing = document_.timeline().clip_count();
    changes_ = document_.changed.connect([this](const change_set& changes) { follow(changes); });
}

clip_filtering::~clip_filtering() {
    stop_waiting();
}

void clip_filtering::tell(const filter_standing& before, bool verdicts_changed) {
    if (verdicts_changed || standing_ != before) changed.emit(verdicts_changed);
}

// Neither the pause nor a job goes on.
void clip_filtering::stop_waiting() {
    if (pause_) loop_.stop_timer(*pause_);
    pause_.reset();
    if (running_) running_->work.cancel();
    running_.reset();
    standing_.is_judging = false;
}

void clip_filtering::type(const std::string& text) {
    if (text.empty()) return apply(text);
    const filter_standing before = standing_;
    stop_waiting();
    standing_.typed = text;
    standing_.problems.clear();
    standing_.is_judging = true;
    pause_ = loop_.start_timer(typing_pause_seconds, false, [this, text] {
        pause_.reset();
        start(text);
    });
    tell(before, false);
}

void clip_filtering::apply(const std::string& text) {
    if (!text.empty()) return start(text);
    const filter_standing before = standing_;
    stop_waiting();
    const bool was_on = is_on();
    verdicts_.clear();
    is_stale_ = false;
    judged_rows_.clear();
    standing_ = {};
    if (was_on && is_main_) unfilter(document_.timeline().rows());
    standing_.total = standing_.passing = document_.timeline().clip_count();
    tell(before, was_on);
}

void clip_filtering::start(const std::string& text) {
    const filter_standing before = standing_;
    stop_waiting();
    const auto formula = parser_ROOT::for_filter(text);
    standing_.typed = text;
    standing_.problems = formula.parser_Errors_String();
    if (!formula.parser_Error()) {
        start_job(text, std::make_shared<clip_filter>(formula));
    } else if (is_stale_) {
        start_job(standing_.text, std::make_shared<clip_filter>(standing_.text));
    }
    tell(before, false);
}

void clip_filtering::start_job(const std::string& text, std::shared_ptr<clip_filter> filter) {
    running_ = std::make_shared<running_job>();
    running_->text = text;
    running_->filter = std::move(filter);
    standing_.is_judging = true;
    queue_.post([this, running = running_, rows = document_.snapshot().rows] {
        if (running->work.is_cancelled()) return;
        judge_all(*running, rows, is_main_);
        if (!running->found) return;
        loop_.post(guard_.guarded([this, running] { arrive(running); }));
    });
}

void clip_filtering::judge_all(running_job& running, const std::vector<row_pointer>& rows, bool with_marks) {
    if (with_marks) {
        running.found = running.filter->passing_and_marks(rows, running.work);
    } else if (auto verdicts = running.filter->passing(rows, running.work)) {
        running.found.emplace();
        static_cast<passing_clips&>(*running.found) = std::move(*verdicts);
    }
}

void clip_filtering::arrive(const std::shared_ptr<running_job>& arrived) {
    if (arrived != running_) return;  // another text came meanwhile
    const filter_standing before = standing_;
    running_.reset();
    if (arrived->is_outdated) {
        start_job(arrived->text, arrived->filter);
        return tell(before, false);
    }
    if (is_main_) put_in_place(*arrived->found);
    verdicts_.set(arrived->filter, std::move(arrived->found->clips));
    for (const auto& live : document_.timeline().live_clips()) verdicts_.kept().put(*live.clip, true);
    passing_in_.clear();
    for (const auto& [row, passing] : arrived->found->rows) passing_in_[row->uuid()] = passing;
    is_stale_ = false;
    standing_.text = arrived->text;
    standing_.is_judging = false;
    remember_rows();
    judge_changed_rows(*arrived->found);
    for (const auto& row : arrived->touched_rows) passing_in_.erase(row);
    for (const auto& clip : arrived->touched_clips) judge_clip(clip);
    count();
    tell(before, true);
}

// Of rows that changed since they were judged, by what the filter before said of them or by an edit that was
// refused and taken back, which is not told: their clips may be copies of those that were judged.
void clip_filtering::judge_changed_rows(const passing_clips& judged) {
    for (const auto& one : judged.rows) {
        const auto uuid = one.row->uuid();
        const auto now = document_.timeline().row(uuid);
        if (now && now != one.row) judge_row(uuid);
    }
}

void clip_filtering::remember_rows() {
    judged_rows_.clear();
    if (!verdicts_.filter()->looks_at_rows()) return;
    for (const auto& row : document_.timeline().rows()) {
        judged_rows_[row->uuid()] = {row->name(), row->category()};
    }
}

void clip_filtering::follow(const change_set& changes) {
    const filter_standing before = standing_;
    if (running_) {
        running_->is_outdated = running_->is_outdated || is_everything(changes);
        running_->touched_clips.insert(changes.clips.begin(), changes.clips.end());
        running_->touched_rows.insert(changes.rows.begin(), changes.rows.end());
    }
    if ((changes.kinds & ~static_cast<unsigned>(change_set::others_changed)) != 0) {
        follow_in_force(changes);
        count();
        tell(before, verdicts_.is_on());
    }
}

void clip_filtering::follow_in_force(const change_set& changes) {
    const bool is_named = !is_everything(changes);
    if (!is_named) {
        is_stale_ = verdicts_.is_on();
        passing_in_.clear();
        if (!is_stale_ && is_main_) unfilter(document_.timeline().rows());
    }
    for (const auto& uuid : changes.rows) passing_in_.erase(uuid);
    // The filter in force goes on judging single clips here while another one judges all.
    for (const auto& clip : changes.clips) judge_clip(clip);
    if (!verdicts_.is_on()) return;
    if (verdicts_.filter()->looks_at_rows()) judge_renamed_rows(changes.rows);
    if (!is_named && !running_ && !pause_) {
        start_job(standing_.text, std::make_shared<clip_filter>(standing_.text));
    }
}

void clip_filtering::judge_renamed_rows(const std::vector<shared_text>& rows) {
    for (const auto& uuid : rows) {
        const auto row = document_.timeline().row(uuid);
        if (!row) {
            judged_rows_.erase(uuid);
            continue;
        }
        row_texts texts{row->name(), row->category()};
        auto& judged = judged_rows_[uuid];
        if (judged == texts) continue;
        judged = std::move(texts);
        judge_row(uuid);
    }
}

void clip_filtering::judge_row(const shared_text& uuid) {
    const auto row = document_.timeline().row(uuid);
    if (!row) return;
    passing_in_.erase(uuid);
    if (is_main_) {
        verdicts_.filter()->judge_and_mark(*row, verdicts_.kept());
    } else {
        verdicts_.filter()->judge(*row, verdicts_.kept());
    }
}

// Without a filter a clip that undo brings back may still bear the marks of an earlier one.
void clip_filtering::judge_clip(const std::string& uuid) {
    const auto place = document_.timeline().find_clip(uuid);
    if (!place) return;
    clip_filter* const filter = verdicts_.filter();
    if (place->is_live) {
        if (filter) verdicts_.kept().put(*place->clip, true);
        return;
    }
    const auto row = document_.timeline().row(place->row);
    if (filter) {
        const bool passes = is_main_ ? filter->judge_and_mark(*place->clip, row.get())
                                     : filter->judge(*place->clip, row.get());
        verdicts_.kept().put(*place->clip, passes);
    } else if (is_main_) {
        unfilter(*place->clip);
    }
    passing_in_.erase(place->row);
}

void clip_filtering::count() {
    standing_.total = document_.timeline().clip_count();
    standing_.passing = standing_.total;
    if (!verdicts_.is_on()) return;
    standing_.passing = 0;
    for (const auto& row : document_.timeline().rows()) {
        const auto [known, is_new] = passing_in_.try_emplace(row->uuid(), 0);
        if (is_new) known->second = count_passing(*row, *verdicts_.passing());
        standing_.passing += known->second;
    }
}

}  // namespace vistels
