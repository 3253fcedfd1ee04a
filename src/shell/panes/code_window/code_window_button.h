// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QElapsedTimer>
#include <QFont>
#include <QRectF>
#include <QString>
#include <QTimer>
#include <optional>
#include <string>

namespace vistels {

struct theme;

// A button of a code window as it is drawn.
struct code_button {
    enum class band { none, left, below };  // clips have theirs at the left, qualifiers and attributes below

    std::string uuid;
    QString name;
    QString what;  // "Clip", "Qualifier": for the tool tip
    band marks = band::none;
    QRectF place;  // on the code window's canvas
    QColor colour;
    std::optional<QColor> plain_ground;  // drawn as it is while the button is up, instead of the mixed colour
    QString key;                         // on the key cap; empty: none
    bool shows_name = true;
};

// What a button shows beside its face.
struct code_button_state {
    bool is_down = false;
    bool is_live = false;     // a clip grows
    bool is_blocked = false;  // presses have no effect for now
    double down_since = 0;    // seconds on the collection's clock
    std::uint32_t count = 0;  // of what it made; 0 is not shown
    bool operator==(const code_button_state&) const = default;
};

// One button of a code window in run mode. It goes down at the press and up at the release, both with their
// moment on the monotonic clock, and shows what it is told, whoever pressed it. A press shorter than a
// moment stays drawn as down for that moment. Main thread.
class code_window_button final : public QAbstractButton {
    Q_OBJECT
  public:
    code_window_button(code_button button, QWidget* parent);

    const code_button& button() const { return button_; }
    const code_button_state& state() const { return state_; }
    void set_state(const code_button_state& state);
    // Drawn as down: is down, or was a moment ago.
    bool looks_down() const { return state_.is_down || lingers_.isActive(); }
    // The collection's time; repaints when what is shown changes.
    void set_now(double seconds);
    QString time_shown() const { return time_; }
    // Releases when the mouse or a key holds it.
    void let_go();

    // Room round the face for the ring, and for fingers.
    static int margin();
    QSize sizeHint() const override;

  Q_SIGNALS:
    void went_down(double clock_seconds);
    void went_up(double clock_seconds);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

  private:
    void hold(double clock_seconds);
    void show_words();

    code_button button_;
    code_button_state state_;
    bool is_held_ = false;
    QElapsedTimer since_down_;
    QTimer lingers_;
    QString time_;
};

// Where the words of a button stand on its face. The name is in its own type where that has room, else in the
// smallest, on one line below the key or beside it, else on several; only what has no room that way is cut.
struct code_button_layout {
    QRectF cap;     // of the key; empty without one, at the upper right corner
    QRectF corner;  // of the count, the time or the cross
    bool has_corner = true;
    QRectF name;  // the text stands at its lower left
    QFont font;
    QString text;  // the name, or what is left of it
};
code_button_layout code_button_layout_of(const code_button& button, const QRectF& face);

// Draws the button's face in `face`, whatever widget it is on.
struct code_button_look {
    code_button_state state;
    QString time;
    bool is_hovered = false;
    bool has_focus = false;
    bool is_enabled = true;
};
void paint_code_button(QPainter& painter, const theme& look, const code_button& button, const QRectF& face,
                       const code_button_look& shown);

}  // namespace vistels
