// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSize>
#include <QTimer>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "app/start/open_requests.h"
#include "app/start/open_windows.h"
#include "app/vaults/content_keeper.h"
#include "app/vaults/vault_scan.h"
#include "shell/kit/message_bar.h"
#include "shell/window/window_memory.h"
#include "util/job_list.h"
#include "util/posted_work_guard.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

class main_window;

// The application's windows, each with an event of its own. It makes and places them, knows which is in
// front, and keeps on disk which are open, how they stand and what has the focus: whenever that changes, so
// that they come back after a kill too. They share one list of vaults. Only the one in front is heard. Main
// thread; the files are written on a queue of its own.
class window_set : public QObject {
    Q_OBJECT
  public:
    struct options {
        std::vector<vault_tree> known_trees;  // what starting has seen of the vaults
        bool keeps_list = true;  // false: another program with the same state folder keeps the files
        QSize size;              // of the first windows; none: as they were left
    };

    // `loop` must outlive the set.
    window_set(home_places places, run_loop& loop, options how);
    window_set(home_places places, run_loop& loop);
    ~window_set() override;

    // What the program starts with.
    struct first {
        std::vector<std::string> paths;      // of the command line; they open in front of `listed`
        std::vector<open_window> listed;     // open before, front to back
        std::vector<user_message> messages;  // told in the front window
        std::string focused = {};            // the folder that had the focus before; empty: not known
    };
    // Makes the first windows: of the paths, and behind them of what was open before, what had the focus
    // first. When the one in front has drawn itself the events open, the front one first. A listed window
    // whose folder is gone is told and left out; while its vault is away it stays listed for the next start,
    // unless the user says otherwise. With nothing to open there is one window with what had the focus, else
    // the first event of the home vault, or the demo event.
    void begin(first wanted);

    // Opens it in a new window in front; a folder that a window shows already comes to the front instead.
    void open_in_new_window(const open_request& what);
    // A new window in front, without an event.
    main_window& open_empty_window();
    // Saves and closes all windows. False when the user chose to stay in one whose event could not be saved;
    // then all are still open.
    bool quit();
    // Cancels what all windows are doing, so that nobody is asked about it: before quitting where nobody may
    // be there to answer.
    void stop_jobs() { jobs_.cancel_all(); }

    // The windows, front to back; a closed one is no longer among them.
    std::vector<main_window*> windows() const;
    main_window* front() const;  // null when none is open
    // Waits until what is to be kept is on disk.
    void wait_until_kept();

  Q_SIGNALS:
    // The window in front has drawn itself, after begin().
    void appeared();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    // What a window opens when its turn comes.
    enum class first_step { nothing, what_was_asked, what_was_open, something };
    struct member {
        std::unique_ptr<main_window> window;
        std::string root_id;
        int number = 0;  // in the order they were made
        first_step step = first_step::nothing;
        open_request wanted;
    };

    std::vector<member> members_of(const first& wanted);
    void plan_asked(const first& wanted, std::vector<member>& planned);
    void plan_listed(const first& wanted, std::vector<member>& planned);
    void tell_gone(const open_window& before);
    member& add(member made, window_memory memory);
    void connect_window(main_window& window);
    void begin_to_open();
    void open_next();
    member* member_of(const main_window* window);
    std::string folder_of(const member& one) const;
    bool show_if_open(const std::string& folder, const main_window* except);
    void come_to_front(main_window& window);
    void show_next_after(const main_window* window);
    void take_activation(const main_window* window);
    void take_closing(main_window* window);
    void let_go_of_closed();
    void show_state();
    void list_in_menus();
    std::function<void(const failure&)> trouble_teller();
    void keep();

    run_loop& loop_;
    posted_work_guard guard_;
    const home_places places_;  // with the settings of all windows
    const bool keeps_list_;
    const QSize first_size_;
    content_keeper content_;
    job_list jobs_;
    connection told_;
    std::deque<member> members_;  // front to back
    std::vector<std::unique_ptr<main_window>> closed_;
    std::vector<open_window> away_;  // not opened, since their vaults are away
    std::vector<user_message> first_messages_;
    int last_number_ = 0;
    bool ending_ = false;      // what is on disk stays
    QTimer places_timer_;      // after a window was moved
    std::string noted_focus_;  // as it stands on disk; used on the queue alone
    serial_queue queue_{"windows"};
};

}  // namespace vistels
