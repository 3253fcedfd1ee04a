// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>
#include <vector>

#include "app/event/padding_changes.h"
#include "shell/kit/message_bar.h"
#include "util/run_loop.h"

class QWidget;

namespace vistels {

class event_session;
class progress_dialog;

// The commands that turn the offsets and gaps of all vistels into padding movies and back. What has to be
// written is written by a job with its progress; each is one undo step. Main thread.
class padding_commands : public QObject {
    Q_OBJECT
  public:
    // All must outlive this. `window` is the progress window's parent.
    padding_commands(QWidget& window, event_session& session, run_loop& loop);
    ~padding_commands() override;

    struct line {
        padding_command which;
        const char* name;  // of the action
        const char* tip;
    };
    static const std::vector<line>& commands();

    void run(padding_command which);

  Q_SIGNALS:
    void told(const vistels::user_message& message);

  private:
    void finish(const planned_padding& planned, const std::string& folder, const std::string& problem,
                bool cancelled);
    void tell_failure(const std::string& message);

    QWidget& window_;
    event_session& session_;
    run_loop& loop_;
    std::unique_ptr<progress_dialog> work_;
};

}  // namespace vistels
