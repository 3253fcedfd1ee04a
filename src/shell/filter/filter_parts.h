// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <cstddef>

class QBoxLayout;
class QLabel;
class QPushButton;

namespace vistels {

class icon_button;
class segmented_control;

// The parts around a filter. Each shows what it is told and asks by signals. Main thread.

// How clips that are filtered out are shown, and a button that plays those that pass, one after another.
class filter_mode_control : public QWidget {
    Q_OBJECT
  public:
    explicit filter_mode_control(QWidget* parent = nullptr);

    void set_hides(bool hides);
    // While they play: number `playing` (from 1) of `total`; 0: none plays.
    void set_playing(std::size_t playing, std::size_t total);
    // Whether there is anything to play.
    void set_can_play(bool can);

  Q_SIGNALS:
    void hides_asked(bool hides);
    void play_asked(bool plays);

  private:
    segmented_control* mode_;
    icon_button* play_;
    QLabel* playing_;
};

// What stands over the clips while none of them passes.
class no_clip_passes_note : public QWidget {
    Q_OBJECT
  public:
    explicit no_clip_passes_note(QWidget* parent = nullptr);

    void set_total(std::size_t clips);
    // In the middle of `room`, in one line where that is low.
    void place_in(const QRect& room);

  Q_SIGNALS:
    void clear_asked();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QBoxLayout* parts_;
    QLabel* headline_;
    QLabel* counts_;
    QPushButton* clear_;
};

}  // namespace vistels
