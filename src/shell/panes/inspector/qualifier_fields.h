// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <array>
#include <optional>

#include "timeline/edits/qualifier_edits.h"

class QLabel;
class QLineEdit;

namespace vistels {

// What one qualifier says, to be read and written: name, category, actor, recipient, value, alias. What was
// typed is asked for by Return or when a field is left; Escape takes it back. Main thread.
class qualifier_fields : public QWidget {
    Q_OBJECT
  public:
    explicit qualifier_fields(QWidget* parent = nullptr);
    // Nothing hides the fields. `head` says which one it is.
    void set_qualifier(const std::optional<qualifier_words>& words, const QString& head);

  Q_SIGNALS:
    void words_asked(const vistels::qualifier_words& words);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void show_words();
    void commit();
    std::optional<qualifier_words> typed() const;

    enum field { name, category, actor, recepient, value, alias, field_count };
    QLabel* head_;
    std::array<QLineEdit*, field_count> fields_{};
    std::optional<qualifier_words> words_;
};

}  // namespace vistels
