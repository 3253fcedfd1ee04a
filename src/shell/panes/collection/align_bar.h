// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <optional>
#include <vector>

#include "shell/panes/collection/single_Adjust_offset_View.h"

class QLabel;
class QPushButton;

namespace vistels {

class buttons_Adjust_Offsets;
class check_box;
class cut_label;
class icon_button;
class time_field;

// The line below the vistels for bringing them into step: the current vistel's offset to type and to nudge,
// "Same Moment", and below it the movie parts with their gaps. It shows what it is told and asks by signals.
// Main thread.
class align_bar : public QWidget {
    Q_OBJECT
  public:
    explicit align_bar(QWidget* parent = nullptr);

    // The vistel that is brought into step; an offset of nothing: there is none to show.
    void set_vistel(const QString& name, std::optional<double> offset);
    // Words of the instant that was marked; empty: none is.
    void set_mark(const QString& words);
    void set_parts(std::vector<shown_part> parts, bool locks_clips);
    // The playhead on the vistel's own time line.
    void set_seconds(double seconds);
    void set_changeable(bool changeable);
    void set_shows_parts(bool shows);
    single_Adjust_offset_View& strip() { return *strip_; }

  Q_SIGNALS:
    void offset_asked(double seconds);
    void nudge_asked(int frames);
    // The nudge button, of the offset or of a gap, came up.
    void nudge_ended();
    void mark_asked();
    void same_moment_asked();
    void unmark_asked();
    void gap_asked(int part, double seconds);
    void gap_nudge_asked(int part, int frames);
    void lock_asked(bool locks);
    void close_asked();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QWidget* make_offset_line();
    QWidget* make_parts_line();
    void connect_parts();
    void show_part();

    cut_label* name_;
    time_field* offset_;
    buttons_Adjust_Offsets* nudge_;
    QPushButton* mark_;
    QPushButton* same_;
    cut_label* marked_;
    icon_button* unmark_;
    QPushButton* show_parts_;
    icon_button* close_;
    QWidget* parts_line_;
    single_Adjust_offset_View* strip_;
    QLabel* part_name_;
    time_field* gap_;
    buttons_Adjust_Offsets* gap_nudge_;
    check_box* lock_;
    bool changeable_ = true;
    bool has_vistel_ = false;
};

}  // namespace vistels
