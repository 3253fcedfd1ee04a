// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/timeline/timeline_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "app/event/clip_filtering.h"
#include "shell/filter/filter_count.h"
#include "shell/filter/filter_entry.h"
#include "shell/filter/filter_field.h"
#include "shell/filter/filter_parts.h"
#include "shell/kit/controls.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/pane_header.h"
#include "shell/kit/theme.h"
#include "shell/panes/timeline/timeline_canvas.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_names.h"
#include "shell/panes/timeline/timeline_parts.h"
#include "shell/panes/timeline/timeline_state.h"

namespace vistels {
namespace {

constexpr double button_zoom = 1.5;

}  // namespace

timeline_view::timeline_view(QWidget* parent) : QWidget(parent), state_(std::make_unique<timeline_state>()) {
    setObjectName(QStringLiteral("timeline_view"));
    setAccessibleName(tr("Timeline pane"));
    build_header();
    names_ = new timeline_names(*state_, this);
    canvas_ = new timeline_canvas(*state_, this);
    note_ = new no_clip_passes_note(canvas_);
    connect(note_, &no_clip_passes_note::clear_asked, this, &timeline_view::clear_filter_asked);
    whole_ = new timeline_whole_event(*state_, this);
    rows_bar_ = new QScrollBar(Qt::Vertical, this);
    rows_bar_->setObjectName(QStringLiteral("timeline_rows_bar"));
    rows_bar_->setAccessibleName(tr("Scroll rows"));
    connect(rows_bar_, &QScrollBar::valueChanged, this, [this](int y) { state_->scroll_rows_to(y); });
    connections_.push_back(state_->scale_changed.connect([this] { follow_scale(); }));
    connections_.push_back(state_->rows_changed.connect([this] { follow_rows(); }));
    connections_.push_back(state_->rows_scrolled.connect([this] { rows_bar_->setValue(state_->first_y()); }));
    connections_.push_back(state_->selection_changed.connect([this] {
        show_counts();
        Q_EMIT selection_changed();
    }));
    connections_.push_back(
        state_->refused.connect([this](const failure& why) { Q_EMIT failed(words_of(why)); }));
    connect(canvas_, &timeline_canvas::menu_asked, this, &timeline_view::menu_asked);
    connect(canvas_, &timeline_canvas::play_asked, this, &timeline_view::play_asked);
}

timeline_view::~timeline_view() {
    // The parts listen to the state, which goes before Qt deletes them.
    delete canvas_;
    delete names_;
    delete whole_;
}

void timeline_view::build_header() {
    header_ = new pane_header(QStringLiteral("timeline"), tr("Timeline"), this);
    header_->setFixedHeight(timeline_sizes.pane_header_with_filter_height);
    build_filter();
    const auto add = [this](const char* icon, const char* name, const QString& tip) {
        auto* button = new icon_button(QLatin1String(icon), tip, this);
        button->setObjectName(QLatin1String(name));
        header_->add_control(button);
        return button;
    };
    draw_ = add("pen", "timeline_draw", tr("Draw clips by a drag"));
    draw_->setCheckable(true);
    connect(draw_, &QAbstractButton::toggled, this, &timeline_view::draws_asked);
    snap_ =
        add("snap", "timeline_snap", tr("Snap to the playhead and to clips' edges; not while Ctrl is held"));
    snap_->setCheckable(true);
    snap_->setChecked(state_->snaps());
    connect(snap_, &QAbstractButton::toggled, this, [this](bool on) { state_->set_snaps(on); });
    connect(add("zoom-out", "timeline_zoom_out", tr("Show more (Ctrl+wheel)")), &QAbstractButton::clicked,
            this, &timeline_view::zoom_out);
    zoom_ = new value_slider(this);
    zoom_->setObjectName(QStringLiteral("timeline_zoom"));
    zoom_->setAccessibleName(tr("Zoom"));
    zoom_->setToolTip(tr("Zoom"));
    zoom_->set_has_handle(true);
    zoom_->setFixedWidth(timeline_sizes.zoom_slider_width);
    header_->add_control(zoom_);
    connect(zoom_, &value_slider::moved, this, [this](double share) {
        state_->set_scale(scale_with_share(state_->reach(), state_->scale(), share, state_->zoom_anchor()));
    });
    connect(add("zoom-in", "timeline_zoom_in", tr("Show less (Ctrl+wheel)")), &QAbstractButton::clicked, this,
            &timeline_view::zoom_in);
    connect(add("fit", "timeline_fit", tr("Show the whole event")), &QAbstractButton::clicked, this,
            &timeline_view::zoom_to_fit);
}

void timeline_view::build_filter() {
    const theme_metrics& metrics = theme::current().metrics;
    filter_ = new filter_field(QStringLiteral("timeline_filter"), header_);
    filter_->set_message_ground(this);
    count_ = new filter_count(header_);
    count_->setObjectName(QStringLiteral("timeline_filter.count"));
    filter_mode_place_ = new QWidget(header_);
    filter_mode_place_->setObjectName(QStringLiteral("timeline_filter.mode"));
    auto* mode = new QHBoxLayout(filter_mode_place_);
    mode->setContentsMargins(metrics.padding, 0, metrics.padding, 0);
    mode_ = new filter_mode_control(filter_mode_place_);
    mode->addWidget(mode_);
    filter_mode_place_->hide();
    connect(mode_, &filter_mode_control::hides_asked, this, &timeline_view::hides_asked);
    connect(mode_, &filter_mode_control::play_asked, this, &timeline_view::play_passing_asked);
    selected_ = make_label({}, type_step::secondary, QStringLiteral("muted"), header_);
    selected_->setObjectName(QStringLiteral("timeline_filter.selected"));
    selected_->hide();
    header_->add_lead_control(filter_);
    header_->add_lead_control(count_);
    header_->add_lead_control(filter_mode_place_);
    header_->add_lead_control(selected_);
}

void timeline_view::set_filter(filter_entry* entry) {
    filter_->set_entry(entry);
    count_->follow(entry);
}

void timeline_view::set_timeline(clip_view* view, transport* playing) {
    state_->set_timeline(view, playing);
    show_counts();
}

void timeline_view::show_filter(const filter_standing& standing, bool verdicts_changed) {
    const bool is_on = !standing.text.empty();
    if (verdicts_changed) state_->take_verdicts();
    state_->set_is_filtered(is_on);
    filter_mode_place_->setVisible(is_on);
    mode_->set_can_play(standing.passing > 0);
    note_->set_total(standing.total);
    note_->setVisible(is_on && standing.passing == 0 && standing.total > 0);
    place_note();
}

void timeline_view::set_hides_filtered_out(bool hides) {
    state_->set_hides_filtered_out(hides);
    mode_->set_hides(hides);
}

void timeline_view::show_playing(std::size_t playing, std::size_t total) {
    plays_passing_ = playing > 0;
    mode_->set_playing(playing, total);
    show_counts();
}

void timeline_view::place_note() {
    if (note_->isHidden()) return;
    note_->place_in(canvas_->rect().adjusted(0, timeline_sizes.ruler_height, 0, 0));
}

void timeline_view::set_reach(double start_seconds, double end_seconds) {
    state_->set_reach(start_seconds, end_seconds);
}

void timeline_view::tick() {
    state_->tick();
}
void timeline_view::go_to_clip(const std::string& clip) {
    state_->go_to(clip);
}
void timeline_view::select(const std::vector<std::string>& clips) {
    state_->select(clips);
}
void timeline_view::select_all() {
    state_->select_all();
}
void timeline_view::select_passing() {
    state_->select_passing();
}
void timeline_view::set_unsaved_growing(std::vector<clip_place> growing) {
    state_->set_unsaved_growing(std::move(growing));
}
void timeline_view::delete_selected() {
    state_->delete_selected();
}
void timeline_view::merge_selected() {
    state_->merge_selected();
}
void timeline_view::duplicate_selected() {
    state_->duplicate_selected();
}
void timeline_view::split_selected() {
    state_->split_selected();
}
void timeline_view::trim_selected(bool start, double seconds) {
    state_->trim_selected(start, seconds);
}
void timeline_view::zoom_in() {
    state_->zoom_in_place(button_zoom);
}
void timeline_view::zoom_out() {
    state_->zoom_in_place(1 / button_zoom);
}
void timeline_view::zoom_to_fit() {
    state_->zoom_to_fit();
}
void timeline_view::compact_rows() {
    names_->compact_chosen();
}
void timeline_view::expand_rows() {
    names_->expand_chosen();
}

void timeline_view::follow_scale() {
    zoom_->set_value(zoom_share(state_->reach(), state_->scale()));
}

void timeline_view::follow_rows() {
    show_counts();
    place_parts();
}

void timeline_view::show_counts() {
    const std::size_t selected = state_->selected_count();
    const bool has_room = width() >= timeline_sizes.selected_count_from;
    selected_->setText(tr("%1 selected").arg(selected));
    // The clip that plays is the selected one.
    selected_->setVisible(selected > 0 && has_room && !plays_passing_);
}

void timeline_view::place_parts() {
    const theme_metrics& metrics = theme::current().metrics;
    const int head = timeline_sizes.pane_header_with_filter_height;
    const int foot = timeline_sizes.whole_event_height + 2 * metrics.grid;
    const int middle =
        std::max(timeline_sizes.ruler_height + timeline_sizes.row_least_height, height() - head - foot);
    const int rows_height = middle - timeline_sizes.ruler_height;
    header_->setGeometry(0, 0, width(), head);
    names_->setGeometry(0, head, timeline_sizes.row_names_width, middle);
    canvas_->setGeometry(timeline_sizes.row_names_width, head,
                         std::max(1, width() - timeline_sizes.row_names_width), middle);
    whole_->setGeometry(0, head + middle, width(), foot);
    const int too_much = state_->rows().total_height() - rows_height;
    const int bar = rows_bar_->sizeHint().width();
    rows_bar_->setGeometry(width() - bar, head + timeline_sizes.ruler_height, bar, rows_height);
    rows_bar_->setRange(0, std::max(0, too_much));
    rows_bar_->setPageStep(std::max(1, rows_height));
    rows_bar_->setSingleStep(timeline_sizes.row_height);
    rows_bar_->setValue(state_->first_y());
    rows_bar_->setVisible(too_much > 0);
    place_note();
}

void timeline_view::resizeEvent(QResizeEvent*) {
    state_->set_compact(window()->height() < timeline_sizes.compact_below_height);
    place_parts();
    show_counts();
}

void timeline_view::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), theme::current().pane);
}

}  // namespace vistels
