// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "util/signal.h"

class QScrollBar;

namespace vistels {

class icon_button;
class pane_header;
class timeline_canvas;
class timeline_document;
class timeline_names;
class timeline_state;
class timeline_whole_event;
class transport;
class value_slider;
struct change_set;

// The timeline pane: header with the zoom, row names, ruler, clips, playhead and the whole event below. It
// shows a document, sends edits to it and moves a transport. What is selected is kept as the clips' own
// marks. Main thread.
class timeline_view final : public QWidget {
    Q_OBJECT
  public:
    explicit timeline_view(QWidget* parent = nullptr);
    ~timeline_view() override;

    // Shows another timeline, played by `playing`; null for none. Both must outlive their use here.
    void set_timeline(timeline_document* document, transport* playing);
    // Between which seconds there is a picture: at least this is within reach of the scroll bar.
    void set_reach(double start_seconds, double end_seconds);
    // Takes in the transport's time; called at every display tick, costs nothing while it stands still.
    void tick();

    // Moves the playhead to the clip's start and the clip into view, and selects it.
    void go_to_clip(const std::string& clip);
    void select(const std::vector<std::string>& clips);
    void select_all();
    // Deletes what is selected by one edit.
    void delete_selected();
    void merge_selected();
    void duplicate_selected();
    void split_selected();
    // Moves the start or the end of the selected clips to `seconds`.
    void trim_selected(bool start, double seconds);
    void zoom_in();
    void zoom_out();
    // The whole reach in view.
    void zoom_to_fit();
    // The rows chosen among the names: shown as one, or as they were before that.
    void compact_rows();
    void expand_rows();
    // Reads the clips' marks (passing, selected) anew after someone else has set them.
    void refresh_marks();

    timeline_state& state() { return *state_; }
    pane_header& header() { return *header_; }

  Q_SIGNALS:
    void selection_changed();
    // An edit was refused; the message is fit for the user.
    void failed(const QString& message);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void build_header();
    void place_parts();
    void follow_scale();
    void follow_rows();
    void show_counts();

    std::unique_ptr<timeline_state> state_;
    pane_header* header_ = nullptr;
    icon_button* snap_ = nullptr;
    value_slider* zoom_ = nullptr;
    timeline_names* names_ = nullptr;
    timeline_canvas* canvas_ = nullptr;
    timeline_whole_event* whole_ = nullptr;
    QScrollBar* rows_bar_ = nullptr;
    std::vector<connection> connections_;
};

}  // namespace vistels
