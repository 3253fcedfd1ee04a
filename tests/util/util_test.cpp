// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <set>
#include <thread>

#include "util/colour_text.h"
#include "util/failure.h"
#include "util/plain_run_loop.h"
#include "util/posted_work_guard.h"
#include "util/record_lock.h"
#include "util/serial_queue.h"
#include "util/shared_text.h"
#include "util/signal.h"
#include "util/simulated_run_loop.h"
#include "util/uuid.h"

namespace vistels {
namespace {

TEST(colour_text, is_written_in_shortest_decimals) {
    struct {
        colour value;
        int decimals;
        const char* text;
    } const cases[] = {
        {{1, 0, 0, 1}, 4, "1.0,0.0,0.0"},
        {{1, 0, 0, 0.5}, 4, "1.0,0.0,0.0,0.5"},
        {{1, 0, 0, 0.9999}, 4, "1.0,0.0,0.0,0.9999"},
        {{1.0 / 3, 2.0 / 3, 0.00005, 1}, 4, "0.3333,0.6667,0.0001"},
        {{0.0625, -0.00001, 0.1234565, 0.99999},
         3,
         "0.063,0.0,0.123"},  // an alpha that rounds to 1 says nothing
    };
    for (const auto& one : cases) EXPECT_EQ(colour_text(one.value, one.decimals), one.text);

    // Written and read again it stays what it is, also where doubles stand almost as far apart as the
    // decimals.
    const auto once_rounded = colour_from_text(colour_text({0, 5, 2, 295446446555.011154}, 4));
    ASSERT_TRUE(once_rounded);
    EXPECT_EQ(colour_from_text(colour_text(*once_rounded, 4)), once_rounded);

    EXPECT_EQ(colour_from_text(" 0.5, 1 ,0"), (colour{0.5, 1, 0, 1}));
    for (const char* bad : {"", "1,2", "1,2,3,4,5", "a,b,c", "1,,2", "nan,0,0", "1 2 3"}) {
        EXPECT_FALSE(colour_from_text(bad)) << bad;
    }
}

TEST(rectangle_text, reads_every_form) {
    const rectangle expected{-1.5, 0, 100, 56};
    EXPECT_EQ(rectangle_text(expected), "-1.5,0,100,56");
    property_dictionary named;
    for (const auto& [key, value] : {std::pair{"x", -1.5}, {"y", 0.0}, {"width", 100.0}, {"height", 56.0}}) {
        named.add(key, value);
    }
    const property_value forms[] = {
        property_value("-1.5,0,100,56"),
        property_value("{{-1.5, 0}, {100, 56}}"),
        property_value(
            property_array{property_value(-1.5), property_value(0), property_value(100), property_value(56)}),
        property_value(named),
    };
    for (const auto& form : forms) EXPECT_EQ(rectangle_from(form), expected);
    for (const auto& bad : {property_value("1,2,3"), property_value("1,2,3,4,5"), property_value(4)}) {
        EXPECT_FALSE(rectangle_from(bad));
    }
}

TEST(record_lock, is_recursive_and_excludes_other_threads) {
    record_lock lock;
    int counter = 0;
    const auto work = [&] {
        for (int n = 0; n < 20'000; ++n) {
            const record_guard outer(lock);
            const record_guard inner(lock);
            ++counter;
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(counter, 40'000);
    EXPECT_EQ(sizeof(record_lock), 8U);
}

TEST(shared_text, is_kept_once_across_threads) {
    std::atomic<int> different = 0;
    const auto work = [&] {
        for (int n = 0; n < 5'000; ++n) {
            const shared_text a("text " + std::to_string(n % 7));
            const shared_text b("text " + std::to_string(n % 7));
            if (!(a == b) || a.str() != "text " + std::to_string(n % 7)) ++different;
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(different, 0);
    EXPECT_FALSE(shared_text("a") == shared_text("b"));
    EXPECT_TRUE(shared_text("") == shared_text());
}

constexpr failure_of<> disk_is_full{"test disk is full", "no space left, 100% used"};
constexpr failure_of<a_path, a_cause> not_saved{"test not saved", "\"%1\" could not be saved: %2."};
constexpr failure_of<a_path, a_term, a_cause> kept_beside{"test kept beside", "%3 %2 of it stand in \"%1\"."};

TEST(failure, is_a_value_that_is_worded_when_it_is_shown) {
    const auto full = not_saved("/vault/a%2.plist", disk_is_full());
    const auto beside = kept_beside("/vault/b.plist", "Parts", full);
    EXPECT_EQ(beside.message(),
              "\"/vault/a%2.plist\" could not be saved: no space left, 100% used. Parts of it stand in "
              "\"/vault/b.plist\".");
    const auto translate = [](const char* words) -> std::string {
        if (words == std::string_view(kept_beside.words)) return "In <%1>: %2. %3";
        if (words == std::string_view(not_saved.words)) return "%2: <%1>";
        return words == std::string_view("Parts") ? "PARTS" : "FULL";
    };
    EXPECT_EQ(beside.worded(translate), "In </vault/b.plist>: PARTS. FULL: </vault/a%2.plist>");
    EXPECT_EQ(beside.worded(translate, shown_paths::names), "In <b.plist>: PARTS. FULL: <a%2.plist>");

    EXPECT_EQ(beside.code(), "test kept beside");
    EXPECT_TRUE(beside.is(kept_beside));
    EXPECT_FALSE(beside.is(disk_is_full));
    EXPECT_EQ(beside.cause(), full);
    EXPECT_FALSE(disk_is_full().cause());
    EXPECT_EQ(full, not_saved("/vault/a%2.plist", disk_is_full()));
    EXPECT_NE(full, not_saved("/vault/b.plist", disk_is_full()));

    const failure none;
    EXPECT_FALSE(none);
    EXPECT_EQ(none.message() + none.worded(translate) + std::string(none.code()), "");
    EXPECT_EQ(none, failure());
    EXPECT_NE(none, full);
}

TEST(serial_queue, runs_in_order_and_drains) {
    std::vector<int> ran;
    {
        serial_queue queue("test");
        for (int n = 0; n < 100; ++n) queue.post([&ran, n] { ran.push_back(n); });
        queue.drain();
        EXPECT_EQ(ran.size(), 100U);
        queue.post([&ran] { ran.push_back(100); });
    }
    ASSERT_EQ(ran.size(), 101U);
    EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST(posted_work_guard, work_that_comes_after_its_owner_is_left) {
    struct owner {
        explicit owner(run_loop& where, std::string& told) : loop(where), said(told) {}
        ~owner() { said += " gone"; }
        void say_on_queue(const std::string& word) {
            queue.post([this, word] { loop.post(guard.guarded([this, word] { said += " " + word; })); });
        }
        run_loop& loop;
        std::string& said;
        posted_work_guard guard;
        serial_queue queue{"test"};
    };
    simulated_run_loop loop;
    std::string said;
    auto made = std::make_unique<owner>(loop, said);
    // In the order in which it was posted; the last one is posted while the owner is destroyed.
    made->say_on_queue("first");
    made->queue.drain();
    loop.run_posted();
    made->say_on_queue("never");
    made->queue.drain();
    made->guard.drop();
    made->say_on_queue("second");
    made->queue.drain();
    loop.run_posted();
    made->say_on_queue("never");
    made->queue.drain();
    made->say_on_queue("never");
    made.reset();
    loop.run_posted();
    EXPECT_EQ(said, " first second gone");

    // Work may destroy its owner, and takes what it is called with.
    made = std::make_unique<owner>(loop, said = "");
    auto end = made->guard.guarded([&made](std::unique_ptr<int> number, int& count) {
        count += *number;
        made.reset();
    });
    int count = 0;
    for (int call = 0; call < 2; ++call) end(std::make_unique<int>(2), count);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(said, " gone");
}

TEST(signal, observers_may_come_and_go_while_it_is_emitted) {
    signal<int> emitted;
    std::vector<std::string> heard;
    connection late;
    connection second;
    const connection first = emitted.connect([&](int value) {
        heard.push_back("first " + std::to_string(value));
        second.disconnect();
        if (value > 1) return;
        late = emitted.connect([&](int again) { heard.push_back("late " + std::to_string(again)); });
    });
    second = emitted.connect([&](int value) { heard.push_back("second " + std::to_string(value)); });
    emitted.emit(1);
    EXPECT_EQ(heard, (std::vector<std::string>{"first 1"}));
    emitted.emit(2);
    EXPECT_EQ(heard, (std::vector<std::string>{"first 1", "first 2", "late 2"}));
}

TEST(uuids, are_random_and_never_twice_in_threads_and_in_what_is_forked_off) {
    std::set<std::string> all;
    const auto add = [&](const std::string& one) {
        EXPECT_TRUE(all.insert(one).second) << one;
        EXPECT_EQ(one.size(), 36U);
        EXPECT_TRUE(one[14] == '4' && std::string("89AB").find(one[19]) != std::string::npos) << one;
    };
    for (int n = 0; n < 100; ++n) add(new_uuid());
    std::string of_thread;
    std::thread([&] { of_thread = new_uuid(); }).join();
    add(of_thread);
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const ::pid_t child = ::fork();
    if (child == 0) {
        const std::string one = new_uuid();
        ::_exit(::write(ends[1], one.data(), one.size()) == 36 ? 0 : 1);
    }
    std::string of_child(36, ' ');
    EXPECT_EQ(::read(ends[0], of_child.data(), of_child.size()), 36);
    ::waitpid(child, nullptr, 0);
    for (const int end : ends) ::close(end);
    add(of_child);
    add(new_uuid());
}

TEST(run_loops, run_timers_at_their_times_and_posted_work_from_other_threads) {
    simulated_run_loop simulated;
    std::vector<std::pair<char, double>> ran;
    const auto note = [&](char name) {
        return [&, name] { ran.emplace_back(name, simulated.time().seconds()); };
    };
    simulated.start_timer(2, false, note('b'));
    const auto repeating = simulated.start_timer(1, true, note('a'));
    simulated.start_timer(3.5, false, [&] { simulated.stop_timer(repeating); });
    simulated.advance_to(10);
    EXPECT_EQ(ran, (std::vector<std::pair<char, double>>{{'a', 1}, {'b', 2}, {'a', 2}, {'a', 3}}));

    plain_run_loop plain;
    bool posted = false;
    std::thread other([&] { plain.post([&] { posted = true; }); });
    EXPECT_TRUE(plain.run_until([&] { return posted; }, 30));
    other.join();
    EXPECT_FALSE(plain.run_until([] { return false; }, 0.0));
}

}  // namespace
}  // namespace vistels
