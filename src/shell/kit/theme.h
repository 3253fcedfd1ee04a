// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>
#include <array>
#include <cstddef>

#include "util/colour_text.h"
#include "util/signal.h"

class QApplication;

namespace vistels {

// Steps of type, relative to the desktop's font (see theme::font).
enum class type_step {
    clock,             // semibold
    clock_hundredths,  // shown muted
    clip_title,        // semibold
    headline,          // semibold, of a message
    button,            // semibold, name of a code-window button
    qualifier_button,  // medium
    body,
    title,  // body, semibold: of a pane or a section
    secondary,
    secondary_strong,  // semibold
    smallest,          // ruler, counts
    clip_label,        // smallest, semibold
};

// Sizes in logical pixels, the same in both themes.
struct theme_metrics {
    int grid = 4;
    int line = 1;
    int focus_ring = 2;
    int padding = 8;
    int wide_padding = 12;
    int group_gap = 16;

    double radius_clip = 3;  // clips and tokens
    double radius_control = 5;
    double radius_button = 6;  // code-window buttons and popovers

    int icon = 16;
    int pane_header_height = 36;
    int field_height = 28;
    int filter_width = 500;
    int push_button_height = 32;
    int icon_button = 28;
    int list_line_height = 28;
    int list_two_lines_height = 44;
    int chip_height = 26;
    int touch_height = 40;  // least height of a thing pressed while the event runs
    int swatch = 12;
    int live_dot = 8;

    int splitter = 1;
    int splitter_key_step = 8;
    int inspector_least_width = 240;
    int inspector_label_width = 52;
    int inspector_title_height = 60;
    int volume_width = 48;
    int slider_groove = 3;
    int slider_handle_width = 4;
    int slider_handle_height = 18;
    int small_code_window_width = 320;
    int playhead_width = 2;
    int playhead_gap = 1;

    int live_edge = 3;
    int hatch = 7;
};

// Times in milliseconds; with reduced motion nothing moves.
struct theme_motion {
    int fade = 120;
    int change = 160;
    int scroll = 180;
    int momentary = 120;  // how long a momentary press stays drawn as down
    int ping = 600;       // how long the place of a press is marked
    int pulse = 1000;     // period of a live edge, between full and pulse_least
    double pulse_least = 0.6;
    int vistel_ring = 1000;
};

// The look of the program: roles, colour tables and sizes, one value per theme. Views are handed one when
// they paint and hold no colour, size or font of their own. Main thread.
struct theme {
    bool is_dark = true;

    QColor window;  // behind panes, menu bar, ruler, table heads
    QColor pane;    // ground of a pane
    QColor raised;  // buttons, chips, popovers
    QColor field;   // text fields, key caps
    QColor line;    // dividers
    QColor edge;    // borders of controls, major ticks
    QColor hover;   // under the pointer
    QColor text;    // text, icons at work
    QColor muted;   // captions, idle icons
    QColor accent;  // focus ring, progress, filter hit
    QColor on_accent;
    QColor accent_ground;  // selected line of a list
    QColor live;           // recording, live edge, errors
    QColor warning;
    QColor good;
    QColor selection;      // ring of what is selected, playhead
    QColor selection_gap;  // the line between a ring and what it is round
    QColor video_surround;
    QColor video_label_ground;  // under a vistel's name
    QColor video_label;
    QColor button_ground;  // what the colour of a code-window button is mixed over while it is up
    QColor toggle_link;
    QColor heat_low;
    QColor heat_high;
    QColor clip_ink_dark;  // text on row and button colours: one of these
    QColor clip_ink_light;
    QColor behind_playhead;  // laid over the ground right of the playhead

    // Colours of rows and buttons in the order in which they are given out.
    std::array<QColor, 12> item_colours;
    // RN, RC, QN, QC, AN, AC, NT, STAR.
    std::array<QColor, 8> token_colours;

    double button_up_share = 0.24;     // of a button's colour over button_ground
    double button_hover_share = 0.36;  // under the pointer
    double edge_share = 0.5;           // of the colour in the edge of what is up or filtered out
    double clip_edge_share = 0.28;     // of black in a clip's inner edge
    double filtered_out_share = 0.28;  // of a clip's colour over the pane
    double disabled_share = 0.45;
    double token_ground_share = 0.15;
    double hatch_share = 0.3;       // of white in the light stripes of a live clip
    double frame_share = 0.08;      // of the text colour in the frame on the whole event
    double waiting_share = 0.35;    // of a vistel whose movie is not ready yet
    double down_band_share = 0.85;  // of dark ink in the band of a button that is down

    theme_metrics metrics;
    theme_motion motion;

    static const theme& dark();
    static const theme& light();
    // The one in use. Dark before use_theme() was called.
    static const theme& current();
    // Emitted after current() changed and the application's palette and style sheet were set.
    static signal<>& changed();

    // The desktop's font in one of the steps, never below 11 pixels.
    static QFont font(type_step step);
    // The same in a size and a family that somebody chose; 0 and an empty text: as it is.
    static QFont font(type_step step, double pixels, const QString& family = {});
    // The height of a line of text in this step.
    static int line_height(type_step step);

    // Row or button colour number `index` of the order given out (it goes round).
    const QColor& item_colour(std::size_t index) const;
    // A clip's inner edge.
    QColor clip_edge(const QColor& colour) const;
};

// What the user asked for; `desktop` follows the desktop's scheme.
enum class theme_choice { desktop, dark, light };

// Sets the Fusion style, palette and style sheet, and follows the desktop from now on. The variable
// VISTELS_THEME (dark or light) wins over `choice`. May be called again with another choice.
void use_theme(QApplication& application, theme_choice choice = theme_choice::desktop);

// What use_theme sets, made from the roles.
QPalette theme_palette(const theme& look);
QString theme_style_sheet(const theme& look);

// `share` (0 to 1) of `over` and the rest of `ground`, both taken as opaque.
QColor mix(const QColor& over, const QColor& ground, double share);
// Contrast of two opaque colours, 1 to 21, as accessibility guidelines count it.
double contrast(const QColor& a, const QColor& b);
// The ink that contrasts more with `ground`: never below 4.5:1.
QColor ink_on(const theme& look, const QColor& ground);
// `colour` moved in lightness, and no further than needed, until it has 4.5:1 on `ground`.
QColor legible_on(const QColor& colour, const QColor& ground);
// The colour as a record holds it, and back.
QColor to_qt(const colour& value);
colour from_qt(const QColor& value);

}  // namespace vistels
