// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "app/event/undo_stack.h"
#include "util/job_list.h"
#include "util/result.h"

namespace vistels {

class event_session;
class open_event;
struct padding_file;

// Undo and redo of the open event. A step that needs padding movies is taken when a job has written these;
// it is refused when something else was done meanwhile. Main thread.
class undo_commands : public QObject {
    Q_OBJECT
  public:
    // Both must outlive this. `jobs` are those of the event.
    undo_commands(event_session& session, job_group& jobs);

    void undo() { go(direction::back); }
    void redo() { go(direction::again); }
    // Takes back, or does again, one step after another until so many are done; ends where one is refused.
    void go_to(std::size_t done);

  private:
    enum class direction { back, again };

    enum class taking { done, nothing_to_do, waits, refused };

    void go(direction which);
    void go_on();
    taking take(direction which);
    void take_with(direction which, std::vector<padding_file> needed);
    void finish(direction which, const std::shared_ptr<const std::vector<document_part>>& step);

    event_session& session_;
    job_group& jobs_;
    std::optional<std::size_t> wanted_;  // go_to() is under way
};

}  // namespace vistels
