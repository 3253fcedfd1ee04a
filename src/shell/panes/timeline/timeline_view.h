// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "shell/kit/pane.h"
#include "util/signal.h"

class QLabel;
class QMenu;
class QScrollBar;

namespace vistels {

class clip_view;
class filter_mode_control;
class filter_entry;
class filter_count;
class filter_field;
class icon_button;
class no_clip_passes_note;
class pane_header;
class timeline_canvas;
class timeline_names;
class timeline_state;
class timeline_whole_event;
class transport;
class value_slider;
struct change_set;
struct clip_place;
struct filter_standing;

// The timeline pane: header with the zoom, row names, ruler, clips, playhead and the whole event below. It
// shows a view of a timeline, selects in it, sends edits to the document and moves a transport. Main thread.
class timeline_view final : public QWidget, public pane {
    Q_OBJECT
  public:
    explicit timeline_view(QWidget* parent = nullptr);
    ~timeline_view() override;

    pane_kind kind() const override { return pane_kind::timeline; }
    QWidget& widget() override { return *this; }

    // Shows another timeline, played by `playing`; null for none. Both must outlive their use here.
    void set_timeline(clip_view* view, transport* playing);
    // Between which seconds there is a picture: at least this is within reach of the scroll bar.
    void set_reach(double start_seconds, double end_seconds);
    // Takes in the transport's time; called at every display tick, costs nothing while it stands still.
    void tick();

    // Moves the playhead to the clip's start and the clip into view, and selects it.
    void go_to_clip(const std::string& clip);
    void select(const std::vector<std::string>& clips);
    // All clips that are seen; only those that pass the filter.
    void select_all();
    void select_passing();
    // Deletes what is selected by one edit.
    void delete_selected();
    void merge_selected();
    void duplicate_selected();
    void split_selected();
    void split_at_playhead();
    // The selected clips onto the clipboard, those there to the playhead. Cut ones are deleted.
    void copy_selected();
    void cut_selected();
    void paste();
    // The pen: a drag beside clips draws one.
    void set_draws(bool draws);
    void add_row();
    // What is chosen for the selected clips: stars, colour, row.
    void add_to_menu(QMenu& menu);
    // Moves the start or the end of the selected clips to `seconds`.
    void trim_selected(bool start, double seconds);
    void zoom_in();
    void zoom_out();
    // The whole reach in view.
    void zoom_to_fit();
    // The rows chosen among the names: shown as one, or as they were before that.
    void compact_rows();
    void expand_rows();
    // Clips that grow without being on the timeline.
    void set_unsaved_growing(std::vector<clip_place> growing);
    // What the filter lets through. With `verdicts_changed` these are read anew.
    void show_filter(const filter_standing& standing, bool verdicts_changed);
    // Clips that are filtered out are left out instead of dimmed.
    void set_hides_filtered_out(bool hides);
    // Number `playing` (from 1) of the `total` clips that pass plays; 0: none does.
    void show_playing(std::size_t playing, std::size_t total);

    timeline_state& state() { return *state_; }
    pane_header& header() { return *header_; }
    // In the header, with the count beside it; it does nothing while it has no entry (null).
    filter_field& filter() { return *filter_; }
    void set_filter(filter_entry* entry);

  Q_SIGNALS:
    void selection_changed();
    // For the selected clips, or for what is beside them.
    void menu_asked(QPoint at, bool for_clips);
    void play_asked();
    void draws_asked(bool draws);
    void hides_asked(bool hides);
    void clear_filter_asked();
    void play_passing_asked(bool plays);
    // An edit was refused; the message is fit for the user.
    void failed(const QString& message);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void build_header();
    void build_filter();
    void place_parts();
    void follow_scale();
    void follow_rows();
    void show_counts();
    void place_note();

    std::unique_ptr<timeline_state> state_;
    pane_header* header_ = nullptr;
    filter_field* filter_ = nullptr;
    filter_count* count_ = nullptr;
    QWidget* filter_mode_place_ = nullptr;
    QLabel* selected_ = nullptr;
    icon_button* draw_ = nullptr;
    icon_button* snap_ = nullptr;
    value_slider* zoom_ = nullptr;
    filter_mode_control* mode_ = nullptr;
    timeline_names* names_ = nullptr;
    timeline_canvas* canvas_ = nullptr;
    no_clip_passes_note* note_ = nullptr;
    timeline_whole_event* whole_ = nullptr;
    QScrollBar* rows_bar_ = nullptr;
    bool plays_passing_ = false;
    std::vector<connection> connections_;
};

}  // namespace vistels
