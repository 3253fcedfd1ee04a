// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QStringList>
#include <QWidget>

#include "shell/kit/theme.h"

class QButtonGroup;
class QPainter;
class QPushButton;

namespace vistels {

// The small controls of the panes, drawn from the theme. All take the focus by the Tab key only, so that a
// click leaves the keys where they are; Return works like a click. Main thread.

// The focus ring inside `place`, for what touches an edge.
void paint_inner_focus_ring(QPainter& painter, const theme& look, const QRectF& place);
// Where a pen of 1 pixel draws the outline of `place` sharply, inside it.
QRectF outline_of(const QRect& place);
// A push button as the style sheet draws it, reached by the Tab key only; `kind` is "first" for the one meant
// to be chosen, "danger", or empty.
QPushButton* make_push_button(const QString& words, const QString& kind, QWidget* parent);
// A label in one of the theme's type steps and tones ("muted", "title", "live", "warning", "good" or empty).
QLabel* make_label(const QString& words, type_step step, const QString& tone, QWidget* parent);

// A label for a text of the user's: plain, and cut at its end where there is no room for it; the tool tip has
// it whole then. It asks for `greatest_width` at most and gives way down to a few letters.
class cut_label : public QLabel {
    Q_OBJECT
  public:
    cut_label(type_step step, const QString& tone, int greatest_width, QWidget* parent);

    void set_text(const QString& text);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void show_text();

    QString text_;
    int greatest_width_;
};

// A square button with one of the program's icons. `tip` is its tool tip and its accessible name.
class icon_button : public QAbstractButton {
    Q_OBJECT
  public:
    icon_button(QString icon, const QString& tip, QWidget* parent = nullptr);

    void set_icon(const QString& icon);
    void set_tip(const QString& tip);
    // Sides in logical pixels; the icon is centred in it.
    void set_size(int width, int height, int icon_size);
    // Drawn with ground and edge also when idle.
    void set_framed(bool framed) { framed_ = framed; }
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QString icon_;
    QSize size_;
    int icon_size_;
    bool framed_ = false;
};

// One of several words, side by side; the chosen one is reversed.
class segmented_control : public QWidget {
    Q_OBJECT
  public:
    // `name` is the object name and the accessible name; the segments are called name.0, name.1 ...
    segmented_control(const QString& name, const QStringList& words, QWidget* parent = nullptr);

    // -1: none of them.
    int chosen() const;
    void set_chosen(int index);
    void set_tip(int index, const QString& tip);

  Q_SIGNALS:
    // By the user.
    void chose(int index);

  private:
    QButtonGroup* group_;
};

// A horizontal slider: a thin groove, filled up to the value.
class value_slider : public QWidget {
    Q_OBJECT
  public:
    explicit value_slider(QWidget* parent = nullptr);

    // Fractions of the whole from 0 to 1.
    double value() const { return value_; }
    void set_value(double value);
    bool is_dragged() const { return dragged_; }
    // With an upright handle at the value.
    void set_has_handle(bool has_handle) { has_handle_ = has_handle; }
    void set_step(double step) { step_ = step; }  // of the arrow keys
    QSize sizeHint() const override;

  Q_SIGNALS:
    // By the user: while dragging, and at the end of it.
    void moved(double value);
    void drag_ended(double value);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    double value_at(double x) const;
    void move_to(double value);

    double value_ = 0;
    double step_ = 0.05;
    bool dragged_ = false;
    bool has_handle_ = false;
};

}  // namespace vistels
