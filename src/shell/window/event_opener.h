// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/event/event_reader.h"
#include "app/settings/places.h"
#include "app/start/open_requests.h"
#include "shell/event/job_groups.h"
#include "shell/kit/message_bar.h"
#include "util/job.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/signal.h"

class QWidget;

namespace vistels {

class event_session;
class work_panel;

// Opens events in a session: by path, by dialogs, from movies, and the demo event when there is nothing else.
// What is made of movies is made by jobs, shown in the place where the event will be as long as no other is
// open; the window can be used meanwhile. Main thread.
class event_opener : public QObject {
    Q_OBJECT
  public:
    // All must outlive the opener, but for `panel`, in which jobs of the opener are shown. `window` is the
    // dialogs' parent.
    event_opener(QWidget& window, home_places places, event_session& session, job_groups jobs,
                 work_panel& panel);
    ~event_opener() override;

    // Asked before a folder is opened: whether another window shows it and is in front now.
    void set_shown_elsewhere(std::function<bool(const std::string& folder)> shown) {
        shown_elsewhere_ = std::move(shown);
    }

    void open(const open_request& what);
    // In place of the one that is open, unless jobs of that are under way: the user decides about these
    // first. The event is read in the background; what is asked for meanwhile takes its place.
    void open_folder(const std::string& folder);
    // What is being opened is not wanted any more.
    void cancel();
    // The folder of the event that is being opened; empty: none.
    const std::string& coming() const { return waiting_ ? waiting_->folder() : reader_.coming(); }
    bool is_at_work() const { return reader_.is_at_work() || waiting_; }
    // Opens the first thing here; more_found() tells of each further one.
    void open_paths(const std::vector<std::string>& paths);
    // The event that was open last; in a home vault without any event the demo event is made, and opened if
    // nothing else is open by then.
    void open_last_or_demo(const std::string& open_last);
    // Of the demo event, by default 4 and 60.
    void set_demo_size(int cameras, int seconds);

    void ask_new_collection();
    // Asks for the name and the vault of a collection without movies; it is opened when it is made.
    void ask_new_empty();
    void ask_open();

  Q_SIGNALS:
    void told(const vistels::user_message& message);
    // The state that the lasting message with this key told of is over.
    void state_over(const QString& key);
    // Something that was asked for and needs a window of its own.
    void more_found(const vistels::open_request& what);
    // There is something new in a vault.
    void content_changed();
    // Nothing more is under way; an event is open or not.
    void settled();

  private:
    void make_demo();
    void finish_demo(const std::string& folder, const vistels::result<void>& made, bool cancelled);
    void make_collection(const std::vector<std::string>& movies);
    void finish_collection(const std::string& folder, bool is_waited_for);
    std::pair<std::string, const void*> event_state() const;
    bool is_coding() const;
    void ask_to_stop_jobs(const std::string& folder);
    void take_back_question();
    void read(const std::string& folder);
    void show(std::unique_ptr<open_event> event);
    void tell_reading(const std::string& folder);
    void take_back_reading();
    void make_empty(const std::string& name, const std::string& vault);
    // Where new collections are made: the focus vault, or the home vault while that one is away.
    std::string vault_for_new() const;
    // From now on the side bar lists the vault.
    void remember_vault(const std::string& vault);
    void open_vault(const std::string& vault);
    void tell_failure(const QString& headline, const failure& reason);
    void tell_ready(const QString& headline, const std::string& folder,
                    std::vector<user_message::choice> choices);

    QWidget& window_;
    const home_places places_;
    event_session& session_;
    const job_groups jobs_;
    std::function<bool(const std::string&)> shown_elsewhere_;
    QPointer<work_panel> panel_;
    bool asks_to_stop_ = false;  // a message asks whether jobs are to be stopped
    connection jobs_changed_;
    event_reader reader_;
    std::unique_ptr<open_event> waiting_;  // until the one that is open is saved
    run_loop::timer_id slow_timer_ = 0;    // until it is told that an event is being read
    int demo_cameras_ = 4;
    int demo_seconds_ = 60;
};

}  // namespace vistels
