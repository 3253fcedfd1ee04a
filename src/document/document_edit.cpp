// SPDX-License-Identifier: GPL-3.0-or-later
#include "document/document_edit.h"

namespace vistels {

namespace {

constexpr std::pair<document_kind, std::string_view> kind_texts[] = {
    {document_kind::timeline, "timeline"},
    {document_kind::collection, "collection"},
    {document_kind::code_window, "code window"},
    {document_kind::composer, "composer"},
};

}  // namespace

std::string_view document_kind_text(document_kind kind) {
    for (const auto& [one, text] : kind_texts) {
        if (one == kind) return text;
    }
    return {};
}

std::optional<document_kind> document_kind_from_text(std::string_view text) {
    for (const auto& [kind, one] : kind_texts) {
        if (one == text) return kind;
    }
    return std::nullopt;
}

std::vector<document_part> reversed(const std::vector<document_part>& parts) {
    std::vector<document_part> back;
    back.reserve(parts.size());
    for (auto part = parts.rbegin(); part != parts.rend(); ++part)
        back.push_back({part->document, part->back, part->change});
    return back;
}

property_dictionary write_part(const document_part& part) {
    property_dictionary stored;
    stored.add("kind", std::string(document_kind_text(part.document.kind)));
    if (!part.document.uuid.empty()) stored.add("uuid", part.document.uuid);
    stored.add("change", part.change->stored());
    if (part.back) stored.add("back", part.back->stored());
    return stored;
}

std::optional<document_part> read_part(const property_dictionary& stored) {
    const auto kind = document_kind_from_text(stored.text_or_empty("kind"));
    const auto* change = stored.dictionary("change");
    const auto* back = stored.dictionary("back");
    if (!kind || !change) return std::nullopt;
    document_part part{{*kind, stored.text_or_empty("uuid")}, nullptr, nullptr};
    part.change = std::make_shared<const stored_change>(*change);
    if (back) part.back = std::make_shared<const stored_change>(*back);
    return part;
}

}  // namespace vistels
