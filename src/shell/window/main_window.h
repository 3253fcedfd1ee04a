// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "shell/kit/message_bar.h"
#include "shell/window/window_memory.h"
#include "util/job_list.h"
#include "util/run_loop.h"
#include "util/signal.h"

class QMenu;

namespace vistels {

class code_commands;
class code_window_view;
class collection_commands;
class collection_pane;
class content_keeper;
class content_side_bar;
class event_commands;
class event_opener;
class event_session;
class filter_commands;
class filter_entry;
class job_button;
class pane_host;
class save_moments;
class saved_label;
class super_tab_row;
class timeline_commands;
class timeline_view;
class vault_commands;
class window_actions;
class window_frame;
class work_area;
class work_panel;

// A window of the application, with one event: puts the panes together and gives their commands to those who
// do them. What concerns more than this window it asks for by signals. Main thread.
class main_window : public QMainWindow {
    Q_OBJECT
  public:
    // What it asks of the other windows, itself counted in; without them it is alone.
    struct neighbours {
        // Whether another window shows the folder's event and is in front now.
        std::function<bool(const std::string& folder)> show_if_open;
        // The folders of all events that are open.
        std::function<std::vector<std::string>()> open_folders;
    };

    // `loop`, `content` and `jobs` must outlive the window. `memory` is how it was left.
    main_window(home_places places, run_loop& loop, content_keeper& content, job_list& jobs,
                window_memory memory = {});
    ~main_window() override;

    event_session& session() { return *session_; }
    event_opener& opener() { return *opener_; }
    window_actions& actions() { return *actions_; }
    collection_commands& collection() { return *commands_; }
    filter_commands& filters() { return *filter_commands_; }
    code_commands& coding() { return *code_commands_; }
    pane_host& panes() { return *panes_; }
    // The pane that commands act on, and the text of its filter.
    timeline_view& timeline();
    filter_entry& filter();
    void tell(user_message message);
    // Looks at the vaults anew.
    void refresh_content();
    void set_neighbours(neighbours others);
    QMenu& window_menu();
    // As it stands now.
    window_memory memory() const;
    // The choice of the user, "dark", "light" or empty, was made in this window or another.
    void show_theme_choice(const std::string& name);
    // Saves; asks the user when that fails, or when jobs of the window are not finished. True: the window may
    // close, and then closes without asking again.
    bool agree_to_close();
    void take_back_agreement() { agreed_ = false; }
    // Closes when what is unsaved is saved, in the background.
    void close_when_saved();

  Q_SIGNALS:
    // Another event is shown, or none.
    void event_changed();
    void new_window_asked();
    void open_in_new_window_asked(const QString& folder);
    void next_window_asked();
    void quit_asked();
    void theme_chosen(const QString& name);
    // It closes; its event is still open.
    void closing();
    // The window drew itself for the first time.
    void appeared();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;

  private:
    void build();
    void build_menu_bar();
    void connect_session();
    void connect_side_bar();
    void connect_frame();
    void make_commands();
    void connect_view_commands();
    void connect_window_commands();
    void connect_vault_commands();
    void show_event();
    void show_patterns();
    void show_facts();
    void show_saved(const QString& problem);
    void show_tab(int index);
    void choose_theme(const std::string& name);
    void restore();

    const home_places places_;
    run_loop& loop_;
    content_keeper& keeper_;
    job_list& jobs_;
    job_group event_jobs_;   // that end with the event
    job_group window_jobs_;  // that end with the window
    window_memory memory_;
    neighbours neighbours_;
    window_actions* actions_;
    content_side_bar* content_;
    super_tab_row* tabs_;
    message_bar* messages_;
    job_button* jobs_button_;
    QPointer<work_panel> making_;  // in the collection's pane
    saved_label* saved_;
    std::unique_ptr<event_session> session_;
    std::unique_ptr<event_opener> opener_;
    std::unique_ptr<collection_commands> commands_;
    std::unique_ptr<event_commands> event_commands_;
    std::unique_ptr<timeline_commands> timeline_commands_;
    std::unique_ptr<filter_commands> filter_commands_;
    std::unique_ptr<code_commands> code_commands_;
    std::unique_ptr<vault_commands> vaults_;
    std::unique_ptr<pane_host> panes_;
    QPointer<collection_pane> collection_;  // the panes that are laid out with others
    QPointer<code_window_view> code_;
    work_area* work_ = nullptr;
    window_frame* frame_ = nullptr;
    std::unique_ptr<save_moments> save_moments_;
    connection content_changed_;
    QPointer<QWidget> left_field_;  // where was typed last, when nothing has the focus since
    bool appeared_ = false;
    bool agreed_ = false;
};

}  // namespace vistels
