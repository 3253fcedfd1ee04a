// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>
#include <string>
#include <vector>

#include "util/colour_text.h"

namespace vistels {

// What the collection's view shows of one vistel.
struct shown_vistel {
    std::string uuid;
    QString name;            // as on its chip: "1 Wide"
    rectangle frame;         // as fractions of the video area
    QString problem;         // why it cannot be shown; empty when it can
    bool has_sound = false;  // it is the one that is heard
};

// All vistels of a collection as laid out. Pictures come scaled to picture_size() and are painted as they
// are. Double click enlarges a vistel and puts it back. Main thread.
class collection_view : public QWidget {
    Q_OBJECT
  public:
    explicit collection_view(QWidget* parent = nullptr);

    void set_vistels(std::vector<shown_vistel> vistels);
    // A null picture keeps the one before. `aspect` is the width to the height of the movie's picture.
    void set_picture(const std::string& vistel, const QImage& picture, double aspect);
    // In place of the picture: there is none before `seconds` of the collection; not finite: there is none.
    void set_gap(const std::string& vistel, double seconds);
    void set_problem(const std::string& vistel, const QString& problem);
    void set_sound(const std::string& vistel);
    // An empty text puts all back into their places.
    void set_enlarged(const std::string& vistel);
    std::string enlarged() const;

    // The size in device pixels in which a vistel's pictures are wanted.
    QSize picture_size(const std::string& vistel) const;
    // Where a vistel is drawn, in logical pixels; empty while another one covers it.
    QRect place_of(const std::string& vistel) const;
    // What stands in the vistel in place of a picture; empty when a picture does.
    QString words_in(const std::string& vistel) const;
    bool has_picture(const std::string& vistel) const;

    QSize minimumSizeHint() const override;

  Q_SIGNALS:
    // Pictures are wanted in other sizes now.
    void sizes_changed();
    void enlarge_asked(const QString& vistel);  // empty: all back into their places
    void sound_asked(const QString& vistel);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool event(QEvent* event) override;

  private:
    struct tile {
        shown_vistel vistel;
        QImage picture;
        double aspect = 16.0 / 9;
        bool in_gap = false;
        double gap_end = 0;
    };

    tile* find(const std::string& vistel);
    const tile* find(const std::string& vistel) const;
    const tile* tile_at(const QPoint& point) const;
    QRect home_of(const tile& one) const;
    QRect place(const tile& one) const;
    void lay_out();
    void paint_tile(QPainter& painter, const tile& one) const;
    void paint_words(QPainter& painter, const QRect& view, const tile& one) const;
    void paint_chip(QPainter& painter, const QRect& view, const tile& one) const;
    void start_ring(const std::string& vistel);

    std::vector<tile> tiles_;
    QRect area_;
    std::string enlarged_;
    std::string leaving_;  // the one on its way back
    QVariantAnimation growth_;
    std::string ringed_;
    QTimer ring_time_;
};

}  // namespace vistels
