// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <vector>

namespace vistels {

class event_session;

// Over the whole window, while F1 is held: every key that presses a button of the code window, with the
// button, and what the key does besides. It takes neither keys nor presses, so coding goes on. A button that
// is bound to F1 keeps it. Main thread.
class key_map final : public QWidget {
    Q_OBJECT
  public:
    // The session must outlive its use here: as long as the window is the active one.
    key_map(QWidget& window, event_session& session);

    struct line {
        QString key;
        QString name;
        QColor colour;
        QString warning;  // empty: none
    };
    // By key: figures, letters, other keys; those with modifiers behind the others.
    const std::vector<line>& lines() const { return lines_; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    struct grid {
        int columns = 1;
        int lines = 1;  // of a column
        int line_height = 0;
        double column_width = 0;
    };

    bool is_wanted(const QObject& watched, const QEvent& event) const;
    void show_keys();
    void read_lines();
    grid grid_in(const QRectF& room) const;
    void paint_line(QPainter& painter, const QRectF& place, const line& one) const;

    QWidget& window_;
    event_session& session_;
    QTimer hides_;  // a key that repeats comes up and goes down over and over
    std::vector<line> lines_;
};

}  // namespace vistels
