// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <cstdint>
#include <optional>
#include <string>

class QPainter;

namespace vistels {

struct theme;

// A button of a code window as it is drawn. Sizes and places are in logical pixels of the canvas.
struct code_button {
    enum class band { none, left, below };  // clips have theirs at the left, qualifiers and attributes below

    std::string uuid;
    QString name;
    QString what;  // "Clip", "Qualifier": for the tool tip
    band marks = band::none;
    QRectF place;   // on the code window's canvas
    QString shape;  // see code_button_outline
    QColor colour;
    std::optional<QColor> plain_ground;  // drawn as it is while the button is up, instead of the mixed colour
    std::optional<QColor> made_colour;   // of its band; none: the button's
    double opacity = 1;                  // of everything but the rings
    bool shows_name = true;
    bool fits_name = false;  // the name's type is made smaller, as far as needed and legible
    std::optional<QColor> name_colour;
    QString name_font;     // its family; empty: the usual one
    double name_size = 0;  // its height in pixels; 0: the usual one
    QPointF name_offset;   // from its usual place
    QString key;           // on the key cap; empty: none
    QPointF key_offset;
    // Of what its formula says: as of the name.
    QString output_font;
    double output_size = 0;
    QColor output_colour;
    QPointF output_offset;
    bool has_output = false;
    bool hides_down_state = false;
    bool shows_ping = false;   // a ring where it was pressed
    bool shows_clock = false;  // the collection's time
    // The time since it went down in the place of the collection's; without that it is shown in any case.
    bool shows_down_time = false;
    bool fires_in_centre = false;  // every press counts as one in the middle
    bool lists_clips = false;
    QString list_title;
    int depth = 0;                  // above 0: in front of the others, below: behind them
    QList<QPointF> traces;          // where its field was pressed, in proportions; the last one at the end
    bool traces_are_lines = false;  // from one to the next
    bool operator==(const code_button&) const = default;
};

// What a button shows beside its face.
struct code_button_state {
    bool is_down = false;
    bool is_live = false;     // a clip grows
    bool is_latched = false;  // down until its next press
    bool is_blocked = false;  // presses have no effect for now
    bool found_none = false;  // of all presses its was the last, and there was nothing to stamp
    bool waits = false;       // its attribute goes to the next qualifier
    double down_since = 0;    // seconds on the collection's clock
    std::uint32_t count = 0;  // of what it made; 0 is not shown
    QString output;           // what its formula says
    QString output_problem;   // why that says nothing; empty: it does
    bool operator==(const code_button_state&) const = default;
};

// Where the words of a button stand on its face. The name is in its own type where that has room, else in the
// smallest, on one line below the key or beside it, else on several; only what has no room that way is cut.
struct code_button_layout {
    QRectF cap;     // of the key; empty without one, at the upper right corner
    QRectF corner;  // of the count, the time or the cross
    bool has_corner = true;
    QRectF name;  // the text stands at its bottom, as `alignment` says
    Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignBottom;
    QFont font;
    QString text;  // the name, or what is left of it
};
code_button_layout code_button_layout_of(const code_button& button, const QRectF& face);

// Draws the button's face in `face`, whatever widget it is on.
struct code_button_look {
    code_button_state state;
    QString time;
    const QImage* picture = nullptr;
    std::optional<QPointF> ping;  // a press is marked there, in proportions of the face
    bool is_hovered = false;
    bool has_focus = false;
    bool is_enabled = true;
    const code_button_layout* words = nullptr;  // of the face; null: they are laid out for it
};
void paint_code_button(QPainter& painter, const theme& look, const code_button& button, const QRectF& face,
                       const code_button_look& shown);

}  // namespace vistels
