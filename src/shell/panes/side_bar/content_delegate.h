// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

class QTreeView;

namespace vistels {

// Draws the lines of the side bar's list: vaults with their marks, what they hold while they are folded, and
// what is wrong with them; headings; items. Main thread.
class content_delegate final : public QStyledItemDelegate {
    Q_OBJECT
  public:
    // Belongs to the list that it draws.
    explicit content_delegate(QTreeView& list);

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

    // A vault was folded or opened: its line has another height.
    void tell_height_changed(const QModelIndex& vault) { Q_EMIT sizeHintChanged(vault); }

  private:
    // The small lines below a vault's name, each with its colour and perhaps an icon.
    struct small_line {
        QString words;
        QColor colour;
        QString icon;
    };
    std::vector<small_line> small_lines(const QModelIndex& vault) const;
    int small_line_count(const QModelIndex& vault) const;
    void paint_vault(QPainter& painter, QRect place, const QModelIndex& index) const;
    void paint_item(QPainter& painter, QRect place, const QModelIndex& index) const;

    QTreeView& list_;
};

}  // namespace vistels
