// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures filters on a long timeline.
//   bench_filter [--short] [--clips N] [--pairs N]
// Three formulas are judged over all clips and the marks of clips and qualifiers set where they differ,
// beside SQLite, which does the same with the same conditions in indexed tables in memory; runs in turn,
// processor time, medians of the ratios. Both must find the same clips. Exits with 1 when a target is missed,
// with 2 when they differ.

#include <sqlite3.h>

#include <array>
#include <cinttypes>
#include <random>

#include "formula/clip_filter.h"
#include "support/measure.h"
#include "timeline/records/clip_note.h"

namespace {

using namespace vistels;
using bench::median;
using bench::paired_runs;
using bench::seconds_of;
using bench::stop_with;
using bench::take_short;

constexpr std::size_t row_count = 20;
constexpr double most_of_peer = 0.1;
constexpr double most_one_clip_seconds = 2e-6;
constexpr double most_parse_seconds = 5e-3;

bool all_met = true;

const char* verdict(bool met) {
    all_met = all_met && met;
    return met ? "" : "  MISSED";
}

struct condition {
    const char* formula;
    const char* sql;       // of the clip c and its row r
    const char* name_sql;  // of a qualifier that the formula marks
};

#define HAS(what) "EXISTS (SELECT 1 FROM qualifiers q WHERE q.clip = c.id AND " what ")"

constexpr condition conditions[] = {
    {"[RN]\"row 1\" & [QN]\"Goal*\"", "r.name = 'row 1' AND " HAS("q.name GLOB 'Goal*'"),
     "name GLOB 'Goal*'"},
    {"[QN]\"*ot*\"", HAS("instr(q.name, 'ot')"), "instr(name, 'ot')"},
    {"(\"Goal\" | \"Shot*\") & [QC]\"What\" ! [NT]\"*late*\"",
     "(" HAS("q.name = 'Goal'") " OR " HAS("q.name GLOB 'Shot*'") ") AND " HAS(
         "q.category = 'What'") " AND NOT ifnull(instr(c.note, 'late'), 0)",
     "name = 'Goal' OR name GLOB 'Shot*' OR category = 'What'"},
};

// The same clips each time: 0 to 4 qualifiers, a note on one of ten.
class corpus {
  public:
    explicit corpus(std::size_t clips, std::size_t name_length = 0) {
        static constexpr std::string_view names[] = {
            "Goal",   "Goal kick", "Shot",  "Shot off target", "Pass",    "Left foot", "Header", "Corner",
            "Press",  "Turnover",  "Throw", "Free kick",       "Offside", "Foul",      "Cross",  "Dribble",
            "Tackle", "Block",     "Save",  "Clearance",       "Switch",  "Overlap",   "Duel",   "Recovery"};
        static constexpr std::string_view categories[] = {"What", "Where", "Who", "Result", "Phase"};
        const auto of_length = [&](std::string_view text) {
            std::string made(text);
            while (made.size() < name_length) made += " - and so on";
            return shared_text(made);
        };
        for (const auto name : names) names_.push_back(of_length(name));
        for (const auto category : categories) {
            categories_.push_back(category == "What" ? shared_text(category) : of_length(category));
        }
        for (std::size_t row = 0; row < row_count; ++row) add_row(row, clips / row_count);
    }

    const std::vector<row_pointer>& rows() const { return rows_; }

  private:
    void add_row(std::size_t number, std::size_t clips) {
        auto row = std::make_shared<sxy_ROW>();
        row->set_uuid(shared_text("row uuid " + std::to_string(number)));
        row->set_name("row " + std::to_string(number + 1));
        row->set_category(number % 2 == 0 ? "Attack" : "Defence");
        std::vector<clip_pointer> all;
        all.reserve(clips);
        for (std::size_t n = 0; n < clips; ++n) all.push_back(clip(*row, n));
        row->clips().assign(std::move(all));
        rows_.push_back(std::move(row));
    }

