// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <map>
#include <string>

namespace vistels {

struct formula_identifier_colours;
struct theme;

// The colours of a filter's words, by the code that decides ("RN" ...): the theme's, or the user's own moved
// in lightness until they can be read.
class filter_colours {
  public:
    filter_colours() = default;
    explicit filter_colours(const formula_identifier_colours& stored);

    // Of the letters; plain text colour for an unknown code.
    QColor ink(const theme& look, const std::string& code) const;
    // Behind them; invalid for an unknown code: none.
    QColor ground(const theme& look, const std::string& code) const;

    bool operator==(const filter_colours&) const = default;

  private:
    std::map<std::string, QColor> own_;
};

}  // namespace vistels
