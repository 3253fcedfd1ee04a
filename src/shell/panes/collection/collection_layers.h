// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <functional>
#include <optional>
#include <string>

#include "shell/panes/collection/collection_geometry.h"
#include "shell/panes/collection/vistel_tile.h"

class QPainter;

namespace vistels {

// What is chosen, pointed at and held in the collection's view.
struct collection_handling {
    // A drag from the press on.
    struct dragging {
        std::string vistel;
        frame_drag frame;
        QPoint pressed;
        QPoint from;  // the same place in the video area
        QPoint pointer;
        Qt::KeyboardModifiers keys;
        bool shifts = false;  // the movie, not the frame
        bool moves = false;   // it went farther than a click does
        double pixels = 0;    // across, since the press
        dragged_frame now;
    };

    std::string chosen;  // last
    bool is_aligning = false;
    bool is_changeable = true;
    std::string hovered;
    frame_grip hovered_grip;
    std::optional<dragging> drag;
    std::optional<std::string> drop;  // movies are held over this vistel, or (empty) beside all
    std::string ringed;               // came, or went back, a moment ago
    bool has_focus = false;

    // Whether its name is held, or would be by a press.
    bool holds_name(const std::string& vistel) const;
};

// A layer of the collection's view: draws its own kind of thing, of each vistel over what the layers below
// drew of that one, and over all of them. A vistel in front covers all layers of those behind. Main thread.
class collection_layer {
  public:
    virtual ~collection_layer() = default;
    // The vistel lies at `place`, the whole of its movie's picture at `picture` in it.
    virtual void paint_vistel(QPainter& painter, const vistel_tile& tile, const QRect& place,
                              const QRect& picture) const = 0;
    virtual void paint_above(QPainter&) const {}
};

// Pictures, what is laid over them, and words where there are none.
class picture_layer final : public collection_layer {
  public:
    void paint_vistel(QPainter& painter, const vistel_tile& tile, const QRect& place,
                      const QRect& picture) const override;
};

// The vistels' names, and the words drawn large in them.
class chip_layer final : public collection_layer {
  public:
    explicit chip_layer(const collection_handling& handling) : handling_(handling) {}
    void paint_vistel(QPainter& painter, const vistel_tile& tile, const QRect& place,
                      const QRect& picture) const override;

    // Where its name is drawn; empty when it has none.
    static QRect chip_in(const QRect& place, const vistel_tile& tile);

  private:
    const collection_handling& handling_;
};

// Which vistel is chosen, enlarged just now, held or pointed at, and where a drop would go.
class selection_layer final : public collection_layer {
  public:
    // `current` names the vistel that commands act on.
    selection_layer(const collection_geometry& geometry, const collection_handling& handling,
                    std::function<std::string()> current)
        : geometry_(geometry), handling_(handling), current_(std::move(current)) {}
    void paint_vistel(QPainter& painter, const vistel_tile& tile, const QRect& place,
                      const QRect& picture) const override;
    void paint_above(QPainter& painter) const override;

  private:
    void paint_grips(QPainter& painter) const;
    void paint_lines(QPainter& painter) const;
    void paint_drop(QPainter& painter) const;

    const collection_geometry& geometry_;
    const collection_handling& handling_;
    const std::function<std::string()> current_;
};

}  // namespace vistels