    clip_pointer clip(const sxy_ROW& row, std::size_t number) {
        sxy_CLIP clip;
        clip.set_id(uuid());
        clip.set_secs_start(static_cast<double>(number) * 7);
        clip.set_secs_end(static_cast<double>(number) * 7 + 4);
        clip.set_row_uuid_in_clip(row.uuid());
        clip.set_stars(static_cast<int>(random_() % 5));
        qual_ROOT all;
        for (auto left = random_() % 5; left > 0; --left) {
            qual_ITEM item;
            item.set_uuid(uuid());
            item.set_name(names_[random_() % names_.size()]);
            item.set_category(categories_[random_() % categories_.size()]);
            item.set_time(clip.secs_start() + 1);
            item.set_real_local_time("14:05:09");
            all.push_back(std::move(item));
        }
        clip.set_qualifiers(std::move(all));
        if (random_() % 10 == 0) {
            auto note = std::make_shared<clip_note>();
            note->note_string = random_() % 5 == 0 ? "The keeper came too late to reach the ball here."
                                                   : "The line stands well, see how they move up.";
            clip.set_note(std::move(note));
        }
        return std::make_shared<const sxy_CLIP>(std::move(clip));
    }

    std::string uuid() {
        char text[37];
        std::snprintf(text, sizeof text, "%08" PRIX64 "-0000-4000-A000-%012" PRIX64,
                      static_cast<std::uint64_t>(random_() & 0xFFFFFFFFU),
                      static_cast<std::uint64_t>(random_() & 0xFFFFFFFFFFFFU));
        return text;
    }

    std::mt19937_64 random_{20261121};
    std::vector<shared_text> names_;
    std::vector<shared_text> categories_;
    std::vector<row_pointer> rows_;
};

// The clips in tables, and an index for whatever a condition asks for.
class tables {
  public:
    explicit tables(const std::vector<row_pointer>& rows) {
        if (sqlite3_open(":memory:", &database_) != SQLITE_OK) stop_with("SQLite cannot be opened");
        run("CREATE TABLE rows (id INTEGER PRIMARY KEY, name TEXT, category TEXT);"
            "CREATE TABLE clips (id INTEGER PRIMARY KEY, row INTEGER, note TEXT, filtered_in INTEGER);"
            "CREATE TABLE qualifiers (id INTEGER PRIMARY KEY, clip INTEGER, name TEXT, category TEXT,"
            " filtered_in INTEGER);"
            "BEGIN");
        fill(rows);
        run("COMMIT;"
            "CREATE INDEX rows_name ON rows (name);"
            "CREATE INDEX clips_row ON clips (row);"
            "CREATE INDEX qualifiers_clip ON qualifiers (clip, name, category);"
            "CREATE INDEX qualifiers_name ON qualifiers (name, clip);"
            "CREATE INDEX qualifiers_category ON qualifiers (category, clip);"
            "ANALYZE");
    }
    ~tables() { sqlite3_close(database_); }
    tables(const tables&) = delete;
    tables& operator=(const tables&) = delete;

    // A verdict for each clip; returns how many pass.
    std::size_t verdicts(const condition& one) {
        return number("SELECT sum(passes) FROM (SELECT c.id, (" + std::string(one.sql) +
                      ") AS passes FROM clips c JOIN rows r ON r.id = c.row)");
    }
    // The same asked in another way.
    std::size_t passing(const condition& one) {
        return number("SELECT count(*) FROM clips c JOIN rows r ON r.id = c.row WHERE " +
                      std::string(one.sql));
    }
    // The verdicts and the qualifiers' marks, kept in the tables where they differ.
    void mark(const condition& one) {
        run("UPDATE clips SET filtered_in = v.passes FROM (SELECT c.id, ifnull(" + std::string(one.sql) +
            ", 0) AS passes FROM clips c JOIN rows r ON r.id = c.row) AS v"
            " WHERE clips.id = v.id AND clips.filtered_in <> v.passes");
        const std::string of_name = "(" + std::string(one.name_sql) + ")";
        run("UPDATE qualifiers SET filtered_in = " + of_name + " WHERE filtered_in <> " + of_name);
    }
    std::size_t marked() { return number("SELECT count(*) FROM clips WHERE filtered_in"); }

