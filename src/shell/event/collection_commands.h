// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "shell/event/job_groups.h"
#include "shell/panes/collection/vistel_geometry.h"
#include "util/signal.h"

class QAction;
class QMenu;
class QMenuBar;
class QWidget;

namespace vistels {

class align_control;
class collection_binder;
class event_session;
class open_event;
class padding_commands;
class vistel_files;

// The "Collection" menu and the menu of a vistel: layouts, stacking, what is drawn on vistels, their files,
// bringing them into step. They act on the event's current collection pane. Main thread.
class collection_commands : public QObject {
    Q_OBJECT
  public:
    // All must outlive this. The menu is put into `bar` before the one named `before`.
    collection_commands(QWidget& window, event_session& session, home_places places, job_groups jobs);
    ~collection_commands() override;

    void fill(QMenuBar& bar, const QString& before);
    const std::vector<QAction*>& actions() const { return all_; }
    // Of the current pane; null: there is none.
    align_control* alignment() const;
    vistel_files& files() { return *files_; }

    void use_layout(ready_layout layout);
    void restack(bool front);
    // By the name of the undo step; `vistel` is the one that it is about.
    void set_arrangement_as(const vistel_arrangement& wanted, const char* name, const std::string& vistel);
    void show_menu(const QPoint& global);
    // Of a vistel in that pane.
    void show_vistel_menu(collection_binder& shown, const std::string& vistel, const QPoint& global);
    // What can be done, and what is on, changed.
    void show_state();

  private:
    void make_actions();
    QAction* add_action(const char* name, const QString& words, const QString& keys, const QString& tip);
    void follow_event();
    void add_vistel_actions(QMenu& menu, const std::string& vistel);
    void add_place_menu(QMenu& menu, const std::string& vistel);
    void set_shows_numbers(bool shows);
    void set_shows_starts(bool shows);
    void set_shows_names(bool shows);
    collection_binder* shown() const;
    open_event* event() const;

    QWidget& window_;
    event_session& session_;
    const home_places places_;
    std::unique_ptr<vistel_files> files_;
    std::unique_ptr<padding_commands> padding_;
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
    std::vector<connection> connections_;  // of the event
    connection panes_changed_;
};

}  // namespace vistels
