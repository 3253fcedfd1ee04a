// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QHBoxLayout;

namespace vistels {

class icon_button;
class segmented_control;
class value_slider;
class volume_popover;

// The collection's time in large figures that stand still while they run.
class clock_label : public QWidget {
    Q_OBJECT
  public:
    explicit clock_label(QWidget* parent = nullptr);
    void set_seconds(double seconds);
    QString text() const;
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    double seconds_ = 0;
};

// Position slider, clock, steps, play, rates, loop and volumes. It shows what it is told and asks by signals;
// it holds no state of its own. Main thread.
class transport_bar : public QWidget {
    Q_OBJECT
  public:
    explicit transport_bar(QWidget* parent = nullptr);

    // Collection seconds of the event's beginning and end.
    void set_range(double start, double end);
    void set_seconds(double seconds);
    // The number of the frame shown in the leading vistel, or -1.
    void set_frame(long long number);
    void set_playing(bool playing);
    void set_rate(double rate);
    void set_looping(bool looping);
    // From 0 to 1: the event's, and that of the application, which lies over it.
    void set_volumes(double event, double application);
    void set_muted(bool muted);

    // The popover with both volumes.
    void show_volumes();

    static const QList<double>& rates();
    QSize minimumSizeHint() const override;

  Q_SIGNALS:
    void play_asked();
    void step_asked(int frames);
    void rate_asked(double rate);
    void loop_asked(bool loop);
    void volume_asked(double volume);
    void application_volume_asked(double volume);
    // The user let go of a volume: it is the one to keep.
    void volume_chosen();
    void mute_asked(bool muted);
    // While the position is dragged many times, at its end once more with `ended`.
    void seek_asked(double seconds, bool ended);

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void build();
    void connect_parts();
    double seconds_at(double fraction) const;
    int volume_room() const;

    double start_ = 0;
    double end_ = 0;
    double seconds_ = 0;
    long long frame_ = -1;
    QString other_rate_;  // that none of the buttons stands for; empty: one does
    value_slider* position_;
    clock_label* clock_;
    QWidget* frame_room_;
    QHBoxLayout* parts_ = nullptr;
    icon_button* back_;
    icon_button* play_;
    icon_button* forward_;
    segmented_control* rates_;
    icon_button* loop_;
    icon_button* mute_;
    value_slider* volume_;
    icon_button* volumes_;
    volume_popover* popover_;
};

}  // namespace vistels
