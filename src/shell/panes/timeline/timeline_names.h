// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <cstddef>
#include <vector>

#include "util/shared_text.h"
#include "util/signal.h"

namespace vistels {

class timeline_state;
struct timeline_row;

// The names of the rows left of the clips: swatch, name, a dot while a clip grows, the number of clips, and
// while a filter is on how many of them pass. A
// row that stands for several shows all their colours. Rows are chosen by click (with Ctrl and Shift several)
// or by Up and Down; a menu compacts them and expands them again. Main thread.
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

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
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

    timeline_state& state_;
    std::vector<shared_text> chosen_;
    shared_text anchor_;   // where a range of rows begins
    shared_text current_;  // where the keys are
    std::vector<connection> connections_;
};

}  // namespace vistels
