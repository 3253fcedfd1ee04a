// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QPushButton;
class QVBoxLayout;

namespace vistels {

// A panel with a headline, content and a row of buttons. Main thread.
class panel : public QDialog {
    Q_OBJECT
  protected:
    panel(const QString& name, const QString& title, const QString& words, QWidget* parent);

    QVBoxLayout& content() { return *content_; }
    // The buttons from left to right; the one that does it stands right, before it the safe one.
    QPushButton* add_button(const QString& name, const QString& words, const QString& kind);
    // "Cancel" and "Use This", which close the panel; Return is the latter.
    void add_cancel_and_use();

  private:
    QVBoxLayout* content_;
    QLayout* buttons_;
};

}  // namespace vistels
