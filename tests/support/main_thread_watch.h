// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include "util/wait_watch.h"

namespace vistels::testing {

// The application object of the shell's tests. Whatever its events bring about runs on the thread of the
// windows, where a wait for a volume or another thread is a fault: the test that runs fails then, with the
// name of the call. What a test does by itself is not looked at.
class watched_application : public QApplication, private wait_watch {
  public:
    watched_application(int& argument_count, char** arguments) : QApplication(argument_count, arguments) {
        listen(this);
    }
    ~watched_application() override { listen(nullptr); }

    bool notify(QObject* receiver, QEvent* event) override {
        ++depth_;
        const bool taken = QApplication::notify(receiver, event);
        --depth_;
        return taken;
    }

    // From now on every write and sync takes so long, on any thread, but the journal's append.
    static void make_volumes_late(std::chrono::milliseconds late) { late_ = late; }
    // How often this thread wrote or synced where a wait is expected, but for the journal's append.
    static int expected_writes() { return expected_writes_; }

  private:
    void begins(const wait_note& note) override {
        if (std::this_thread::get_id() == windows_ && depth_ > 0 && !note.expected()) {
            ADD_FAILURE() << "The thread of the windows waits: " << note.call() << " \"" << note.subject()
                          << "\"";
        }
        const auto late = late_.load();
        const bool is_written = std::strcmp(note.call(), "write") == 0 || std::strstr(note.call(), "sync");
        const bool is_append =
            note.expected() && std::strcmp(note.expected(), "an edit is put on record") == 0;
        if (is_written && note.expected() && !is_append && std::this_thread::get_id() == windows_)
            ++expected_writes_;
        if (late.count() > 0 && is_written && !note.expected()) std::this_thread::sleep_for(late);
    }
    void ended(const wait_note&, double) override {}

    static inline std::atomic<std::chrono::milliseconds> late_{std::chrono::milliseconds(0)};
    static inline std::atomic<int> expected_writes_{0};
    const std::thread::id windows_ = std::this_thread::get_id();
    int depth_ = 0;  // of events that are being handled
};

}  // namespace vistels::testing
