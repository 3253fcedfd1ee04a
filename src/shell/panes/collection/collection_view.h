// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>
#include <array>
#include <string>
#include <vector>

#include "shell/panes/collection/collection_geometry.h"
#include "shell/panes/collection/collection_input.h"
#include "shell/panes/collection/collection_layers.h"
#include "shell/panes/collection/collection_scrolling.h"
#include "shell/panes/collection/vistel_tile.h"

namespace vistels {

// All vistels of a collection as laid out. Pictures come scaled to picture_size() and are painted as they
// are. Double click enlarges a vistel and puts it back; a drag of a vistel's name moves it, one of its edges
// resizes it; while aligning, a drag of its picture shifts its movie. Movies can be dropped on it. Where the
// layout scrolls, the wheel, the bar at its right and a drag near its upper or lower edge do so. It changes
// nothing by itself: what the user wants is told by signals. Drawn in layers over one geometry; input and
// scrolling are apart. Main thread.
class collection_view : public QWidget {
    Q_OBJECT
  public:
    explicit collection_view(QWidget* parent = nullptr);

    // `ratio` is the width to height of the video area; 0: as the first frame asks for. An area that scrolls
    // is as wide as the view and may be higher.
    void set_vistels(std::vector<shown_vistel> vistels, double ratio = 0, bool scrolls = false);
    // A null picture keeps the one before. `aspect` is the width to the height of the movie's picture.
    void set_picture(const std::string& vistel, const QImage& picture, double aspect);
    // It shows nothing until the next one.
    void forget_picture(const std::string& vistel);
    // In place of the picture: there is none before `seconds` of the collection; not finite: there is none.
    // `marks_start` draws that the movie has not started yet.
    void set_gap(const std::string& vistel, double seconds, bool marks_start = false);
    // Its movie is over and the picture its last one: its chip says so.
    void set_over(const std::string& vistel, bool over);
    // What tells its movie from the one on record, for its chip; none: nothing does.
    void set_difference(const std::string& vistel, const failure& difference);
    // How it fares in playback, for its chip; empty: the chip does not say.
    void set_health(const std::string& vistel, const QString& words);
    // What stands on its chip; empty: it has none.
    QString chip_words(const std::string& vistel) const;
    void set_problem(const std::string& vistel, const failure& problem);
    // A picture over the vistel's own, `frame` being fractions of that; a null one: none.
    void set_overlay(const std::string& vistel, const QImage& picture, const rectangle& frame,
                     double opacity);
    bool is_heard(const std::string& vistel) const;
    // Its movie is ready: it is no longer shown at low opacity.
    void set_ready(const std::string& vistel);
    // Shown in the middle while it is visible; it is the view's from then on.
    void set_middle(QWidget* widget);
    // An empty text puts all back into their places.
    void set_enlarged(const std::string& vistel);
    std::string enlarged() const;

    // The vistel that commands act on: the enlarged one, else the one chosen last, else the first.
    std::string current() const;
    void set_current(const std::string& vistel);
    // While aligning, pictures are dragged, not frames.
    void set_aligning(bool aligning);
    bool is_aligning() const { return handling_.is_aligning; }
    // Words drawn large in a vistel, such as the time that it is shifted by; empty: none.
    void set_note(const std::string& vistel, const QString& words);
    QString note_in(const std::string& vistel) const;
    // Whether a collection is shown, be it one without vistels: movies can be dropped on it.
    void set_has_collection(bool has_collection);
    // Whether frames and movies can be changed at all.
    void set_changeable(bool changeable);

    // As it is drawn now.
    vistel_arrangement arrangement() const;
    // Width to height of the vistel's picture, as far as it is known.
    double picture_aspect() const;
    bool is_dragging() const { return handling_.drag.has_value(); }

    // How far it is scrolled, in logical pixels. What is wanted beyond what there is counts again when there
    // is more: in a higher view, or in another layout.
    int offset() const;
    void set_offset(double offset);
    // Scrolls as little as shows all of the vistel.
    void bring_into_sight(const std::string& vistel);
    // Whether any of it is seen, or is as soon as no vistel is enlarged.
    bool is_in_sight(const std::string& vistel) const;

    // The size in device pixels in which a vistel's pictures are wanted.
    QSize picture_size(const std::string& vistel) const;
    // Where a vistel is drawn, in logical pixels; empty while another one covers it, outside of the view when
    // it is scrolled out of sight.
    QRect place_of(const std::string& vistel) const;
    // Where its name is drawn; empty when it has none.
    QRect chip_of(const std::string& vistel) const;
    // What stands in the vistel in place of a picture; empty when a picture does.
    QString words_in(const std::string& vistel) const;
    bool has_picture(const std::string& vistel) const;
    std::string vistel_at(const QPoint& point) const;

    QSize minimumSizeHint() const override;

  Q_SIGNALS:
    // Pictures are wanted in other sizes now.
    void sizes_changed();
    // Other vistels may be in sight now.
    void sight_changed();
    // It is scrolled elsewhere, by the user or with its size.
    void scrolled(double offset);
    void enlarge_asked(const QString& vistel);  // empty: all back into their places
    // The user moved, resized or restacked a vistel; `name` is for the undo menu.
    void layout_asked(const vistels::vistel_arrangement& wanted, const char* name);
    void menu_asked(const QString& vistel, const QPoint& global);
    void current_changed();
    // A picture is dragged by so many pixels since the drag began; at its end once more, dropped or kept.
    void shift_dragged(const QString& vistel, double pixels);
    void shift_ended(const QString& vistel, double pixels, bool keeps);
    // Paths of movies; `vistel` is the one that they were dropped on, or empty.
    void movies_dropped(const QStringList& paths, const QString& vistel, const QPoint& global);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool event(QEvent* event) override;

  private:
    vistel_tile* find(const std::string& vistel);
    const vistel_tile* find(const std::string& vistel) const;
    void update_place(const std::string& vistel);
    void lay_out();
    void follow_scroll(int offset);
    void end_growth();
    void start_ring(const std::string& vistel);
    void paint_empty(QPainter& painter) const;
    void paint_vistel(QPainter& painter, const std::string& vistel) const;

    std::vector<vistel_tile> tiles_;
    collection_geometry geometry_;
    collection_handling handling_;
    picture_layer pictures_;
    chip_layer chips_{handling_};
    selection_layer selection_{geometry_, handling_, [this] { return current(); }};
    // From below.
    const std::array<const collection_layer*, 3> layers_{&pictures_, &chips_, &selection_};
    collection_scrolling scrolling_{*this, geometry_};
    collection_input input_{*this, geometry_, handling_, scrolling_};
    QVariantAnimation growth_;
    QTimer ring_time_;
    QPointer<QWidget> middle_;
    bool has_collection_ = false;
};

}  // namespace vistels
