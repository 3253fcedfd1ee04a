// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QWidget>

namespace vistels {

class icon_button;

// The head of the inspector: a bar in the clip's colour, its name, what it is, and a button that plays it.
class clip_title_block : public QWidget {
    Q_OBJECT
  public:
    explicit clip_title_block(QWidget* parent = nullptr);
    // What it is, and the filter's verdict on it; either may be empty. An invalid colour leaves the bar out.
    void set_title(const QString& name, const QString& what, const QString& verdict, const QColor& colour);
    const QString& name() const { return name_; }

  Q_SIGNALS:
    void play_asked();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString name_;
    QString what_;
    QString verdict_;
    QColor colour_;
    icon_button* play_;
};

}  // namespace vistels
