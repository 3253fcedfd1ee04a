// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <cstddef>
#include <optional>
#include <vector>

#include "util/shared_text.h"
#include "util/signal.h"

class QLineEdit;
class QMenu;

namespace vistels {

class timeline_state;
struct timeline_row;

// The names of the rows left of the clips: swatch, name, a dot while a clip grows, the number of clips, and
// while a filter is on how many of them pass. A
// row that stands for several shows all their colours. Rows are chosen by click (with Ctrl and Shift several)
// or by Up and Down, and dragged to another place, or moved by Alt with Up and Down; F2 or a double click
// renames one in place. A menu does all that is done to rows. Main thread.
class timeline_names final : public QWidget {
    Q_OBJECT
  public:
    timeline_names(timeline_state& state, QWidget* parent);

    // The rows that are chosen, from the top.
    std::vector<shared_text> chosen() const;
    // Shows the chosen rows as one row, which is chosen then.
    void compact_chosen();
    // Brings the rows of each chosen row back that stands for several; they are chosen then.
    void expand_chosen();
    // A new row below the chosen ones, whose name is to be typed.
    void add_row();

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    QRect place_of(const timeline_row& row) const;
    std::size_t row_at(int y) const;  // the number of rows where there is none
    bool is_chosen(const shared_text& row) const;
    void choose(std::vector<shared_text> rows);
    void choose_up_to(std::size_t index);
    void forget_those_gone();
    void show_menu(QPoint at);
    void add_to_menu(QMenu& menu, const std::vector<shared_text>& rows);
    void add_compaction(QMenu& menu, const std::vector<shared_text>& rows);
    void add_orders(QMenu& menu);
    void ask_category(const std::vector<shared_text>& rows);
    void edit_name(const shared_text& row);
    void take_name();
    std::size_t gap_at(int y) const;
    void move_chosen(std::size_t gap);
    void move_chosen_by(int rows);
    void paint_gap(QPainter& painter) const;

    timeline_state& state_;
    std::vector<shared_text> chosen_;
    shared_text anchor_;              // where a range of rows begins
    shared_text current_;             // where the keys are
    std::optional<int> pressed_at_;   // y, while a press may become a drag
    std::optional<std::size_t> gap_;  // where the rows that are dragged would come
    QLineEdit* editor_ = nullptr;
    shared_text edited_;  // the row whose name is typed; empty: none
    std::vector<connection> connections_;
};

}  // namespace vistels
