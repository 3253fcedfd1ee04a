// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace vistels {

// At the right of the menu bar: when the event was last saved, or why it could not be. Main thread.
class saved_label : public QWidget {
    Q_OBJECT
  public:
    explicit saved_label(QWidget* parent = nullptr);

    void show_nothing();
    void show_saved(const QString& time);  // "18:42:07"
    void show_unsaved();
    void show_failure(const QString& reason);
    const QString& text() const { return text_; }
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    enum class state { nothing, saved, unsaved, failed };
    void show_state(state now, const QString& text);

    state state_ = state::nothing;
    QString text_;
};

}  // namespace vistels
