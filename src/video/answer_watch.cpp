// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/answer_watch.h"

namespace vistels {

void answer_watch::look(work_progress progress, double now) {
    if (progress != seen_ || !progress.is_busy) {
        seen_ = progress;
        seen_since_ = now;
    }
    slow_ = now - seen_since_ >= closing_seconds;
    if (lost_) {
        lost_ = progress.done <= done_when_lost_;
    } else if (now - seen_since_ >= patience_seconds) {
        lost_ = true;
        done_when_lost_ = progress.done;
        tried_ = now;
    }
}

bool answer_watch::should_try(double now) const {
    return lost_ && now - tried_ >= try_anew_seconds;
}

void answer_watch::try_anew(double now) {
    seen_ = {};
    seen_since_ = tried_ = now;
    slow_ = false;
    done_when_lost_ = 0;
}

}  // namespace vistels
