// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "document/document_edit.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/records/sxy_DATA_root.h"

namespace vistels {

// What an edit does to a timeline, as the part of an edit of any documents.
class timeline_change final : public document_change {
  public:
    explicit timeline_change(std::vector<operation::any> operations) : operations_(std::move(operations)) {}
    const std::vector<operation::any>& operations() const { return operations_; }
    property_dictionary stored() const override;

  private:
    std::vector<operation::any> operations_;
};

// A whole edit of a timeline, with what it changes of other documents, as the journal holds it.
class recorded_timeline_edit final : public document_change {
  public:
    explicit recorded_timeline_edit(timeline_edit edit) : edit_(std::move(edit)) {}
    const timeline_edit& edit() const { return edit_; }
    property_dictionary stored() const override { return write_edit(edit_); }

  private:
    timeline_edit edit_;
};

// From its stored form; null when that cannot be read.
change_pointer read_recorded_edit(const property_dictionary& stored);
// The edit of a recorded_timeline_edit; an empty one of another kind of change, or of none.
const timeline_edit& edit_in(const change_pointer& recorded);

change_pointer timeline_change_of(std::vector<operation::any> operations);
// The operations of a timeline_change; none of another kind of change.
const std::vector<operation::any>& operations_in(const document_change& change);

// An edit of the timeline with that UUID, and of others, as one of any documents; and the other way round.
document_edit document_edit_of(timeline_edit edit, const std::string& timeline);
timeline_edit timeline_edit_of(document_edit edit);

// The rules by which undo treats what is done to a timeline.

// Those of the operations that can be done, one after another.
std::vector<operation::any> still_possible(const sxy_DATA_root& timeline,
                                           const std::vector<operation::any>& all);
// Whether they only set values of what is there: the kind of edit that a drag makes many of.
bool only_sets_values(const std::vector<operation::any>& all);
// What takes back what `later` does and then what `earlier` does.
std::vector<operation::any> joined(const std::vector<operation::any>& earlier,
                                   const std::vector<operation::any>& later);

}  // namespace vistels
