// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <optional>
#include <string>
#include <vector>

#include "shell/panes/collection/vistel_geometry.h"

namespace vistels {

// Where all vistels of a collection are drawn: the layout, how far it is scrolled, the one that is enlarged
// or on its way, the one that is held by the pointer. Knows nothing of what is painted there. Points and
// rectangles are logical pixels of the view; a vistel is named by its UUID, and one that is not there is
// nowhere. Main thread.
class collection_geometry {
  public:
    // Vistels that were there before keep the aspect of their pictures. See collection_view::set_vistels.
    void set_vistels(std::vector<placed_vistel> vistels, double ratio, bool scrolls);
    // Whether it is another than before.
    bool set_aspect(const std::string& vistel, double aspect);
    // The room of the view; a bar at its right is so wide. Lays all out; in an area of another size, and when
    // vistels come below, the same ones stay in sight. Whether it is scrolled elsewhere by that.
    bool lay_out(const QRect& room, int bar_width);

    bool empty() const { return vistels_.empty(); }
    bool has(const std::string& vistel) const { return find(vistel) != nullptr; }
    std::string first() const { return empty() ? std::string() : vistels_.front().placed.uuid; }
    // The one after it (direction 1) or before it (-1), round about.
    std::string beside(const std::string& vistel, int direction) const;
    // Width to height of the pictures, as far as it is known.
    double aspect_of(const std::string& vistel) const;
    vistel_arrangement arrangement() const;

    const QRect& room() const { return room_; }
    const QRect& area() const { return area_; }  // scrolled, it begins above the view
    // How far it is, and can be, scrolled.
    int offset() const { return offset_; }
    int greatest_offset() const;
    bool can_scroll() const { return enlarged_.empty() && greatest_offset() > 0; }
    // By the user.
    void scroll_to(int offset);
    // What is wanted beyond what there is counts again when there is more. Holds from the next lay_out() on.
    void want_offset(double offset) { wanted_offset_ = offset; }
    // The one nearest to offset() at which all of it is seen.
    int offset_showing(const std::string& vistel) const;
    bool is_in_sight(const std::string& vistel) const;

    // Empty: all go back into their places. They are where they were until set_growth() says otherwise.
    void enlarge(const std::string& vistel);
    void set_growth(double share) { growth_ = share; }
    void end_growth();
    bool is_growing() const { return growth_ < 1; }
    const std::string& enlarged() const { return enlarged_; }
    const std::string& leaving() const { return leaving_; }  // the one on its way back
    // Where it lies when none is enlarged.
    QRect home(const std::string& vistel) const;
    QRect place(const std::string& vistel) const;
    // The vistels in the order in which they are drawn.
    std::vector<std::string> from_back() const;
    std::string at(const QPoint& point) const;

    // A drag from here on: where the others are, with the distances at which it meets lines.
    frame_drag drag_of(const std::string& vistel, frame_grip grip) const;
    // Held, it lies in front; with a frame there.
    void hold(const std::string& vistel, const std::optional<rectangle>& frame);
    void let_go() { held_.clear(); }

  private:
    struct laid_vistel {
        placed_vistel placed;
        double aspect = 16.0 / 9;
    };

    const laid_vistel* find(const std::string& vistel) const;
    bool place_area();

    std::vector<laid_vistel> vistels_;
    double ratio_ = 0;
    bool scrolls_ = false;
    QRect room_;
    QRect area_;
    int offset_ = 0;
    double top_widths_ = 0;                // what is scrolled away at the top, in widths of the area
    std::optional<double> wanted_offset_;  // in pixels, as long as the user has not scrolled
    std::string enlarged_;
    std::string leaving_;
    double growth_ = 1;
    std::string held_;
    std::optional<rectangle> held_frame_;
};

}  // namespace vistels
