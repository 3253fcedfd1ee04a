// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/event/clip_filtering.h"
#include "app/event/clip_selection.h"

namespace vistels {

// One view of an open timeline: what its filter lets through and what is selected in it. Of several views of
// one timeline each has its own. Made before what shows it, so that a change is judged before it is drawn.
// Main thread.
class clip_view {
  public:
    // Both must outlive it.
    clip_view(timeline_document& document, run_loop& loop, view_kind kind = view_kind::main)
        : document_(document), filtering_(document, loop, kind), selection_(document, kind) {}

    timeline_document& document() { return document_; }
    const sxy_DATA_root& timeline() const { return document_.timeline(); }
    clip_filtering& filtering() { return filtering_; }
    const clip_filtering& filtering() const { return filtering_; }
    const clip_verdicts& verdicts() const { return filtering_.verdicts(); }
    clip_selection& selection() { return selection_; }
    const clip_selection& selection() const { return selection_; }

  private:
    timeline_document& document_;
    clip_filtering filtering_;
    clip_selection selection_;
};

}  // namespace vistels
