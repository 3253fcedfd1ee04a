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

#include "formula/clip_filter.h"
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

// The filter of one open timeline: judges every clip in a job, puts the verdicts in place on the main thread,
// and keeps them true while the timeline changes. A clip that still grows is judged when it ends. Main
// thread; the verdicts are the clips' and qualifiers' filtered-in marks, which any thread may read.
class clip_filtering {
  public:
    // Seconds after the last key until live results are asked for.
    static constexpr double typing_pause_seconds = 0.15;

    // The document and the loop must outlive it.
    clip_filtering(timeline_document& document, run_loop& loop);
    ~clip_filtering();
    clip_filtering(const clip_filtering&) = delete;
    clip_filtering& operator=(const clip_filtering&) = delete;

    // The text as it is being typed: judged after the pause; each further call takes the place of the one
    // before and cancels its job. A text with a syntax error leaves the marks of the last good one. An empty
    // text clears at once.
    void type(const std::string& text);
    // The same at once (Return, or a pattern that was chosen).
    void apply(const std::string& text);
    // Every clip passes again, at once.
    void clear() { apply({}); }

    const filter_standing& standing() const { return standing_; }
    bool is_on() const { return !standing_.text.empty(); }

    // The standing changed; with `marks_changed` so did which clips and qualifiers are filtered in. Comes
    // after the document's `changed` for what an edit brought about.
    signal<bool /* marks_changed */> changed;

  private:
    struct running_job;
    using row_texts = std::pair<std::string, std::string>;  // name and category

    void stop_waiting();
    void start(const std::string& text);
    void start_job(const std::string& text, std::shared_ptr<clip_filter> filter);
    void arrive(const std::shared_ptr<running_job>& arrived);
    void follow(const change_set& changes);
    void follow_in_force(const change_set& changes);
    void judge_clip(const std::string& uuid);
    void judge_renamed_rows(const std::vector<shared_text>& rows);
    void remember_rows();
    void count();
    void tell(const filter_standing& before, bool marks_changed);

    timeline_document& document_;
    run_loop& loop_;
    filter_standing standing_;
    std::shared_ptr<clip_filter> filter_;  // in force; null: none
    bool is_stale_ = false;                // clips came that it has not judged
    // What the rows' names and categories were when they were judged.
    std::unordered_map<shared_text, row_texts> judged_rows_;
    std::optional<run_loop::timer_id> pause_;
    std::shared_ptr<running_job> running_;  // null: none
    connection changes_;
    posted_work_guard guard_;
    serial_queue queue_{"filter"};  // last: its work is done before the rest goes
};

}  // namespace vistels
