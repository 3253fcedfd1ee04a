// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/job_list.h"
#include "util/file_failures.h"
#include "util/job_failures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <thread>

#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using state = job_status::state;

// Works that run until they are let through or cancelled; what happens is noted in order.
class job_listing : public ::testing::Test {
  protected:
    job_order order(const std::string& name, std::vector<std::string> keys = {}) {
        job_order made{name, {}, std::move(keys)};
        made.what = name;
        made.begin = [this, name]() -> result<void> {
            notes += "begin " + name + ", ";
            return {};
        };
        made.work = [&gate = gates[name], &at_work = at_work](job& work) -> result<void> {
            ++at_work;
            while (!gate && !work.is_cancelled()) std::this_thread::yield();
            --at_work;
            return gate ? result<void>() : job_was_cancelled();
        };
        made.then = [this, name](const result<void>& outcome, bool cancelled) {
            notes += name + (cancelled ? " cancelled, " : outcome ? " done, " : " failed, ");
            return true;
        };
        return made;
    }
    void until(const std::function<bool()>& condition) {
        while (!condition()) {
            loop.run_posted();
            std::this_thread::yield();
        }
    }
    void until_at_work(int count) {
        until([&] { return at_work == count; });
    }
    void until_listed(std::size_t count) {
        until([&] { return list->jobs().size() == count; });
    }
    // "a running, b waiting, "
    std::string listed() {
        std::string all;
        for (const auto& one : list->jobs()) {
            all += one.title + (one.now == state::waiting   ? " waiting, "
                                : one.now == state::running ? " running, "
                                                            : " stopping, ");
        }
        return all;
    }

    simulated_run_loop loop;
    std::map<std::string, std::atomic<bool>> gates;
    std::atomic<int> at_work = 0;
    std::string notes;
    std::unique_ptr<job_list> list = std::make_unique<job_list>(loop, 2);
    std::unique_ptr<job_group> group = std::make_unique<job_group>(*list);
};

TEST_F(job_listing, so_many_run_at_once_and_the_rest_waits_in_order) {
    for (const char* name : {"a", "b", "c", "d"}) group->start(order(name));
    EXPECT_EQ(listed(), "a running, b running, c waiting, d waiting, ");
    EXPECT_EQ(notes, "");
    until_at_work(2);
    EXPECT_EQ(notes, "begin a, begin b, ");
    gates["b"] = true;
    until_listed(3);
    until_at_work(2);
    EXPECT_EQ(listed(), "a running, c running, d waiting, ");
    for (auto& [name, gate] : gates) gate = true;
    until_listed(0);
    EXPECT_LT(notes.find("b done, begin c, "), notes.find("begin d, "));
    EXPECT_NE(notes.find("d done, "), notes.npos);
}

TEST_F(job_listing, those_that_share_a_key_run_one_after_another) {
    group->start(order("a", {"vault"}));
    group->start(order("b", {"vault", "other"}));
    group->start(order("c", {"other"}));  // waits for b, which was asked for before
    group->start(order("d"));
    EXPECT_EQ(listed(), "a running, b waiting, c waiting, d running, ");
    EXPECT_EQ(list->holder("vault")->title, "a");
    EXPECT_EQ(list->holder("other")->title, "b");
    EXPECT_FALSE(list->holder("none"));
    for (const char* name : {"a", "b", "c"}) {
        until_at_work(2);
        gates[name] = true;
        until([&] { return notes.find(std::string(name) + " done") != notes.npos; });
    }
    EXPECT_EQ(notes, "begin a, begin d, a done, begin b, b done, begin c, c done, ");
}

TEST_F(job_listing, cancelling_ends_what_runs_and_what_waits) {
    const auto first = group->start(order("a", {"k"}));
    const auto second = group->start(order("b", {"k"}));
    until_at_work(1);
    list->cancel(second);
    list->cancel(first);
    EXPECT_EQ(listed(), "a stopping, b stopping, ");
    EXPECT_TRUE(group->unfinished().empty());
    EXPECT_TRUE(group->has("a"));
    until_listed(0);
    EXPECT_EQ(notes, "begin a, b cancelled, a cancelled, ");
    EXPECT_FALSE(group->has("a"));
    // Nothing that is over stands in the way.
    group->start(order("c", {"k"}));
    until_at_work(1);
}

