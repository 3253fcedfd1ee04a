// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>
#include <functional>

namespace vistels {

class filter_field;

// A text as a line of a menu, cut to `width`: its "&" are no key of it.
QString menu_words(const QString& text, int width);

// The filters applied before, newest first: choosing one puts it into the fields and applies it. Each can be
// given a name, or be removed, from the menus at the end or by F2 and Delete. Filled when it is made. Main
// thread.
class pattern_menu : public QMenu {
    Q_OBJECT
  public:
    // The field must outlive it.
    explicit pattern_menu(filter_field& field);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void fill();
    using choice = std::function<void(const QString& pattern, const QString& name)>;
    void add_patterns(QMenu& menu, const choice& chosen);
    void choose(const QString& pattern);
    void remove(const QString& pattern);
    void ask_name(const QString& pattern, const QString& name);

    filter_field& field_;
};

}  // namespace vistels
