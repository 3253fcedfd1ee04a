// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>
#include <QString>
#include <string>
#include <vector>

namespace vistels {

// How a filter text is shown. Places count UTF-16 units of the text as it was given.
struct filter_display {
    struct span {
        int start = 0;
        int length = 0;

        int end() const { return start + length; }
        bool operator==(const span&) const = default;
    };
    // A word of the formula with what it is compared with.
    struct word {
        span place;        // with its identifiers, where nothing but blanks is between them
        span text;         // between the quotes
        std::string code;  // "RN", "QN" ...: the one that decides; empty: a wrong one
        // Where it was drawn last, in the view's coordinates; empty: nowhere.
        QRectF stored_draw_coloured_formula_rect = {};

        bool operator==(const word&) const = default;
    };

    std::vector<word> words;   // in the order of the text; none in a plain search
    std::vector<span> wrong;   // what is to be underlined
    std::vector<span> joints;  // blanks outside of words
    QString problems;          // what is wrong with it as a filter; empty: nothing
};

// Takes time linear in the text's length. Any thread.
filter_display display_filter(const QString& text);

// A place in code points, as formulas count them, as one in UTF-16 units; one beyond the end is the end.
int utf16_place(const QString& text, std::size_t code_point);

// A text fit for one line: line ends of any kind become blanks.
QString one_line(QString text);

// What a code stands for, to be shown: "qualifier name". Empty for an unknown one.
QString code_meaning(const std::string& code);

}  // namespace vistels
