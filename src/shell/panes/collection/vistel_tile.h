// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QString>
#include <string>

#include "util/colour_text.h"
#include "util/failure.h"

namespace vistels {

// What the collection's view shows of one vistel.
struct shown_vistel {
    std::string uuid;
    QString name;             // as on its chip: "1 Wide"; empty: it has no chip
    rectangle frame;          // as fractions of the video area
    failure problem;          // why it cannot be shown; none when it can
    bool has_sound = false;   // it is the one that is heard
    int order = 0;            // the greater covers the smaller
    bool is_waiting = false;  // its movie is not ready yet: shown at low opacity
};

// The same with what came since: what the layers of the view draw of it.
struct vistel_tile {
    shown_vistel vistel;
    QImage picture;
    bool in_gap = false;
    double gap_end = 0;  // seconds; not finite: none
    bool marks_start = false;
    bool is_over = false;
    failure difference;  // of its movie from the one on record
    QString health;      // how it fares in playback; empty: it does not say
    QString note;
    QImage overlay;
    rectangle overlay_frame;
    double overlay_opacity = 1;
};

// What stands in it in place of a picture; empty when a picture does.
QString words_in_place(const vistel_tile& tile);
// What stands on its chip; empty: it has none.
QString chip_words_of(const vistel_tile& tile);

}  // namespace vistels
