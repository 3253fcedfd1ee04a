// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QWidget>
#include <set>
#include <string>
#include <vector>

#include "app/vaults/content_list.h"
#include "app/vaults/vaults.h"

class QAction;
class QLineEdit;
class QMenu;
class QModelIndex;
class QTreeView;

namespace vistels {

class content_delegate;
class content_model;
class disk_line;
class icon_button;
class pane_header;

// The vaults and what they hold. Double click or Return opens; a vault's line opens and closes its list; a
// folder dropped on it becomes a listed vault. It shows what it is given and reads no files. Main thread.
class content_side_bar : public QWidget {
    Q_OBJECT
  public:
    // The actions shown in its menus; they act on the line that is current.
    struct menu_actions {
        QList<QAction*> make;   // of the plus button
        QList<QAction*> all;    // of the header's menu
        QList<QAction*> vault;  // of a vault's line
        QList<QAction*> item;   // of an item's line
    };

    explicit content_side_bar(QWidget* parent = nullptr);

    // The filters listed below the home vault.
    void set_patterns(std::vector<content_pattern> patterns);
    void set_actions(menu_actions actions) { actions_ = std::move(actions); }
    // What was open, chosen, scrolled to or folded before stays so.
    void set_content(std::vector<content_vault> vaults);
    // The event that is open in the window, and what is said about it in a second line.
    void set_open(const std::string& folder, const QString& fact);

    // The vault that the current line belongs to; null when there is none.
    const content_vault* current_vault() const;
    // The folder of the current line; empty when it has none.
    QString current_path() const;
    const std::vector<content_vault>& content() const;

    // Shows the filter field and gives it the focus.
    void find();
    // The paths of the vaults that the user folded.
    std::vector<std::string> folded() const;
    void set_folded(const std::vector<std::string>& vaults);

    QTreeView* list() const { return list_; }

  Q_SIGNALS:
    void open_asked(const QString& folder);
    void open_in_new_window_asked(const QString& folder);
    // It is of a kind that no window shows yet.
    void unknown_asked(int kind, const QString& name, const QString& folder);
    void pattern_chosen(const QString& pattern);
    void folders_dropped(const QStringList& folders);

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void build_header();
    void build_filter();
    void connect_list();
    void activate(const QModelIndex& index);
    void fold(const QModelIndex& vault, bool folded);
    void show_folding();
    void go_to(const QModelIndex& line);
    void set_filter(const QString& text);
    void show_filter(bool shown);
    void show_disk();
    void show_menu(const QList<QAction*>& actions, QPoint at);
    void show_context_menu(QPoint at);

    pane_header* header_;
    icon_button* search_;
    icon_button* add_;
    icon_button* more_;
    QWidget* filter_room_;
    QLineEdit* filter_;
    content_model* model_;
    QTreeView* list_;
    content_delegate* delegate_;
    disk_line* disk_;
    menu_actions actions_;
    std::set<QString> folded_;  // paths
    std::string open_folder_;
    bool filter_was_offered_ = false;
};

}  // namespace vistels