TEST_F(job_listing, what_cannot_begin_ends_with_its_reason) {
    job_order refused = order("a");
    refused.begin = [] { return too_many_files_are_open(); };
    std::string reason;
    refused.then = [&](const result<void>& outcome, bool) {
        reason = outcome.message();
        return true;
    };
    group->start(std::move(refused));
    EXPECT_EQ(reason, "");
    until_listed(0);
    EXPECT_EQ(reason, "too many files are open");
    EXPECT_EQ(at_work, 0);
}

// However the job comes to be unwanted, what it has made goes, and before the next that needs the same
// begins.
TEST_F(job_listing, what_nobody_wants_is_taken_away_again) {
    enum class way { used, not_used, cancelled_late, given_up_late, list_gone };
    for (const way which :
         {way::used, way::not_used, way::cancelled_late, way::given_up_late, way::list_gone}) {
        group.reset();
        list = std::make_unique<job_list>(loop, 2);
        group = std::make_unique<job_group>(*list);
        std::atomic<bool> has_made = false;
        std::atomic<bool> may_end = false;
        std::atomic<int> discarded = 0;
        std::atomic<bool> was_discarded_before = false;
        job_order one{"one", {}, {"k"}};
        one.work = [&](job&) -> result<void> {
            has_made = true;
            while (!may_end) std::this_thread::yield();
            return {};
        };
        one.discard = [&] { ++discarded; };
        one.then = [&](const result<void>&, bool) { return which != way::not_used; };
        const auto id = group->start(std::move(one));
        job_order next{"next", {}, {"k"}};
        next.work = [&](job&) -> result<void> {
            was_discarded_before = discarded == 1;
            return {};
        };
        until([&] { return has_made.load(); });
        if (which <= way::not_used) group->start(std::move(next));
        if (which == way::cancelled_late) list->cancel(id);
        if (which == way::given_up_late) group.reset();
        may_end = true;
        if (which == way::list_gone) {
            group.reset();
            list.reset();
            loop.run_posted();
        } else {
            until([&] { return list->jobs().empty() && !list->holder("k"); });
        }
        const bool is_used = which == way::used;
        EXPECT_EQ(discarded, is_used ? 0 : 1) << static_cast<int>(which);
        EXPECT_EQ(was_discarded_before, which == way::not_used);
    }
}

TEST_F(job_listing, destroying_it_waits_and_tells_nobody) {
    group->start(order("a", {"k"}));
    group->start(order("b", {"k"}));
    until_at_work(1);
    group.reset();
    list.reset();
    EXPECT_EQ(at_work, 0);
    loop.run_posted();
    EXPECT_EQ(notes, "begin a, ");
}

TEST_F(job_listing, progress_is_told_once_for_all_that_came_meanwhile) {
    std::atomic<int> step = 0;
    job_order one{"one", {}};
    one.work = [&](job& work) -> result<void> {
        while (step < 1) std::this_thread::yield();
        for (int i = 1; i <= 1000; ++i) work.set_progress(i / 4000.0);
        step = 2;
        while (step < 3) std::this_thread::yield();
        return {};
    };
    const auto id = group->start(std::move(one));
    int told = 0;
    const connection heard = list->progressed.connect([&](job_list::job_id) { ++told; });
    loop.run_posted();
    step = 1;
    while (step < 2) std::this_thread::yield();
    EXPECT_EQ(told, 0);
    EXPECT_FALSE(list->find(id)->seconds_left);
    loop.advance(10);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(list->find(id)->progress, 0.25);
    EXPECT_NEAR(list->find(id)->seconds_left.value_or(0), 30, 1e-9);
    step = 3;
    until_listed(0);
}

TEST_F(job_listing, what_lasts_half_a_second_is_worth_showing) {
    const auto running = group->start(order("a", {"k"}));
    const auto waiting = group->start(order("b", {"k"}));
    int changes = 0;
    const connection heard = list->changed.connect([&] { ++changes; });
    loop.advance(0.49);
    EXPECT_FALSE(list->find(running)->lasts);
    EXPECT_EQ(changes, 0);
    loop.advance(0.01);
    EXPECT_TRUE(list->find(running)->lasts);
    EXPECT_TRUE(list->find(waiting)->lasts);
    EXPECT_EQ(changes, 2);
}

}  // namespace
}  // namespace vistels
