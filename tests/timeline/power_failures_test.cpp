// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/failure_runs.h"
#include "support/power_loss.h"

namespace vistels {
namespace {

using testing::failure_run;
using testing::put_folder;
using testing::recording_files;
using testing::rest;
using testing::step;
using testing::temporary_folder;

struct volume_kind {
    const char* name;
    bool has_hard_links;
    bool has_exchange;
    bool syncs_are_late;
};

class power : public ::testing::TestWithParam<volume_kind> {};

TEST_P(power, failures_keep_every_synced_edit_and_never_mix_states) {
    const auto edits = testing::scripted_edits();
    const auto states = testing::states_of(edits);
    temporary_folder folder;
    recording_files files;
    files.has_hard_links = GetParam().has_hard_links;
    files.has_exchange = GetParam().has_exchange;
    files.syncs_are_late = GetParam().syncs_are_late;
    {
        simulated_run_loop loop;
        auto document = testing::opened(folder / "t", loop, files);
        for (std::size_t n = 0; n < edits.size(); ++n) {
            ASSERT_TRUE(document->apply(edits[n]));
            files.note(step::kind::edit, n + 1);
            if (n % 3 != 2) continue;
            ASSERT_TRUE(document->save_now());
            files.note(step::kind::saved, n + 1);
        }
    }
    const auto steps = files.steps();
    failure_run run(std::string("power loss, ") + GetParam().name, 300);
    std::size_t sampled = 0;
    std::size_t replays = 0;
    for (const std::size_t end : run.order(steps.size() + 1)) {
        if (!run.next()) break;
        const auto at = lose_power(steps, end);
        const std::size_t promised = std::max(at.synced_edits, edits_in_synced_journal(at));
        // All subsets of few names, a sample of many.
        constexpr std::size_t few = 10;
        const std::size_t count = at.unsynced_names.size();
        const std::size_t subsets = std::size_t{1} << std::min(count, few);
        if (count > few) ++sampled;
        for (std::size_t subset = 0; subset < subsets; ++subset) {
            const std::uint64_t kept = count > few ? run.random()() : subset;
            for (const rest bytes : {rest::lost, rest::half, rest::whole, rest::zeros}) {
                // One of these is enough where not all is done.
                if (!failure_run::is_full() && run.below(4) != 0) continue;
                ++replays;
                const temporary_folder after;
                put_folder(at, kept, bytes, after / "t");
                const std::string found = testing::rows_opened_in(after / "t");
                const auto state = std::find(states.begin(), states.end(), found);
                const auto number = static_cast<std::size_t>(state - states.begin());
                ASSERT_TRUE(state != states.end() && number >= promised && number <= at.edits + 1)
                    << "power lost after step " << end << ", names " << kept << " of " << count << ", bytes "
                    << static_cast<int>(bytes) << ": " << promised << " to " << at.edits
                    << " edits were to be found, not " << found;
            }
        }
    }
    std::printf("failures: %s: %zu folders recovered, after %zu of the steps from a sample of the subsets\n",
                GetParam().name, replays, sampled);
}

INSTANTIATE_TEST_SUITE_P(failures, power,
                         ::testing::Values(volume_kind{"with exchange", true, true, false},
                                           volume_kind{"with links", true, false, false},
                                           volume_kind{"without links", false, false, false},
                                           volume_kind{"with late syncs", true, true, true}),
                         [](const auto& kind) {
                             std::string name = kind.param.name;
                             std::replace(name.begin(), name.end(), ' ', '_');
                             return name;
                         });

}  // namespace
}  // namespace vistels
