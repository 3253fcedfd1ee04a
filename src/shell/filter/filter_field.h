// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QWidget>

#include "util/signal.h"

class QLabel;
class QMenu;

namespace vistels {

class filter_completer;
class filter_entry;
class filter_editor;
class icon_button;

// Where a filter is typed: a line of text in a frame, with the patterns at its left, and what is wrong, what
// can be put in and the way back at its right. It shows the text that its entry holds. Return applies,
// Escape clears; both give the focus back to what had it. Main thread.
class filter_field : public QWidget {
    Q_OBJECT
  public:
    // `name` is the object name; the parts are called name.text, name.patterns, name.insert, name.warning,
    // name.clear and name.message.
    explicit filter_field(const QString& name, QWidget* parent = nullptr);
    ~filter_field() override;

    // Must outlive the field's use; null: disabled.
    void set_entry(filter_entry* entry);
    filter_entry* entry() const;
    // The message is shown on this widget, under the field; null: not by the field itself.
    void set_message_ground(QWidget* ground);
    filter_editor& editor() const { return *editor_; }
    // Without the room for the focus ring.
    QRect frame() const;
    // The frame with the message under it, while there is one.
    QRect taken_room() const;

    // For menus and keys.
    void focus();
    // False: something is wrong with the text.
    bool apply();
    void clear();
    void open_patterns();
    void open_formula_menu();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    void build();
    icon_button* add_button(const char* icon, const char* part, const QString& tip);
    void show_text();
    void show_state();
    void place_message();
    void leave();
    void follow_focus(QWidget* before, QWidget* now);
    void open_under(icon_button& button, QMenu& menu);

    QPointer<filter_entry> entry_;
    filter_editor* editor_;
    icon_button* patterns_ = nullptr;
    icon_button* insert_ = nullptr;
    icon_button* clear_ = nullptr;
    QLabel* warning_;
    QPointer<QLabel> message_;
    QPointer<QWidget> before_;  // had the focus before the text
    filter_completer* completer_ = nullptr;
    connection theme_changed_;
};

}  // namespace vistels
