// SPDX-License-Identifier: GPL-3.0-or-later
#include "document/journal_lines.h"

#include <algorithm>

#include "util/checksum.h"
#include "util/json.h"

namespace vistels {

std::string line_of(const property_dictionary& document) {
    const std::string text = write_json(document, json_layout::one_line);
    return checksum_text(checksum(text)) + " " + text + "\n";
}

property_value read_line(std::string_view line, std::uint64_t& sum) {
    constexpr std::size_t sum_length = 16;
    if (line.size() <= sum_length + 1 || line[sum_length] != ' ') return {};
    const std::string_view text = line.substr(sum_length + 1);
    sum = checksum(text);
    if (checksum_text(sum) != line.substr(0, sum_length)) return {};
    stored_arena arena;
    const auto value = read_json(text, "journal", arena);
    if (!value) return {};
    return value.value().copy();
}

property_dictionary write_base(const journal_base& base) {
    property_dictionary values;
    values.add("size", base.content.size);
    values.add("hash", checksum_text(base.content.hash));
    values.add("through", static_cast<std::int64_t>(base.through));
    if (base.growing) values.add("growing", base.growing->stored());
    if (!base.writer.empty()) values.add("writer", base.writer);
    property_array covers;
    for (const auto& part : base.covers) {
        property_dictionary stored;
        stored.add("segment", static_cast<std::int64_t>(part.segment));
        stored.add("size", part.size);
        if (!part.writer.empty()) stored.add("writer", part.writer);
        covers.emplace_back(std::move(stored));
    }
    if (!covers.empty()) {
        values.add("covers", std::move(covers));
        values.add("taken", static_cast<std::int64_t>(base.taken));
    }
    property_dictionary document;
    document.add("base", std::move(values));
    return document;
}

std::optional<journal_base> read_base(const property_dictionary& document, const recorded_form& form) {
    const auto* values = document.dictionary("base");
    const auto size = values ? values->integer("size") : std::nullopt;
    const auto through = values ? values->integer("through") : std::nullopt;
    if (!size || !through || *through < 0) return std::nullopt;
    journal_base base;
    base.content = {*size, checksum_from_text(values->text_or_empty("hash")).value_or(0)};
    base.through = static_cast<std::uint64_t>(*through);
    if (const auto* growing = values->dictionary("growing")) {
        base.growing = form.read_edit(*growing);
        if (!base.growing) return std::nullopt;
    }
    base.writer = values->text_or_empty("writer");
    base.taken = static_cast<std::uint64_t>(std::max(values->integer("taken").value_or(0), std::int64_t{0}));
    const auto* covers = values->array("covers");
    for (const auto& value : covers ? *covers : property_array()) {
        const auto* part = value.dictionary();
        const auto segment = part ? part->integer("segment") : std::nullopt;
        const auto covered = part ? part->integer("size") : std::nullopt;
        if (segment && covered && *segment > 0 && *segment <= highest_segment) {
            base.covers.push_back({static_cast<int>(*segment), *covered, part->text_or_empty("writer"), 0});
        }
    }
    return base;
}

int segment_number(const std::string& name, const recorded_form& form) {
    const std::string_view segment_name = form.segment_name;
    if (!name.starts_with(segment_name)) return 0;
    int number = 0;
    for (const char digit : std::string_view(name).substr(segment_name.size())) {
        if (digit < '0' || digit > '9' || number > 100'000'000) return 0;
        number = number * 10 + (digit - '0');
    }
    return number;
}

}  // namespace vistels
