// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "app/event/view_kind.h"
#include "formula/clip_verdicts.h"
#include "timeline/files/timeline_document.h"
#include "util/posted_work_guard.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

// What the filter in force lets through.
struct filter_standing {
    std::string text;         // the text in force; empty: none, every clip passes
    std::size_t passing = 0;  // clips in rows that pass
    std::size_t total = 0;    // clips in rows
    bool is_judging = false;  // a job for `typed` runs or is about to
    std::string typed;        // the text typed last; differs from `text` while it is wrong or being judged
    std::string problems;     // what is wrong with `typed`, as the parser says; empty: nothing

    bool operator==(const filter_standing&) const = default;
};

// The filter of one view of an open timeline: judges every clip in a job, puts the verdicts in place on the
// main thread, and keeps them true while the timeline changes. A clip that still grows passes, and is judged
// when it ends. That of the main view also sets the clips' and qualifiers' filtered-in marks, which any
// thread may read. Main thread.
class clip_filtering {
  public:
    // Seconds after the last key until live results are asked for.
    static constexpr double typing_pause_seconds = 0.15;

    // The document and the loop must outlive it.
    clip_filtering(timeline_document& document, run_loop& loop, view_kind kind = view_kind::main);
    ~clip_filtering();
    clip_filtering(const clip_filtering&) = delete;
    clip_filtering& operator=(const clip_filtering&) = delete;

    // The text as it is being typed: judged after the pause; each further call takes the place of the one
    // before and cancels its job. A text with a syntax error leaves the verdicts of the last good one. An
    // empty text clears at once.
    void type(const std::string& text);
    // The same at once (Return, or a pattern that was chosen).
    void apply(const std::string& text);
    // Every clip passes again, at once.
    void clear() { apply({}); }

    const filter_standing& standing() const { return standing_; }
    bool is_on() const { return !standing_.text.empty(); }
    const clip_verdicts& verdicts() const { return verdicts_; }

    // The standing changed; with `verdicts_changed` so did which clips pass. Comes after the document's
    // `changed` for what an edit brought about.
    signal<bool /* verdicts_changed */> changed;

  private:
    struct running_job;
    using row_texts = std::pair<std::string, std::string>;  // name and category

    void stop_waiting();
    void start(const std::string& text);
    void start_job(const std::string& text, std::shared_ptr<clip_filter> filter);
    static void judge_all(running_job& running, const std::vector<row_pointer>& rows, bool with_marks);
    void arrive(const std::shared_ptr<running_job>& arrived);
    void follow(const change_set& changes);
    void follow_in_force(const change_set& changes);
    void judge_clip(const std::string& uuid);
    void judge_row(const shared_text& uuid);
    void judge_renamed_rows(const std::vector<shared_text>& rows);
    void judge_changed_rows(const passing_clips& judged);
    void remember_rows();
    void count();
    void tell(const filter_standing& before, bool verdicts_changed);

    timeline_document& document_;
    run_loop& loop_;
    filter_standing standing_;
    const bool is_main_;
    clip_verdicts verdicts_;                                   // of the filter in force
    bool is_stale_ = false;                                    // clips came that it has not judged
    std::unordered_map<shared_text, std::size_t> passing_in_;  // by row; none: to be counted
    // What the rows' names and categories were when they were judged.
    std::unordered_map<shared_text, row_texts> judged_rows_;
    std::optional<run_loop::timer_id> pause_;
    std::shared_ptr<running_job> running_;  // null: none
    connection changes_;
    posted_work_guard guard_;
    serial_queue queue_{"filter"};  // last: its work is done before the rest goes
};

}  // namespace vistels
