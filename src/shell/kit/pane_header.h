// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QHBoxLayout;

namespace vistels {

// The line at the top of a pane: icon, name, one muted fact, and at the right the pane's actions. Its name is
// in text colour while the keyboard focus is in the pane (the parent widget), muted otherwise. Main thread.
class pane_header : public QWidget {
    Q_OBJECT
  public:
    // An empty icon name leaves the icon out.
    pane_header(const QString& icon, const QString& name, QWidget* pane);

    void set_name(const QString& name);
    const QString& name() const { return name_; }
    void set_fact(const QString& fact);
    const QString& fact() const { return fact_; }
    // A round dot in the live colour before the fact.
    void set_live(bool live);
    // Puts a control at the right end, after those added before.
    void add_control(QWidget* control);
    // Puts a control before the others.
    void add_first_control(QWidget* control);
    // Puts a control right behind the name, after those put there before; the header then shows no fact.
    void add_lead_control(QWidget* control);
    // Another icon before the name.
    void set_icon(const QString& icon);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void follow_focus(const QWidget* focused);
    int name_end() const;

    QString icon_;
    QString name_;
    QString fact_;
    bool live_ = false;
    bool shows_fact_ = true;
    bool has_focus_ = false;
    QHBoxLayout* controls_;
    int leads_ = 0;  // items of the layout before the stretch
};

}  // namespace vistels