  private:
    void run(const std::string& sql) {
        if (sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
            stop_with(std::string("SQLite: ") + sqlite3_errmsg(database_));
        }
    }
    sqlite3_stmt* prepared(const std::string& sql) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
            stop_with(std::string("SQLite: ") + sqlite3_errmsg(database_));
        }
        return statement;
    }
    std::size_t number(const std::string& sql) {
        sqlite3_stmt* statement = prepared(sql);
        if (sqlite3_step(statement) != SQLITE_ROW) stop_with("SQLite found nothing");
        const auto found = static_cast<std::size_t>(sqlite3_column_int64(statement, 0));
        sqlite3_finalize(statement);
        return found;
    }
    static void put(sqlite3_stmt* statement, int at, const std::string& text) {
        sqlite3_bind_text(statement, at, text.c_str(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
    }
    static void insert(sqlite3_stmt* statement) {
        if (sqlite3_step(statement) != SQLITE_DONE) stop_with("SQLite takes no more");
        sqlite3_reset(statement);
        sqlite3_clear_bindings(statement);
    }
    void fill(const std::vector<row_pointer>& rows) {
        sqlite3_stmt* row_in = prepared("INSERT INTO rows VALUES (?, ?, ?)");
        sqlite3_stmt* clip_in = prepared("INSERT INTO clips VALUES (?, ?, ?, 1)");
        sqlite3_stmt* qualifier_in = prepared("INSERT INTO qualifiers VALUES (NULL, ?, ?, ?, 0)");
        sqlite3_int64 row_number = 0;
        sqlite3_int64 clip_number = 0;
        for (const auto& row : rows) {
            sqlite3_bind_int64(row_in, 1, ++row_number);
            put(row_in, 2, row->name());
            put(row_in, 3, row->category());
            insert(row_in);
            for (const auto& clip : row->clips()) {
                sqlite3_bind_int64(clip_in, 1, ++clip_number);
                sqlite3_bind_int64(clip_in, 2, row_number);
                if (clip->note()) put(clip_in, 3, clip->note_text());
                insert(clip_in);
                for (const auto& item : *clip->qualifiers()) {
                    sqlite3_bind_int64(qualifier_in, 1, clip_number);
                    put(qualifier_in, 2, item.name().str());
                    put(qualifier_in, 3, item.category().str());
                    insert(qualifier_in);
                }
            }
        }
        for (auto* statement : {row_in, clip_in, qualifier_in}) sqlite3_finalize(statement);
    }

    sqlite3* database_ = nullptr;
};

// From the text to the marks.
std::size_t filter(const char* formula, const std::vector<row_pointer>& rows) {
    job work;
    const auto found = clip_filter(formula).passing_and_marks(rows, work);
    put_in_place(*found);
    return found->passing;
}

void compare_with_sqlite(const std::vector<row_pointer>& rows, std::size_t clips, int pairs) {
    tables peer(rows);
    std::array<paired_runs, std::size(conditions)> runs;
    std::array<paired_runs, std::size(conditions)> verdicts_alone;
    for (int n = 0; n < pairs; ++n) {
        for (std::size_t at = 0; at < std::size(conditions); ++at) {
            std::size_t ours = 0;
            std::size_t theirs = 0;
            const double our_seconds = seconds_of([&] { ours = filter(conditions[at].formula, rows); });
            runs[at].add(our_seconds, seconds_of([&] { peer.mark(conditions[at]); }));
            verdicts_alone[at].add(our_seconds, seconds_of([&] { theirs = peer.verdicts(conditions[at]); }));
            if (ours != theirs || ours != peer.marked() || ours != peer.passing(conditions[at])) {
                stop_with(std::string(conditions[at].formula) + ": " + std::to_string(ours) +
                          " clips pass, by SQLite " + std::to_string(theirs));
            }
        }
    }
    const double per_clip = 1e9 / static_cast<double>(clips);
    for (std::size_t at = 0; at < std::size(conditions); ++at) {
        const auto& alone = verdicts_alone[at];
        std::printf("%s\n  %zu clips pass\n", conditions[at].formula, filter(conditions[at].formula, rows));
        all_met = bench::tell("  verdicts and marks, to SQLite's", runs[at], most_of_peer) && all_met;
        std::printf("  %.1f to %.0f ns a clip, 1/%.1f; to SQLite's verdicts alone, %.0f ns, 1/%.1f\n",
                    median(runs[at].ours) * per_clip, median(runs[at].theirs) * per_clip,
                    1 / runs[at].ratio(), median(alone.theirs) * per_clip, 1 / alone.ratio());
    }
}

// Each formula once a round, so that the marks change; nanoseconds a clip.
double all_formulas(const std::vector<row_pointer>& rows, std::size_t clips, int rounds) {
    std::vector<double> seconds;
    for (int n = 0; n < rounds; ++n) {
        seconds.push_back(seconds_of([&] {
            for (const auto& one : conditions) filter(one.formula, rows);
        }));
    }
    return median(std::move(seconds)) * 1e9 / static_cast<double>(clips * std::size(conditions));
}

void measure_lists(const std::vector<row_pointer>& rows, int rounds) {
    for (const auto& one : conditions) {
        std::vector<double> verdicts_alone;
        std::vector<double> judging;
        std::vector<double> placing;
        std::size_t changes = 0;
        for (int n = 0; n < rounds; ++n) {
            filter(conditions[(&one - conditions + 1) % 3].formula, rows);
            job work;
            clip_filter judge(one.formula);
            verdicts_alone.push_back(seconds_of([&] { clip_filter(one.formula).passing(rows, work); }));
            std::optional<filter_outcome> found;
            judging.push_back(seconds_of([&] { found = judge.passing_and_marks(rows, work); }));
            placing.push_back(seconds_of([&] { put_in_place(*found); }));
            changes = found->clip_marks.size() + found->qualifier_marks.size();
        }
        std::printf(
            "in a job: %-50s %7.1f ms, and %6.1f ms to put %zu marks in place; %.1f ms without marks\n",
            one.formula, median(std::move(judging)) * 1e3, median(std::move(placing)) * 1e3, changes,
            median(std::move(verdicts_alone)) * 1e3);
    }
    std::vector<double> clearing;
    for (int n = 0; n < rounds; ++n) {
        filter(conditions[1].formula, rows);
        clearing.push_back(seconds_of([&] { unfilter(rows); }));
    }
    std::printf("taking the filter away: %.1f ms\n", median(std::move(clearing)) * 1e3);
}

void measure_one_clip(const std::vector<row_pointer>& rows) {
    std::mt19937_64 random(5);
    for (const auto& one : conditions) {
        clip_filter judge(one.formula);
        std::vector<std::pair<const sxy_CLIP*, const sxy_ROW*>> chosen;
        for (int n = 0; n < 20'000; ++n) {
            const auto& row = rows[random() % rows.size()];
            chosen.emplace_back(row->clips()[random() % row->clips().size()].get(), row.get());
        }
        const double seconds = seconds_of([&] {
                                   for (const auto& [clip, row] : chosen) judge.judge_and_mark(*clip, row);
                               }) /
                               static_cast<double>(chosen.size());
        std::printf("one clip anew: %-45s %7.0f ns%s\n", one.formula, seconds * 1e9,
                    verdict(seconds <= most_one_clip_seconds));
    }
}

void measure_parsing() {
    std::string formula = "[QN]\"Goal*\"";
    while (formula.size() < 10'000) formula += " & ([QC,QN]\"What\" | !\"*late shot*\")";
    std::vector<double> seconds;
    for (int n = 0; n < 21; ++n) {
        seconds.push_back(seconds_of([&] { const clip_filter filter{std::string_view(formula)}; }));
    }
    const double found = median(std::move(seconds));
    std::printf("a formula of %zu characters, to the filter: %.2f ms%s\n", formula.size(), found * 1e3,
                verdict(found <= most_parse_seconds));
}

std::size_t number_of(const char* text) {
    const auto number = std::strtoull(text, nullptr, 10);
    if (number < 1) stop_with("a number is wanted instead of \"" + std::string(text) + "\"");
    return number;
}

}  // namespace

int main(int count, char** arguments) {
    const bool is_short = take_short(count, arguments);
    std::size_t clips = is_short ? 20'000 : 1'000'000;
    int pairs = is_short ? 1 : 3;
    for (int n = 1; n < count; ++n) {
        const std::string name = arguments[n];
        if (name == "--clips" && n + 1 < count) {
            clips = number_of(arguments[++n]);
        } else if (name == "--pairs" && n + 1 < count) {
            pairs = static_cast<int>(number_of(arguments[++n]));
        } else {
            stop_with("usage: bench_filter [--short] [--clips N] [--pairs N]");
        }
    }
    measure_parsing();
    const std::size_t fewer = clips / 10;
    {
        const corpus small(fewer);
        const corpus long_names(fewer, 200);
        all_formulas(small.rows(), fewer, 1);
        all_formulas(long_names.rows(), fewer, 1);
        std::printf("%zu clips: %.1f ns a clip and formula, with names of 200 characters %.1f\n", fewer,
                    all_formulas(small.rows(), fewer, 9), all_formulas(long_names.rows(), fewer, 9));
    }
    const corpus all(clips);
    std::printf("%zu clips: %.1f ns a clip and formula\n", clips, all_formulas(all.rows(), clips, 5));
    measure_lists(all.rows(), 5);
    measure_one_clip(all.rows());
    compare_with_sqlite(all.rows(), clips, pairs);
    return all_met || is_short ? 0 : 1;
}
