// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCheckBox>

namespace vistels {

// A check box drawn from the theme: the box is seen on every ground, and a checked one is filled and ticked.
// Main thread.
class check_box : public QCheckBox {
    Q_OBJECT
  public:
    explicit check_box(const QString& words, QWidget* parent = nullptr);
    QSize sizeHint() const override;

  protected:
    bool hitButton(const QPoint& at) const override { return rect().contains(at); }
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace vistels
