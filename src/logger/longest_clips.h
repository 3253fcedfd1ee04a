// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <unordered_map>

#include "timeline/files/timeline_document.h"
#include "util/signal.h"

namespace vistels {

// How long the clips of each row are at most, so that a search for the clips at a time looks at those alone
// that can reach it. Never less than it is; more, where a long clip went. Main thread.
class longest_clips {
  public:
    // The document must outlive it.
    explicit longest_clips(timeline_document& document);
    // Seconds; looked through when it is asked for the first time.
    double of(const sxy_ROW& row) const;

    // A clip that was put into its row just now, before the document tells of it.
    void note(const sxy_DATA_root& timeline, const std::string& clip);

  private:
    void follow(const change_set& change);

    timeline_document& document_;
    mutable std::unordered_map<shared_text, double> known_;  // by row
    connection changed_;
};

}  // namespace vistels
