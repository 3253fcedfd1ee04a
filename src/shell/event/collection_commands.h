// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "shell/event/job_groups.h"
#include "shell/kit/message_bar.h"
#include "shell/panes/collection/vistel_geometry.h"
#include "util/signal.h"

class QAction;
class QMenu;
class QMenuBar;
class QWidget;

namespace vistels {

class align_control;
class collection_pane;
class event_session;
class open_event;
class padding_commands;
class undo_commands;
class view_offset_keeper;
class vistel_files;

// The "Collection" menu and the menu of a vistel: layouts, stacking, what is drawn on vistels, their files,
// bringing them into step; and undo and redo. Main thread.
class collection_commands : public QObject {
    Q_OBJECT
  public:
    // All must outlive this. The menu is put into `bar` before the one named `before`.
    collection_commands(QWidget& window, collection_pane& pane, event_session& session, home_places places,
                        job_groups jobs);
    ~collection_commands() override;

    void fill(QMenuBar& bar, const QString& before);
    const std::vector<QAction*>& actions() const { return all_; }
    align_control& alignment() { return *alignment_; }
    vistel_files& files() { return *files_; }
    undo_commands& steps() { return *steps_; }

    void use_layout(ready_layout layout);
    void restack(bool front);

  Q_SIGNALS:
    void told(const vistels::user_message& message);

  private:
    void make_actions();
    QAction* add_action(const char* name, const QString& words, const QString& keys, const QString& tip);
    void follow_event();
    void show_state();
    void show_vistel_menu(const QString& vistel, const QPoint& global);
    void add_vistel_actions(QMenu& menu, const std::string& vistel);
    void add_place_menu(QMenu& menu, const std::string& vistel);
    void set_arrangement_as(const vistel_arrangement& wanted, const QString& name);
    void set_shows_numbers(bool shows);
    void set_shows_starts(bool shows);
    void set_shows_names(bool shows);
    void tell_failure(const QString& message);
    open_event* event() const;

    QWidget& window_;
    collection_pane& pane_;
    event_session& session_;
    const home_places places_;
    std::unique_ptr<align_control> alignment_;
    std::unique_ptr<vistel_files> files_;
    std::unique_ptr<padding_commands> padding_;
    std::unique_ptr<undo_commands> steps_;
    std::unique_ptr<view_offset_keeper> offsets_kept_;
    QMenu* menu_ = nullptr;
    QMenu* layouts_ = nullptr;
    QMenu* offsets_ = nullptr;
    std::vector<QAction*> all_;      // need a collection
    std::vector<QAction*> changes_;  // of these the ones that change it
    QAction* numbers_ = nullptr;
    QAction* names_ = nullptr;
    QAction* starts_ = nullptr;
    QAction* aligning_ = nullptr;
    QAction* same_ = nullptr;
    QAction* front_ = nullptr;
    QAction* back_ = nullptr;
    std::vector<connection> connections_;
};

}  // namespace vistels
