// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>
#include <string>
#include <utility>
#include <vector>

#include "formula/formula_builder.h"

namespace vistels {

class filter_field;

// Joins a term to the text of the field at the cursor by the default operator, and goes on writing there.
// `before` and `after` are put inside the quotes of its word (a star, or nothing). What cannot be written is
// told by the field's entry.
void insert_term(filter_field& field, const formula_term& term, const std::string& before,
                 const std::string& after);

// What can be put into a formula: the names and categories in use, a note, stars; each is joined to the text
// by the default operator, which is chosen here too, as is another operator in the place of one that the
// formula has. The squares before the lines show the colours of the words. Filled when it is made. Main
// thread.
class formula_menu : public QMenu {
    Q_OBJECT
  public:
    // The field must outlive it.
    explicit formula_menu(filter_field& field);

  private:
    void add_names();
    void fill_names(QMenu& menu, const std::string& code);
    void add_note();
    void add_stars();
    void add_default_operators();
    void add_replacements();
    void insert(const formula_term& term, const std::string& before, const std::string& after);
    QIcon swatch(const std::string& code) const;

    static inline const std::string star_wild = "*";

    filter_field& field_;
    std::vector<std::pair<std::string, QMenu*>> name_menus_;  // by code
};

}  // namespace vistels
