// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QElapsedTimer>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <optional>
#include <set>

#include "shell/panes/code_window/code_window_face.h"

namespace vistels {

// One button of a code window in run mode. It goes down at the press and up at the release, both with their
// moment on the monotonic clock, and shows what it is told, whoever pressed it. As long as anything holds it
// (the mouse, the Return key, a finger) it is down. Shift with a click, or a right click, holds it down until
// its next press, wherever the focus goes meanwhile. A press shorter than a moment stays drawn as down for
// that moment. Main thread.
class code_window_button final : public QAbstractButton {
    Q_OBJECT
  public:
    code_window_button(code_button button, QWidget* parent);

    const code_button& button() const { return button_; }
    // Another look of the same button: what holds it, holds it still.
    void set_button(code_button button);
    const code_button_state& state() const { return state_; }
    void set_state(const code_button_state& state);
    // Drawn as down: is down, or was a moment ago.
    bool looks_down() const { return state_.is_down || lingers_.isActive(); }
    // The collection's time; repaints when what is shown changes.
    void set_now(double seconds);
    QString time_shown() const { return time_; }
    // Null: none.
    void set_picture(const QImage& picture);
    // What its links do, in plain words.
    void set_link_words(const QStringList& words);
    // A link blocked it just now: it is drawn so for a moment, whatever its state.
    void show_blocked();
    bool looks_blocked() const { return state_.is_blocked || blocked_time_.isActive(); }
    // Where a press is marked at the moment, in proportions of the face.
    std::optional<QPointF> ping() const;

    // A finger: `id` names it, `at` is where it is on this widget.
    void touch(int id, const QPointF& at, double clock_seconds);
    void lift(int id, double clock_seconds);
    // Releases when the mouse, a key or a finger holds it.
    void let_go();

    // Room round the face for the ring, and for fingers.
    static int margin();
    QSize sizeHint() const override;

  Q_SIGNALS:
    // `place` in proportions of the face, from its upper left corner. `latches`: it is to stay down until its
    // next press, whatever holds it.
    void went_down(double clock_seconds, const QPointF& place, bool latches);
    void went_up(double clock_seconds);
    // The pointer, or the focus by a key, came to it or left it.
    void attention_changed();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

  private:
    QPointF place_of(const QPointF& at) const;
    // What holds it: the mouse and the Return key have numbers below those of fingers.
    void hold(int holder, const QPointF& place, double clock_seconds);
    void release(int holder, double clock_seconds);
    void press(const QPointF& place, double clock_seconds, bool latches);
    void show_ping(const QPointF& place);
    void show_words();

    code_button button_;
    code_button_state state_;
    std::set<int> holders_;
    bool is_pressing_ = false;  // a press by hand is being told
    QElapsedTimer since_down_;
    QTimer lingers_;
    QPointF ping_place_;
    QTimer ping_time_;
    QTimer blocked_time_;
    QStringList link_words_;
    QString time_;
    QImage picture_;
    std::optional<code_button_layout> words_;  // none: to be laid out
};

}  // namespace vistels
