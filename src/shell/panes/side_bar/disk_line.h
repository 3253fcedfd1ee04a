// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include "app/vaults/vaults.h"

namespace vistels {

// Free space of a vault's volume, as a line of text over a bar. Main thread.
class disk_line : public QWidget {
    Q_OBJECT
  public:
    explicit disk_line(QWidget* parent = nullptr);

    // `limited`: less is free than the user wants to be warned of.
    void set_space(const QString& vault, const volume_space& space, bool limited);
    QString text() const { return text_; }
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString vault_;
    QString text_;
    double used_share_ = 0;
    bool limited_ = false;
};

}  // namespace vistels
