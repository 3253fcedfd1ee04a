// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

class QScreen;
class QWidget;

namespace vistels {

// How often a second the screen is drawn on which a widget's window stands: told at once and whenever it
// changes, because the window was moved to another screen or the screen was set up anew. Main thread.
class refresh_rate : public QObject {
    Q_OBJECT
  public:
    // A child of the widget.
    explicit refresh_rate(QWidget& widget);

    // Hertz; what the screen says, which may be nonsense.
    double hertz() const;

  Q_SIGNALS:
    void changed(double hertz);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void follow_screen();

    QWidget& widget_;
    QPointer<QWidget> window_;
    QPointer<QScreen> screen_;
};

}  // namespace vistels
