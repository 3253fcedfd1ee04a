// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QRectF>
#include <QSize>
#include <vector>

#include "util/colour_text.h"

namespace vistels {

// Where vistels and their pictures are drawn. Any thread.

// The part of `room` in which the vistels lie: as large as can be with every view having the aspect (width to
// height) of the pictures when its frame has the size of the first one in `frames`. Without frames all of it.
// A `ratio` above 0 is the area's own width to height.
QRect video_area(const QRect& room, const std::vector<rectangle>& frames, double picture_aspect,
                 double ratio = 0);

// The same of a layout that scrolls: as wide as the room less `bar` pixels at its right, with its top at the
// room's, and as high as its ratio asks. Only where that would cut a vistel of the usual height it is
// narrower. When it is not higher than the room it lies in it as any other.
QRect scrolling_video_area(const QRect& room, const std::vector<rectangle>& frames, double picture_aspect,
                           double ratio, int bar);

// A vistel's view in the area; `frame` holds fractions of the area. `gap` pixels are left free at the sides
// where a neighbour may be.
QRect view_of(const QRect& area, const rectangle& frame, int gap);

// The largest rectangle of that aspect inside `view`, in its middle.
QRect picture_in(const QRect& view, double picture_aspect);

}  // namespace vistels
