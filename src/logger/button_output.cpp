// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/button_output.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include "formula/word_matching.h"

namespace vistels {

namespace {

constexpr const char* usual_time_format = "hh:mm:ss";

// The parts of a time that a format asks for: hours (3), minutes, or seconds alone (1).
int parts_of(const std::string& format) {
    return 1 + static_cast<int>(std::count(format.begin(), format.end(), ':'));
}

int decimals_of(const std::string& format) {
    const auto dot = format.find('.');
    return dot == std::string::npos ? 0 : static_cast<int>(std::min<std::size_t>(format.size() - dot - 1, 3));
}

// All but the last figure of the whole seconds may go.
std::string without_leading_zeros(const std::string& text) {
    const std::size_t sign = text.starts_with('-') ? 1 : 0;
    const std::size_t last = std::min(text.find('.'), text.size()) - 1;
    std::size_t from = sign;
    while (from < last && (text[from] == '0' || text[from] == ':')) ++from;
    return text.substr(0, sign) + text.substr(from);
}

std::string time_output(double seconds, const button_formula& shown) {
    const std::string& format =
        shown.output_time_format.empty() ? usual_time_format : shown.output_time_format;
    const int decimals = decimals_of(format);
    const double scale = std::pow(10.0, decimals);
    // A hair more, so that what is stored a little below a figure is not cut to the one before.
    const double counted = std::floor(std::abs(seconds) * scale + 1e-4);
    if (!std::isfinite(seconds) || counted > 1e12) return {};
    const auto units = static_cast<long long>(counted);
    const long long whole = units / static_cast<long long>(scale);
    const int parts = std::min(parts_of(format), 3);
    char text[64];
    if (parts == 3) {
        std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
    } else if (parts == 2) {
        std::snprintf(text, sizeof text, "%02lld:%02lld", whole / 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%02lld", whole);
    }
    std::string made = (seconds < 0 && units > 0 ? "-" : "") + std::string(text);
    if (decimals > 0) {
        const std::string rest = std::to_string(units % static_cast<long long>(scale));
        made += '.' + std::string(static_cast<std::size_t>(decimals) - rest.size(), '0') + rest;
    }
    return shown.remove_prefix_0s ? without_leading_zeros(made) : made;
}

bool asks_for(const token_ITEM& word, const char* identifier) {
    const auto& all = word.ray_word_IDENTIFIERS;
    return std::find(all.begin(), all.end(), identifier) != all.end();
}

// Whether a word of the formula asks for the row, by its name or category; all rows where no word asks for
// any.
bool names_row(const parser_ROOT& formula, const std::string& name, const std::string& category) {
    bool asks_for_rows = false;
    for (const token_ITEM& word : formula.ray_token_ITEMs()) {
        if (word.type != token_type::WORDS) continue;
        const bool by_name = asks_for(word, "RN");
        const bool by_category = asks_for(word, "RC");
        asks_for_rows = asks_for_rows || by_name || by_category;
        if (by_name && matches(name, word.chars, word.wild_card_search)) return true;
        if (by_category && matches(category, word.chars, word.wild_card_search)) return true;
    }
    return !asks_for_rows;
}

void add(clip_tally& to, const clip_tally& more) {
    to.passing += more.passing;
    to.of += more.of;
    to.seconds += more.seconds;
    if (more.first && (!to.first || *more.first < *to.first)) to.first = more.first;
}

}  // namespace

std::string output_text(const button_formula& shown, const clip_tally& tally) {
    if (shown.output_type == "duration") return time_output(tally.seconds, shown);
    if (shown.output_type == "first time")
        return tally.first ? time_output(*tally.first, shown) : std::string();
    if (shown.output_type == "percentage") {
        const double share =
            tally.of == 0 ? 0 : static_cast<double>(tally.passing) / static_cast<double>(tally.of);
        return std::to_string(std::lround(share * 100)) + "%";
    }
    return std::to_string(tally.passing);
}

formula_tallies::formula_tallies(const std::vector<std::string>& formulas) {
    for (const auto& text : formulas) {
        auto parsed = parser_ROOT::for_filter(text);
        clip_filter filter(parsed);
        formulas_.push_back({std::move(parsed), std::move(filter)});
    }
}

// What of a row all formulas look at, and where each of its clips stood before.
struct formula_tallies::row_clips {
    static constexpr std::size_t is_new = std::numeric_limits<std::size_t>::max();
    struct place {
        const sxy_CLIP* clip = nullptr;
        double start = 0;
        double seconds = 0;
        std::size_t before = is_new;
    };

