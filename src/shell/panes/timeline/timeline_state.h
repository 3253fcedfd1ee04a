// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/event/clip_view.h"
#include "shell/panes/timeline/timeline_rows.h"
#include "shell/panes/timeline/timeline_scale.h"
#include "timeline/files/last_clip_end.h"
#include "timeline/files/timeline_document.h"
#include "util/result.h"
#include "util/signal.h"
#include "util/transport.h"

namespace vistels {

// What the parts of a timeline pane have in common: the rows as drawn, the scale, the playhead, the view that
// is shown. Turns the user's wishes into a selection, edits and seeks. Main thread.
class timeline_state {
  public:
    timeline_state();

    // Null: none. Both must outlive their use here.
    void set_timeline(clip_view* view, transport* playing);
    bool has_timeline() const { return document_ != nullptr; }

    // The scale, and what it may show. The width is that of the clips' part.
    const timeline_scale& scale() const { return scale_; }
    timeline_reach reach() const;
    void set_width(double pixels);
    double width() const { return width_; }
    void set_reach(double start_seconds, double end_seconds);
    // As near to it as the reach allows. A scale set by the user ends the following of the playhead until it
    // is in view again.
    void set_scale(const timeline_scale& wanted);
    void zoom(double factor, double x);
    // About the playhead when it is in view, else about the middle.
    void zoom_in_place(double factor);
    double zoom_anchor() const;
    void zoom_to_fit();
    void scroll_to(double seconds);

    const timeline_rows& rows() const { return rows_; }
    void set_compact(bool compact);
    // Clips that do not pass the filter are left out instead of dimmed. What is selected of them stays so,
    // but is neither in selected() nor changed by a command until it is seen again.
    void set_hides_filtered_out(bool hides);
    bool hides_filtered_out() const { return display_.hides_filtered_out; }
    // Whether a filter is in force, for what is shown only then.
    void set_is_filtered(bool filtered);
    bool is_filtered() const { return is_filtered_; }
    // Only while there is a timeline.
    const clip_verdicts& verdicts() const { return view_->verdicts(); }
    // Clips that grow without being on the timeline.
    void set_unsaved_growing(std::vector<clip_place> growing);
    // Of the buttons of the code window.
    void set_triggers(std::vector<button_trigger> all);
    // What the row's clock shows now; nothing when it has none.
    std::optional<double> clock_of_row(const timeline_row& row) const;
    // The filter judged anew. Reads only the rows in which that made a difference.
    void take_verdicts();
    int first_y() const { return first_y_; }  // pixels that are scrolled out above
    void set_rows_height(int pixels);         // the height of the rows' part
    int rows_height() const { return rows_height_; }
    void scroll_rows_to(int y);

    double playhead() const { return playhead_; }
    bool is_playing() const { return playing_ != nullptr && playing_->is_playing(); }
    // Reads the transport.
    void tick();
    void seek(double seconds);
    // For a hand that drags the playhead; a seek is its end.
    void scrub(double seconds);

    // The UUIDs of what is selected and not hidden, in row order.
    std::vector<std::string> selected() const;
    std::size_t selected_count() const;
    // By UUID; unknown ones are passed over.
    void select(const std::vector<std::string>& clips);
    void toggle(const std::string& clip);
    // From the clip that was selected last up to this one, when both are in one row.
    void extend_to(const std::string& clip);
    // All clips that are not hidden.
    void select_all();
    void select_passing();
    void read_again();
    void go_to(const std::string& clip);
    // Selects the clip and scrolls it into view; the playhead stays.
    void show(const std::string& clip);
    // The clip that passes the filter and starts next after (direction > 0) or before the playhead; those
    // that start together follow each other in row order, from the selected one on. Empty: none.
    std::string passing_clip_beside(int direction) const;

