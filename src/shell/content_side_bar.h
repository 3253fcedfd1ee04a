// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <string>
#include <vector>

#include "app/vaults.h"
#include "shell/content_list.h"

class QModelIndex;
class QStandardItem;
class QStandardItemModel;
class QTreeView;

namespace vistels {

class icon_button;
class pane_header;

// Free space of the home vault's volume, as a line of text over a bar.
class disk_line : public QWidget {
    Q_OBJECT
  public:
    explicit disk_line(QWidget* parent = nullptr);
    void set_space(const volume_space& space);
    QString text() const { return text_; }
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString text_;
    double used_share_ = 0;
};

// The vaults and what they hold. Double click or Return opens; a vault's line opens and closes its list. It
// shows what it is given and reads no files. Main thread.
class content_side_bar : public QWidget {
    Q_OBJECT
  public:
    explicit content_side_bar(QWidget* parent = nullptr);

    // What was open, chosen or folded before stays so.
    void set_content(const std::vector<content_vault>& vaults);
    // The collection that is open in the window, and what is said about it in a second line.
    void set_open(const std::string& folder, const QString& fact);
    void set_disk_space(const volume_space& space);

    QTreeView* list() const { return list_; }

  Q_SIGNALS:
    void open_asked(const QString& folder);
    void new_collection_asked();
    void new_vault_asked();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void add_vault(const content_vault& vault);
    void activate(const QModelIndex& index);
    QStandardItem* find_item(const std::string& folder) const;
    void show_menu();

    pane_header* header_;
    icon_button* add_;
    QStandardItemModel* model_;
    QTreeView* list_;
    disk_line* disk_;
    std::string open_folder_;
    QString open_fact_;
};

}  // namespace vistels
