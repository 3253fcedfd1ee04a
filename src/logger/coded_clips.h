// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "timeline/edits/sxy_Adjust_Clip_Overlaps.h"
#include "timeline/records/sxy_CLIP.h"

namespace vistels {

// What is known of the clips that presses of this run made: by which button, in which order, and for which
// times their buttons were held. One thread.
class coded_clips {
  public:
    // The clip is this button's.
    void note_button(const std::string& clip, const std::string& button);
    // A press put it into its row.
    void note_made(const std::string& clip) { made_.push_back(clip); }
    // As long as it has that span its button was held for `held`.
    void note_held(const std::string& clip, clip_span span, clip_span held);

    // Empty: not known.
    std::string button_of(const std::string& clip) const;
    // The last one at the end; a clip may stand there more than once, or be gone.
    const std::vector<std::string>& made() const { return made_; }
    // Nothing when it has another span than presses gave it: it was changed by hand.
    std::optional<clip_span> held_time(const sxy_CLIP& clip) const;

    // What is noted from begin_trial() on is kept by end_trial(), or was never so by take_back_trial(). No
    // shift in between.
    void begin_trial();
    void end_trial();
    void take_back_trial();

    // All times of the timeline moved.
    void shift(double seconds);

  private:
    struct given_span {
        clip_span span;
        clip_span held;
    };
    struct knowledge {
        std::string button;
        std::vector<given_span> given;  // more than one: it was moved since, which may be taken back
    };

    knowledge& to_change(const std::string& clip);

    std::unordered_map<std::string, knowledge> known_;
    bool is_trial_ = false;
    std::size_t made_before_ = 0;  // of a trial
    std::unordered_map<std::string, std::optional<knowledge>>
        earlier_;  // what a trial changed; none: not known
    std::vector<std::string> made_;
};

}  // namespace vistels
