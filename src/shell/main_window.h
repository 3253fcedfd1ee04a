// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>
#include <memory>
#include <string>
#include <vector>

#include "app/places.h"
#include "app/vault_scan.h"
#include "shell/message_bar.h"
#include "shell/window_memory.h"
#include "util/run_loop.h"
#include "util/signal.h"

namespace vistels {

class code_window_view;
class collection_pane;
class content_keeper;
class content_side_bar;
class event_opener;
class event_session;
class inspector_view;
class key_router;
class save_moments;
class saved_label;
class super_tab_row;
class timeline_view;
class vault_commands;
class window_actions;
class window_frame;
class work_area;

// The application's window: puts the panes together and gives their commands to those who do them. Main
// thread.
class main_window : public QMainWindow {
    Q_OBJECT
  public:
    // `loop` must outlive the window; `vaults` is what starting has seen of the vaults.
    main_window(home_places places, run_loop& loop, std::vector<vault_tree> vaults = {});
    ~main_window() override;

    event_session& session() { return *session_; }
    event_opener& opener() { return *opener_; }
    window_actions& actions() { return *actions_; }
    timeline_view& timeline() { return *timeline_; }
    void tell(user_message message);
    // Shows the vaults anew.
    void refresh_content();

  Q_SIGNALS:
    // The window drew itself for the first time.
    void appeared();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool event(QEvent* event) override;

  private:
    void build();
    void build_menu_bar();
    void connect_session();
    void connect_side_bar();
    void connect_frame();
    void connect_event_commands();
    void connect_play_commands();
    void connect_timeline_commands();
    void connect_view_commands();
    void connect_window_commands();
    void connect_vault_commands();
    void show_event();
    void remember_windows();
    void show_facts();
    void show_saved(const QString& problem);
    void show_tab(int index);
    void choose_theme(const std::string& name);
    void restore();
    void remember();

    const home_places places_;
    run_loop& loop_;
    window_memory memory_;
    window_actions* actions_;
    collection_pane* collection_;
    code_window_view* code_;
    timeline_view* timeline_;
    inspector_view* inspector_;
    content_side_bar* content_;
    super_tab_row* tabs_;
    work_area* work_;
    message_bar* messages_;
    window_frame* frame_;
    saved_label* saved_;
    std::unique_ptr<key_router> keys_;
    std::unique_ptr<event_session> session_;
    std::unique_ptr<event_opener> opener_;
    std::unique_ptr<content_keeper> keeper_;
    std::unique_ptr<vault_commands> vaults_;
    std::unique_ptr<save_moments> save_moments_;
    connection vaults_told_;
    bool appeared_ = false;
};

}  // namespace vistels
