// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <string>
#include <vector>

#include "app/event/padding_changes.h"
#include "util/job_list.h"

namespace vistels {

class event_session;

// The commands that turn the offsets and gaps of all vistels into padding movies and back. What has to be
// written is written by a job; each is one undo step, made when the job ends. Main thread.
class padding_commands : public QObject {
    Q_OBJECT
  public:
    // Both must outlive this. `jobs` are those of the event.
    padding_commands(event_session& session, job_group& jobs);

    struct line {
        padding_command which;
        const char* name;  // of the action
        const char* tip;
    };
    static const std::vector<line>& commands();

    void run(padding_command which);

  private:
    void finish(const planned_padding& planned, const std::string& folder, const result<void>& outcome,
                bool cancelled);
    void tell_failure(const failure& reason);

    event_session& session_;
    job_group& jobs_;
};

}  // namespace vistels
