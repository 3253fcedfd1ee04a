// SPDX-License-Identifier: GPL-3.0-or-later
// The message bar: what happened once, states that last, and the words for them.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEvent>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTranslator>

#include "app/start/start_failures.h"
#include "document/document_failures.h"
#include "shell/event/event_messages.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/message_bar.h"
#include "timeline/edits/edit_failures.h"
#include "timeline/files/timeline_file_failures.h"
#include "util/file_failures.h"

namespace vistels {
namespace {

struct messages : public ::testing::Test {
    void answer(int choice = 0) {
        auto* button = bar.findChild<QPushButton*>(QStringLiteral("message.choice.%1").arg(choice));
        ASSERT_TRUE(button);
        button->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    static user_message lasting(const char* text) { return save_failed_message("Harbour", "/h", text); }

    message_bar bar;
};

TEST_F(messages, come_one_after_another) {
    bool done = false;
    opening_report report;
    report.event = "Harbour";
    report.recovered_edits = 14;
    report.finished = QStringList{"Attack until 0:12:30"};
    const auto kept = changes_of_another_were_kept("/h/chron data.plist", "chron data conflict");
    report.messages = {display_settings_were_lost("/h/logger.plist"), kept};
    report.conflicts = {{kept, "/h/chron data.plist", "/h/chron data conflict"}};
    const auto all = messages_of_opening(report);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_TRUE(all[0].detail.contains("Attack until"));
    EXPECT_TRUE(all[2].headline.contains("another program"));
    for (int i = 0; i < 2; ++i) bar.tell(all[static_cast<std::size_t>(i)]);
    bar.tell(
        {user_message::tone::warning, "Third", {}, {}, {{"Do it", [&] { done = true; }}, {"Leave it", {}}}});
    ASSERT_EQ(bar.waiting(), 3u);
    EXPECT_TRUE(bar.text().contains("14") && bar.text().contains("Harbour")) << bar.text().toStdString();
    answer();
    EXPECT_TRUE(bar.text().contains("logger.plist"));
    answer();
    EXPECT_FALSE(done);
    answer();
    EXPECT_TRUE(done);
    EXPECT_TRUE(bar.isHidden());
}

TEST_F(messages, good_news_go_by_themselves) {
    auto* going = bar.findChild<QTimer*>("message.going");
    ASSERT_TRUE(going);
    bar.tell({user_message::tone::good, "Done, and more to do", {}, {}, {{"Do it", [] {}}}});
    EXPECT_FALSE(going->isActive());
    answer();
    bar.tell({user_message::tone::good, "Done", {}, {}, {}});
    bar.tell({user_message::tone::warning, "Not done", {}, {}, {}});
    ASSERT_TRUE(going->isActive());
    going->start(0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bar.headline() == "Not done"; }, 60000));
    EXPECT_FALSE(going->isActive());
}

TEST_F(messages, a_state_stands_once_behind_what_happened_and_goes_by_itself) {
    bar.tell(lasting("no space"));
    bar.tell(lasting("read-only volume"));
    EXPECT_EQ(bar.waiting(), 1u);
    EXPECT_EQ(bar.text(), "read-only volume");
    bar.tell({user_message::tone::warning, "Happened", {}, {}, {}});
    EXPECT_EQ(bar.headline(), "Happened");
    answer();
    EXPECT_EQ(bar.text(), "read-only volume");
    bar.tell(refused_press_message("Shot", "Harbour"));
    bar.tell(refused_press_message("Goal", "Harbour"));
    EXPECT_TRUE(bar.headline().contains("Goal"));
    EXPECT_EQ(bar.waiting(), 2u);
    answer();
    bar.withdraw(save_failed_key);
    EXPECT_TRUE(bar.isHidden());
    bar.withdraw(save_failed_key);
}

TEST_F(messages, a_state_that_was_sent_away_comes_back_when_it_is_another) {
    bar.tell(lasting("no space"));
    answer();
    bar.tell(lasting("no space"));
    EXPECT_TRUE(bar.isHidden());
    bar.tell(lasting("volume gone"));
    EXPECT_EQ(bar.text(), "volume gone");
    answer();
    bar.withdraw(save_failed_key);  // saved, and then it fails again
    bar.tell(lasting("volume gone"));
    EXPECT_FALSE(bar.isHidden());
}

class bracketing_translator : public QTranslator {
  public:
    QString translate(const char*, const char* source, const char*, int) const override {
        return QString("[%1]").arg(source);
    }
    bool isEmpty() const override { return false; }
};

TEST(failure_words, are_translated_with_their_causes) {
    bracketing_translator translator;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    const auto full = file_could_not_be_saved("/v/[a].plist", volume_is_full());
    const auto refused = edit_could_not_be_done("Trim Clip", full);
    EXPECT_EQ(words_of(refused),
              "[\"[Trim Clip]\" could not be done: [\"/v/[a].plist\" could not be saved: [there is no space "
              "left on "
              "the volume].]]");
    EXPECT_EQ(words_of(full, shown_paths::names),
              "[\"[a].plist\" could not be saved: [there is no space left on the volume].]");
    EXPECT_EQ(words_of_term("Trim Clip"), "[Trim Clip]");
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(words_of(full).toStdString(), full.message());
}

TEST(start_messages, tell_all_that_was_put_back_at_once) {
    start_up_report report;
    report.ended_well_before = false;
    for (const char* name : {"a", "b", "c", "d", "e", "f"})
        report.recovered.push_back(std::string("/v/") + name);
    report.messages = {newer_build_is_installed("1", "2"), build_is_older("1", "2")};
    const auto all = messages_of_start(report);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_TRUE(all[0].headline.contains("not quit properly"));
    for (const char* part : {"6 files", "/v/a", "/v/d", "2 more"})
        EXPECT_TRUE(all[0].text.contains(part)) << part;
    EXPECT_FALSE(all[0].text.contains("/v/e"));
    EXPECT_TRUE(all[1].text.contains("started again.\n\nBuild"));
    EXPECT_EQ(all[1].key, "");
    EXPECT_EQ(all[2].key, "start up message");
}

}  // namespace
}  // namespace vistels
