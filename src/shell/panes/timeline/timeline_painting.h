// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QImage>
#include <QPixmap>
#include <QRect>
#include <cstdint>
#include <vector>

#include "shell/kit/theme.h"
#include "shell/panes/timeline/timeline_rows.h"
#include "shell/panes/timeline/timeline_scale.h"

class QPainter;

namespace vistels {

// Draws the parts of a timeline. Small pictures (rounded ends, numbers, names) are made once and used again,
// so that a clip costs a few copies of pixels. One for each widget; made anew when the theme or the device
// pixel ratio changes. Main thread.
class timeline_painter {
  public:
    timeline_painter(const theme& look, double device_pixel_ratio);
    ~timeline_painter();

    const theme& look() const { return look_; }
    double device_pixel_ratio() const { return ratio_; }

    // The time for which the clocks of timer clips are drawn.
    void set_now(double collection_seconds) { now_ = collection_seconds; }
    // The clips of a row whose left end is at x = 0 of the scale. What lies outside `dirty` is left out.
    void paint_clips(QPainter& painter, const timeline_row& row, const timeline_scale& scale,
                     const QRect& place, const QRect& dirty);
    // The growing clips, up to `now`; `pulse` (0 to 1) is the strength of their edge.
    void paint_live(QPainter& painter, const timeline_row& row, const timeline_scale& scale,
                    const QRect& place, double now, double pulse);
    // The triggers on the clips.
    void paint_marks(QPainter& painter, const timeline_row& row, const timeline_scale& scale,
                     const QRect& place, const QRect& dirty);
    // Triggers of buttons, in a row or on the ruler, on a line from its upper to its lower edge: a wedge at
    // the top points down where the button goes down, one at the bottom up where it goes up.
    void paint_triggers(QPainter& painter, const std::vector<button_trigger>& triggers, const QColor& usual,
                        const timeline_scale& scale, const QRect& place, const QRect& dirty);
    // A clip that is being dragged.
    void paint_ghost(QPainter& painter, const QColor& colour, const QRect& place);

    // Labels that would touch `flag` are left out.
    void paint_ruler(QPainter& painter, const timeline_scale& scale, const QRect& place, const QRect& flag);
    void paint_playhead(QPainter& painter, double x, int top, int bottom);
    void paint_flag(QPainter& painter, const QRect& flag, double seconds);

  private:
    // How a clip is drawn: from outside to inside.
    struct coat {
        QColor ring;  // invalid: none
        QColor edge;
        QColor fill;
    };
    // What follows from a clip's colour.
    struct worn_colour {
        coat plain;
        coat dimmed;
        QColor ink;
        const coat& of(bool is_dimmed) const { return is_dimmed ? dimmed : plain; }
    };
    struct text_picture {
        QPixmap picture;
        shared_text keeps;  // the text whose identity is the key
    };

    // The narrow bars of a row, which come by the thousand: written as pixels of the two lines of which such
    // a row consists, its outer and its inner ones.
    struct narrow_bars {
        std::vector<QRgb> outer;  // transparent where nothing is
        std::vector<QRgb> inner;
        std::size_t first = 0;  // what is used of them; nothing when first >= end
        std::size_t end = 0;
    };

    void add_narrow(const timeline_row& row, const timeline_bar& bar, int width);
    void paint_narrow(QPainter& painter, const QRect& place);
    QRect box_of(const timeline_bar& bar, const QRect& place) const;
    void paint_bar(QPainter& painter, const timeline_row& row, const timeline_bar& bar, const QRect& place,
                   bool selected);
    const worn_colour& worn(const QColor& colour);
    coat selected_coat(const QColor& colour, bool dimmed);
    void paint_box(QPainter& painter, const QRect& box, const coat& colours);
    const QPixmap& ends_of(int height, const coat& colours);
    void paint_label(QPainter& painter, const timeline_row& row, const timeline_bar& bar, const QRect& box,
                     const QColor& ink);
    // Returns where it ends.
    int paint_cut(QPainter& painter, int x, const QRect& box, int right, const QPixmap& text) const;
    const QPixmap& number_picture(std::uint32_t number, const QColor& ink);
    const QPixmap& name_picture(const shared_text& name, const QColor& ink);
    QPixmap text_as_picture(const QString& text, const QColor& ink) const;
    int paint_stars(QPainter& painter, const QRect& box, int stars, const QColor& ink);
    void paint_fold(QPainter& painter, const QRect& box, const QColor& edge) const;

    const theme& look_;
    const double ratio_;
    QFont label_font_;
    double now_ = 0;
    std::vector<timeline_bar> bars_;  // kept between calls for its memory
    narrow_bars narrow_;
    QImage narrow_picture_;
    QHash<QRgb, worn_colour> worn_;
    QHash<QRgb, QPixmap> stars_;  // by ink
    QHash<quint64, QPixmap> ends_;
    QHash<quint64, QPixmap> numbers_;
    QHash<const void*, text_picture> names_[2];
};

}  // namespace vistels
