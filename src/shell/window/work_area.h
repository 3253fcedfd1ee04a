// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QSize>
#include <QWidget>

#include "util/property_value.h"

namespace vistels {

class pane_splitter;

// How the panes of a super tab share its room.
struct work_sizes {
    int code_width = 0;    // of the code window
    int upper_height = 0;  // of what stands above the timeline
};

// The sizes for a room of that size: the video has the room first, then the code window up to `code_content`,
// then the timeline, which keeps what it needs to be of use. `beside_picture` is the height of what the
// collection's pane holds beside the picture.
work_sizes plan_work_sizes(QSize room, int code_content, int beside_picture, bool with_code);

// A super tab's panes: the collection with the code window beside it, the timeline below. Main thread.
class work_area : public QWidget {
    Q_OBJECT
  public:
    // Takes the panes over. One that is deleted leaves its room to the others.
    work_area(QWidget* collection, QWidget* code, QWidget* timeline, QWidget* parent = nullptr);

    // The width at which the code window shows all it has.
    void set_code_content_width(int width);
    void set_shows_code(bool shows);
    // Without pictures the collection's pane is a line across, and the timeline has the room below it, beside
    // the code window.
    void set_shows_pictures(bool shows);
    // Before room is taken below for a while: what is above the timeline stays where it is and as it is,
    // until the room is given back after `holds` was set to false.
    void hold_upper(bool holds);

    // The sizes the user gave the panes; nothing while they are of the window's own choosing.
    property_dictionary sizes() const;
    void set_sizes(const property_dictionary& stored);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void arrange();

    QPointer<QWidget> collection_;
    QPointer<QWidget> code_;
    QPointer<QWidget> timeline_;
    pane_splitter* rows_;
    pane_splitter* columns_;
    int code_content_width_;
    bool shows_code_ = true;
    bool shows_pictures_ = true;
    bool holds_upper_ = false;
    int held_height_ = -1;            // of what is above the timeline; -1: it is not held
    property_dictionary kept_sizes_;  // of the panes with pictures, while there are none
};

}  // namespace vistels