    // Refused edits leave everything as it is; `refused` tells why.
    void delete_selected();
    void merge_selected();
    // The copies stand behind the selected clips and are selected in their place.
    void duplicate_selected();
    void split_selected();
    // Moves the start or the end of the selected clips to `seconds`.
    void trim_selected(bool start, double seconds);
    // Parts those selected clips that lie at the playhead.
    void split_at_playhead();

    // What drags end in. Rows are counted as they are shown, down from where each clip is.
    void move(const std::vector<std::string>& clips, double seconds, int rows);
    // The copies are selected.
    void copy(const std::vector<std::string>& clips, double later_by, int rows);
    void trim_edges(const std::vector<std::string>& clips, double starts_by, double ends_by);
    // The joint of two clips that touch.
    void roll(const std::string& before, const std::string& after, double seconds);
    // A new clip, which is selected.
    void draw(const shared_text& row, double start, double end);
    // Whether the pictures may show another moment while a hand drags: nothing plays or grows.
    bool may_show_moment() const;

    // The selected clips, to be pasted anywhere; nothing when none is, or it was refused.
    std::optional<property_dictionary> copied();
    // So that the earliest starts at the playhead; they are selected.
    void paste(const property_dictionary& clips);

    // Only while there is a timeline.
    const sxy_DATA_root& timeline() const { return document_->timeline(); }
    edit_stamp stamp_now() const;
    // Makes a planned edit; false when it was refused, which is told, or would change nothing.
    bool make(result<timeline_edit> planned) { return apply(std::move(planned)); }
    bool is_selected(const sxy_CLIP& clip) const { return view_->selection().contains(clip); }
    // The clips of those rows that are not hidden.
    void select_rows(const std::vector<shared_text>& rows);

    // Makes one row of two or more, named after them, which expand_rows() parts again. The rows that came of
    // it; none when it was refused.
    std::vector<shared_text> compact_rows(const std::vector<shared_text>& rows);
    std::vector<shared_text> expand_rows(const std::vector<shared_text>& rows);

    bool snaps() const { return snaps_; }
    void set_snaps(bool snaps);
    // What moves does not hold itself.
    struct snap_sides {
        std::string moving_clip;
        bool selected_move = false;
        std::optional<double> playhead = std::nullopt;  // where it counts as; none: where it is
    };
    // The nearest of the playhead, the edges of other clips and, where they lie far apart, whole seconds;
    // nothing when none is near.
    std::optional<double> snap_to(double seconds, const snap_sides& sides) const;

    signal<> scale_changed;
    signal<> rows_changed;  // clips, marks, live ones, row positions
    signal<> rows_scrolled;
    signal<> playhead_moved;
    signal<> selection_changed;
    signal<const failure&> refused;

  private:
    bool apply(result<timeline_edit> planned);
    // The rows that the edit makes; none when it was refused.
    std::vector<shared_text> apply_to_rows(result<timeline_edit> planned);
    void apply_and_select(result<timeline_edit> planned);
    std::vector<shared_text> row_order() const;
    void take_change(const change_set& change);
    void read_rows();
    void grow_reach();
    bool apply(timeline_edit edit);
    void take_selection(const clip_selection::rows& touched);
    void follow_playhead();

    clip_view* view_ = nullptr;
    timeline_document* document_ = nullptr;  // of the view
    std::optional<last_clip_end> last_end_;  // of the document
    transport* playing_ = nullptr;
    timeline_scale scale_;
    double width_ = 1;
    double start_seconds_ = 0;
    double given_start_seconds_ = 0;
    double given_end_seconds_ = 0;
    double end_seconds_ = 0;
    bool fits_ = true;  // the whole reach is in view and stays so
    timeline_rows rows_;
    rows_display display_;
    bool is_filtered_ = false;
    int first_y_ = 0;
    int rows_height_ = 0;
    double playhead_ = 0;
    bool was_playing_ = false;
    bool follows_ = true;
    bool snaps_ = true;
    connection changed_;
    connection selection_;
    connection theme_changed_;
};

}  // namespace vistels
