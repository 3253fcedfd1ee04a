// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QTabBar;

namespace vistels {

class icon_button;

// The super tabs, and at their right the switches of the side bar and the inspector. Main thread.
class super_tab_row : public QWidget {
    Q_OBJECT
  public:
    explicit super_tab_row(const QStringList& names, QWidget* parent = nullptr);

    int current() const;
    void set_current(int index);
    void set_side_bar_shown(bool shown);
    void set_inspector_shown(bool shown);

  Q_SIGNALS:
    void current_changed(int index);
    void side_bar_asked(bool shown);
    void inspector_asked(bool shown);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QTabBar* tabs_;
    icon_button* left_;
    icon_button* right_;
    bool side_bar_shown_ = true;
    bool inspector_shown_ = true;
};

}  // namespace vistels
