// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <unordered_map>

#include "timeline/files/timeline_document.h"
#include "util/signal.h"

namespace vistels {

// When the last clip of a timeline ends. It follows the edits, so that nobody looks through all clips after
// each; observers that connected to the document after this was made find it up to date. Main thread.
class last_clip_end {
  public:
    // The document must outlive it.
    explicit last_clip_end(timeline_document& document);
    // Seconds on the collection's clock, at least 0; growing clips do not count.
    double seconds() const;

  private:
    struct latest {
        double end = 0;
        std::string clip;  // whose end it is; empty: the row has none after 0
    };

    static latest look_through(const sxy_ROW& row);
    void follow(const change_set& change);

    timeline_document& document_;
    mutable std::unordered_map<shared_text, latest> known_;  // by row
    connection changed_;
};

}  // namespace vistels
