// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "app/start/open_requests.h"
#include "shell/kit/message_bar.h"
#include "util/job.h"
#include "util/result.h"
#include "util/run_loop.h"

class QWidget;

namespace vistels {

class event_session;
class progress_dialog;
class work_panel;

// Opens events in a session: by path, by dialogs, from movies, and the demo event when there is nothing else.
// What takes long shows its progress and can be cancelled; the demo event does so in its place, and the
// window can be used meanwhile. Main thread.
class event_opener : public QObject {
    Q_OBJECT
  public:
    // All must outlive the opener, but for `panel`, in which the demo event's progress is shown. `window` is
    // the dialogs' parent.
    event_opener(QWidget& window, home_places places, run_loop& loop, event_session& session,
                 work_panel& panel);
    ~event_opener() override;

    // Asked before a folder is opened: whether another window shows it and is in front now.
    void set_shown_elsewhere(std::function<bool(const std::string& folder)> shown) {
        shown_elsewhere_ = std::move(shown);
    }

    void open(const open_request& what);
    void open_folder(const std::string& folder);
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
    // Something that was asked for and needs a window of its own.
    void more_found(const vistels::open_request& what);
    // There is something new in a vault.
    void content_changed();
    // Nothing more is under way; an event is open or not.
    void settled();

  private:
    void make_demo();
    void finish_demo(const vistels::result<std::string>& made, bool cancelled);
    void make_collection(const std::vector<std::string>& movies);
    void make_empty(const std::string& name, const std::string& vault);
    // Where new collections are made: the focus vault, or the home vault while that one is away.
    std::string vault_for_new() const;
    // From now on the side bar lists the vault.
    void remember_vault(const std::string& vault);
    void open_vault(const std::string& vault);
    void tell_failure(const QString& headline, const std::string& message);
    void run(const QString& title, const QString& words, std::function<result<std::string>(job&)> does,
             const QString& failed);

    QWidget& window_;
    const home_places places_;
    run_loop& loop_;
    event_session& session_;
    std::function<bool(const std::string&)> shown_elsewhere_;
    std::unique_ptr<progress_dialog> work_;
    QPointer<work_panel> panel_;
    int demo_cameras_ = 4;
    int demo_seconds_ = 60;
};

}  // namespace vistels
