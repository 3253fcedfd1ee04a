// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "logger/button_output.h"
#include "timeline/files/timeline_document.h"
#include "util/failure.h"
#include "util/job.h"
#include "util/posted_work_guard.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

// What the formulas of a code window's buttons say of the clips on the timeline, kept current as these
// change: counted on a queue, told when it is known. Until then a button shows what it showed last. Main
// thread.
class button_outputs {
  public:
    // Both must outlive it.
    button_outputs(timeline_document& document, run_loop& loop);
    ~button_outputs();
    button_outputs(const button_outputs&) = delete;
    button_outputs& operator=(const button_outputs&) = delete;

    // The buttons from now on.
    void set_buttons(const std::vector<button_record>& buttons);
    // What the button shows; empty where its formula is wrong. Nothing for one without a formula.
    std::optional<std::string> text_of(const std::string& button) const;
    // What is wrong with its formula; none when nothing is.
    failure problem_of(const std::string& button) const;

    // Some button shows something else.
    signal<> changed;

  private:
    struct output {
        std::size_t formula = 0;  // among those that are counted
        button_formula shown;
        std::string text;
        failure problem;
    };
    struct count;

    void ask();
    void arrive(const std::shared_ptr<count>& counted);

    timeline_document& document_;
    run_loop& loop_;
    std::vector<std::string> formulas_;
    std::unordered_map<std::string, output> outputs_;  // by button
    std::shared_ptr<formula_tallies> tallies_;         // the queue's while it counts
    std::shared_ptr<count> running_;                   // null: none
    bool asks_again_ = false;                          // the timeline changed since that began
    connection changed_;
    posted_work_guard guard_;
    std::unique_ptr<serial_queue> queue_;  // when it is first wanted; its work is done before the rest goes
};

}  // namespace vistels
