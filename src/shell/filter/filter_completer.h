// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <vector>

#include "formula/formula_completion.h"
#include "shell/filter/completion_list.h"

namespace vistels {

class filter_field;

// Offers what may come next while a filter is typed. Tab takes the chosen line or the first, Return the
// chosen one, Escape and leaving the field send the list away. Main thread.
class filter_completer : public QObject {
    Q_OBJECT
  public:
    // A child of the field.
    explicit filter_completer(filter_field& field);
    ~filter_completer() override;

    bool is_shown() const;
    void hide();
    // What the field takes up has changed.
    void follow_field();
    // The names in use were counted anew.
    void take_up_texts();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void offer();
    void accept(int line);
    bool takes_key(int key);

    filter_field& field_;
    QPointer<completion_list> list_;  // made when it is needed; the window's
    formula_completion at_;
    std::vector<formula_text> offered_;
    QString offered_for_;         // the text
    std::size_t offered_at_ = 0;  // the cursor in it
};

}  // namespace vistels
