// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <string>
#include <vector>

#include "shell/event/writer_watch.h"
#include "shell/kit/message_bar.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/signal.h"

namespace vistels {

class open_event;

// Decides what the user is told about the event that a session shows: what opening found, what its files and
// other programs do to it, what was refused, what failed. The words are those of event_messages. Main thread.
class event_notices : public QObject {
    Q_OBJECT
  public:
    // `loop` must outlive this.
    explicit event_notices(run_loop& loop);
    ~event_notices() override;

    // Null: none is open, and no state lasts. The event must outlive its use here.
    void set_event(open_event* event);
    // What opening the event found; once, when it is shown.
    void tell_opening();

    // A command did not do what the user asked for; a result that is ok tells nothing.
    void tell(const result<void>& done);
    void tell_failure(const QString& headline, const failure& reason);
    void tell_failure(const QString& headline, const QString& text);
    void tell_good(const QString& headline, const QString& text);
    // A choice holds, but not for the next time.
    void tell_not_remembered(const result<void>& kept);
    // A save has ended: why it could not be done, or no failure.
    void tell_save(const failure& problem);
    // A button was pressed while the event can only be read.
    void refuse_press(const QString& button);
    // Buttons are pressed at random, which `stop` ends; and it is over.
    void tell_pressing(std::function<void()> stop);
    void tell_pressing_over();
    // An edit was refused.
    void refuse_change(const QString& reason);

    // Whether the event can be changed.
    writer_watch& access() { return access_; }

  Q_SIGNALS:
    void told(const vistels::user_message& message);
    // The state that the lasting message with this key told of is over.
    void state_over(const QString& key);
    void saved(const QString& problem);  // empty: done

  private:
    void follow_event();
    void tell_access();
    void tell_code_window();
    void tell_alerts();
    void tell_trouble(const failure& reason);
    void tell_made_again(const std::string& button);
    void tell_anew(const user_message& message);
    QString name() const;

    run_loop& loop_;
    open_event* event_ = nullptr;
    writer_watch access_;
    connection access_changed_;
    std::vector<connection> connections_;  // of the event
    run_loop::timer_id alert_timer_ = 0;   // until what the event's vistels lack is told
};

}  // namespace vistels
