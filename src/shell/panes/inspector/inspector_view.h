// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <functional>
#include <string>
#include <vector>

#include "app/event/clip_view.h"
#include "shell/kit/pane.h"
#include "util/signal.h"

class QLabel;
class QScrollArea;
class QVBoxLayout;

namespace vistels {

class clip_title_block;
class filter_entry;
class filter_field;
class filter_section;
class icon_button;
class note_field;
class pane_header;
class qualifier_chips;
class qualifier_entry;
class qualifier_fields;
class star_row;
class swatch_row;
class time_field;

// What is known of the clips that are selected in a view, to be looked at and changed. Several clips show the
// values that they share. Changes go to the document as edits; a refused one is told by `failed`. Main
// thread.
class inspector_view : public QWidget, public pane {
    Q_OBJECT
  public:
    explicit inspector_view(QWidget* parent = nullptr);

    pane_kind kind() const override { return pane_kind::inspector; }
    QWidget& widget() override { return *this; }

    // Null shows nothing. The view must outlive its being shown; `now` gives the collection time.
    void set_view(clip_view* view, std::function<double()> now);
    // The selection changed.
    void refresh();
    // A filter is in force or not, hides what it does not let through or not, or judged anew.
    void show_filter(bool is_on, bool hides);
    // What is typed into the filter's field; must outlive the view's use. Null: none.
    void set_filter(filter_entry* entry);
    filter_field& filter();

  Q_SIGNALS:
    void play_asked(double start, double end);
    void failed(const QString& message);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QWidget* build_body();
    void add_section(QVBoxLayout& column, const QString& title, QLabel** fact = nullptr);
    void build_times(QVBoxLayout& column);
    void build_look(QVBoxLayout& column);
    void connect_parts();
    bool concerns_shown(const change_set& change) const;
    std::vector<clip_place> seen_of(const std::vector<clip_place>& all) const;
    QString verdict_on(const std::vector<clip_place>& clips) const;
    void show_chips(const std::vector<clip_place>& clips);
    void show_qualifier();
    void show_clips(const std::vector<clip_place>& clips);
    void show_title(const std::vector<clip_place>& clips);
    void show_values(const std::vector<clip_place>& clips);
    // Whether it was done; a refused one is told.
    bool apply(timeline_edit edit);
    bool apply(result<timeline_edit> planned);
    void ask_times(double start, double end);
    void trim_here(bool start);

    clip_view* view_ = nullptr;
    timeline_document* document_ = nullptr;  // of the view
    std::function<double()> now_;
    connection changed_;
    std::vector<std::string> selected_;  // hidden ones too
    std::vector<std::string> clips_;     // that are shown
    std::vector<shared_text> rows_;
    double start_ = 0;
    double end_ = 0;
    bool is_filtered_ = false;
    bool hides_ = false;

    pane_header* header_;
    filter_section* filter_;
    QLabel* empty_;
    QScrollArea* scroll_;
    clip_title_block* title_;
    time_field* start_field_;
    time_field* end_field_;
    QLabel* length_;
    icon_button* start_here_;
    icon_button* end_here_;
    swatch_row* swatches_;
    star_row* stars_;
    QLabel* qualifier_count_ = nullptr;
    qualifier_chips* chips_;
    qualifier_fields* qualifier_;
    qualifier_entry* added_;
    note_field* note_;
    QWidget* note_section_;
};

}  // namespace vistels
