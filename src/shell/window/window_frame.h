// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace vistels {

class pane_splitter;

// The window's columns: the side bar, the middle, the inspector. In narrow windows the outer ones lie over
// the edge of the middle and are hidden until they are asked for. Main thread.
class window_frame : public QWidget {
    Q_OBJECT
  public:
    // Takes the widgets over.
    window_frame(QWidget* left, QWidget* middle, QWidget* right, QWidget* parent = nullptr);

    enum class side { left, right };

    bool is_shown(side which) const;
    void set_shown(side which, bool shown);
    // It lies over the middle rather than beside it.
    bool is_overlay(side which) const;

    int column_width(side which) const;
    void set_column_width(side which, int width);
    // Whether the user wants it in windows wide enough.
    bool is_wanted(side which) const;
    void set_wanted(side which, bool wanted);

  Q_SIGNALS:
    void shown_changed();

  protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct column {
        QWidget* widget = nullptr;
        QWidget* edge = nullptr;  // the line beside it while it lies over the middle
        int width = 0;
        int least = 0;
        int greatest = 0;
        int overlay_below = 0;
        bool wanted = true;           // where there is room beside the middle
        bool overlay_wanted = false;  // where there is none
        bool overlay = false;
    };

    column& at(side which) { return which == side::left ? left_ : right_; }
    const column& at(side which) const { return which == side::left ? left_ : right_; }
    void arrange();
    void put(column& one, bool overlay);
    void place_overlays();
    void keep_widths();

    pane_splitter* splitter_;
    QWidget* middle_;
    column left_;
    column right_;
};

}  // namespace vistels