    // Both lists are in the same order, so that clips that are the same come in it.
    row_clips(const clip_list& now, const clip_list& earlier) {
        all.reserve(now.size());
        auto old = earlier.begin();
        std::size_t index = 0;
        for (const clip_pointer& clip : now) {
            for (; old != earlier.end() && *old != clip && clip_before(**old, *clip); ++old) ++index;
            const bool is_known = old != earlier.end() && *old == clip;
            const double start = clip->secs_start();
            all.push_back({clip.get(), start, clip->secs_end() - start, is_known ? index : is_new});
            if (!is_known) continue;
            ++old;
            ++index;
        }
    }

    std::vector<place> all;
};

void formula_tallies::judge(formula& by, const row_clips& clips, const std::vector<bool>* passed,
                            judged_row& to) {
    std::vector<bool> passes;
    passes.reserve(clips.all.size());
    clip_tally tally;
    if (names_row(by.parsed, to.row->name(), to.row->category())) tally.of = clips.all.size();
    for (const auto& [clip, start, seconds, before] : clips.all) {
        const bool is_known = passed && before != row_clips::is_new;
        const bool does_pass = is_known ? (*passed)[before] : by.filter.judge(*clip, to.row.get());
        passes.push_back(does_pass);
        if (!does_pass) continue;
        if (tally.passing++ == 0) tally.first = start;
        tally.seconds += seconds;
    }
    to.passes.push_back(std::move(passes));
    to.tallies.push_back(tally);
}

std::optional<formula_tallies::judged_row> formula_tallies::judge(const row_pointer& row,
                                                                  const judged_row* before, job& work) {
    const bool is_renamed =
        before && (before->row->name() != row->name() || before->row->category() != row->category());
    const row_clips clips(row->clips(), before ? before->row->clips() : clip_list());
    judged_row made{row, {}, {}};
    for (std::size_t n = 0; n < formulas_.size(); ++n) {
        if (work.is_cancelled()) return std::nullopt;
        const bool reuses = before && !(is_renamed && formulas_[n].filter.looks_at_rows());
        judge(formulas_[n], clips, reuses ? &before->passes[n] : nullptr, made);
    }
    return made;
}

std::optional<std::vector<std::optional<clip_tally>>> formula_tallies::count(
    const std::vector<row_pointer>& rows, job& work) {
    std::unordered_map<shared_text, judged_row> now;
    std::vector<clip_tally> sums(formulas_.size());
    for (const auto& row : rows) {
        auto known = rows_.extract(row->uuid());
        std::optional<judged_row> judged;
        if (!known || known.mapped().row != row)
            judged = judge(row, known ? &known.mapped() : nullptr, work);
        else if (!work.is_cancelled())
            judged = std::move(known.mapped());
        if (!judged) {
            if (known) rows_.insert(std::move(known));
            rows_.merge(now);
            return std::nullopt;
        }
        for (std::size_t n = 0; n < sums.size(); ++n) add(sums[n], judged->tallies[n]);
        now.emplace(row->uuid(), std::move(*judged));
    }
    rows_ = std::move(now);
    std::vector<std::optional<clip_tally>> counted;
    for (std::size_t n = 0; n < sums.size(); ++n) {
        counted.push_back(formulas_[n].filter.has_error() ? std::nullopt : std::optional(sums[n]));
    }
    return counted;
}

}  // namespace vistels
