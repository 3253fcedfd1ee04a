// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>
#include <QString>
#include <string>

#include "support/patience.h"

namespace vistels::testing {

inline constexpr const char* second_writer_option = "--second-writer";

// What the process of a second_writer does: opens the timeline and follows the lines of its standard input.
int run_second_writer(const std::string& folder);

// Another program, in a process of its own, that has a timeline open. Each call waits for its answer.
class second_writer {
  public:
    explicit second_writer(const std::string& folder) {
        process_.start(QCoreApplication::applicationFilePath(),
                       {QLatin1String(second_writer_option), QString::fromStdString(folder)});
        opened_as_ = next_line();
    }
    ~second_writer() { close(); }

    // "writes" or "reads"
    std::string opened_as() const { return opened_as_; }
    // Adds a clip: "done", or why not.
    std::string code() { return answer_to("code"); }
    std::string take_over() { return answer_to("take over"); }
    // It ends as programs should, and saves.
    void close() {
        process_.closeWriteChannel();
        wait_for_end();
    }
    void kill() {
        process_.kill();
        wait_for_end();
    }

  private:
    std::string answer_to(const char* command) {
        process_.write(QByteArray(command) + '\n');
        return next_line();
    }
    // The window lives on meanwhile.
    std::string next_line() {
        EXPECT_TRUE(
            comes_true([&] { return process_.canReadLine() || process_.state() == QProcess::NotRunning; }));
        return process_.readLine().trimmed().toStdString();
    }
    void wait_for_end() {
        EXPECT_TRUE(comes_true([&] { return process_.state() == QProcess::NotRunning; }));
    }

    QProcess process_;
    std::string opened_as_;
};

}  // namespace vistels::testing
