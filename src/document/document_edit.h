// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "util/property_value.h"

namespace vistels {

// What a person edits and the program keeps.
enum class document_kind { timeline, collection, code_window, composer };

// The text under which a kind is stored, and the kind of a text.
std::string_view document_kind_text(document_kind kind);
std::optional<document_kind> document_kind_from_text(std::string_view text);

// Which document.
struct document_id {
    document_kind kind = document_kind::timeline;
    std::string uuid;  // empty: the one of its kind that belongs to where the edit is on record
    bool operator==(const document_id&) const = default;
};

// What an edit does to one document, as a value of that document's own type. It never changes, so any thread
// may read it.
class document_change {
  public:
    virtual ~document_change() = default;
    // The stored form, for journals and undo histories.
    virtual property_dictionary stored() const = 0;
};
using change_pointer = std::shared_ptr<const document_change>;

// One as it was read: the document that it is for reads its type from it.
class stored_change final : public document_change {
  public:
    explicit stored_change(property_dictionary stored) : stored_(std::move(stored)) {}
    property_dictionary stored() const override { return stored_; }
    const property_dictionary& values() const { return stored_; }

  private:
    property_dictionary stored_;
};

// The part of an edit that concerns one document.
struct document_part {
    document_id document;
    change_pointer change;
    change_pointer back;  // takes it back; null where that is known only when it is made
};

// The parts that take these back, the last first; each must know how.
std::vector<document_part> reversed(const std::vector<document_part>& parts);

// One step as a person sees it, of one document or of several, made whole or not at all.
struct document_edit {
    std::string name;   // shown in the undo menu
    std::string scope;  // the object that it belongs to; edits of one scope and name may be merged by undo
    std::vector<document_part> parts;  // in order
    // Nothing is to be added to it when it is made: it takes back or repeats another.
    bool is_complete = false;
};

// The stored form, without the place at which it stands. What is no part reads as nothing.
property_dictionary write_part(const document_part& part);
std::optional<document_part> read_part(const property_dictionary& stored);

}  // namespace vistels
