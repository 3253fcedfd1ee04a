// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/inspector/inspector_view.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>
#include <iterator>
#include <optional>

#include "shell/filter/filter_section.h"
#include "shell/kit/controls.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/inspector_parts.h"
#include "shell/kit/pane_header.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/inspector/clip_title_block.h"
#include "shell/panes/inspector/note_field.h"
#include "shell/panes/inspector/qualifier_entry.h"
#include "shell/panes/inspector/qualifier_fields.h"
#include "timeline/edits/clip_edits.h"
#include "timeline/edits/clip_operations.h"

namespace vistels {

namespace {

// The value that all clips have; nothing when they differ.
template <class Get>
auto shared_value(const std::vector<clip_place>& clips, Get get)
    -> std::optional<decltype(get(clips.front()))> {
    if (clips.empty()) return {};
    auto first = get(clips.front());
    const bool same =
        std::all_of(clips.begin(), clips.end(), [&](const clip_place& one) { return get(one) == first; });
    if (!same) return {};
    return first;
}

// The colour that a clip is shown in.
std::optional<colour> shown_colour(const sxy_DATA_root& timeline, const clip_place& place) {
    if (const auto own = place.clip->col()) return own;
    const auto row = timeline.row(place.row);
    return row ? row->col() : std::nullopt;
}

std::vector<qualifier_chip> chips_of(const sxy_CLIP& clip, const clip_verdicts& verdicts) {
    std::vector<qualifier_chip> chips;
    for (const auto& one : *clip.qualifiers()) {
        chips.push_back({one.uuid(), QString::fromStdString(one.name().str()),
                         QString::fromStdString(one.category().str()), verdicts.marks(one)});
    }
    return chips;
}

}  // namespace

inspector_view::inspector_view(QWidget* parent)
    : QWidget(parent),
      header_(new pane_header({}, tr("Inspector"), this)),
      filter_(new filter_section(QStringLiteral("inspector_filter"), this)),
      empty_(make_label(tr("No clip is selected.\nClick a clip on the timeline to see and change it."),
                        type_step::secondary, QStringLiteral("muted"), this)),
      scroll_(new QScrollArea(this)),
      title_(new clip_title_block),
      start_field_(new time_field),
      end_field_(new time_field),
      length_(make_label({}, type_step::body, {}, nullptr)),
      start_here_(new icon_button(QStringLiteral("mark-in"), tr("Start where the playhead is (I)"))),
      end_here_(new icon_button(QStringLiteral("mark-out"), tr("End where the playhead is (O)"))),
      swatches_(new swatch_row),
      stars_(new star_row),
      chips_(new qualifier_chips),
      qualifier_(new qualifier_fields),
      added_(new qualifier_entry),
      note_(new note_field),
      note_section_(new QWidget) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("inspector"));
    setAccessibleName(tr("Inspector"));
    empty_->setWordWrap(true);
    empty_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    empty_->setContentsMargins(metrics.wide_padding, metrics.wide_padding, metrics.wide_padding, 0);
    scroll_->setWidgetResizable(true);
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setFocusPolicy(Qt::NoFocus);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll_->setWidget(build_body());

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(header_);
    column->addWidget(filter_);
    column->addWidget(empty_, 1);
    column->addWidget(scroll_, 1);
    connect_parts();
    refresh();
}

QWidget* inspector_view::build_body() {
    const theme_metrics& metrics = theme::current().metrics;
    auto* body = new QWidget;
    body->setProperty("kind", "pane");
    auto* column = new QVBoxLayout(body);
    column->setContentsMargins(0, 0, 0, metrics.wide_padding);
    column->setSpacing(0);
    title_->setObjectName(QStringLiteral("inspector.title"));
    column->addWidget(title_);
    build_times(*column);
    build_look(*column);
    add_section(*column, tr("Qualifiers"), &qualifier_count_);
    chips_->setObjectName(QStringLiteral("inspector.qualifiers"));
    auto* chips = new QVBoxLayout;
    chips->setContentsMargins(metrics.wide_padding, 0, metrics.wide_padding, metrics.wide_padding);
    chips->addWidget(chips_);
    chips->addWidget(qualifier_);
    added_->setObjectName(QStringLiteral("inspector.add_qualifier"));
    added_->setAccessibleName(tr("Add a qualifier"));
    added_->setPlaceholderText(tr("Add a qualifier"));
    added_->setFixedHeight(metrics.field_height);
    chips->addWidget(added_);
    column->addLayout(chips);

    auto* note = new QVBoxLayout(note_section_);
    note->setContentsMargins(0, 0, 0, 0);
    note->setSpacing(0);
    add_section(*note, tr("Note"));
    note_->setObjectName(QStringLiteral("inspector.note"));
    auto* field = new QVBoxLayout;
    field->setContentsMargins(metrics.wide_padding, 0, metrics.wide_padding, 0);
    field->addWidget(note_);
    note->addLayout(field);
    column->addWidget(note_section_);
    column->addStretch(1);
    return body;
}

void inspector_view::add_section(QVBoxLayout& column, const QString& title, QLabel** fact) {
    const theme_metrics& metrics = theme::current().metrics;
    auto* line = new QFrame;
    line->setFrameShape(QFrame::NoFrame);
    line->setFixedHeight(metrics.line);
    line->setAutoFillBackground(true);
    line->setBackgroundRole(QPalette::Mid);
    column.addWidget(line);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(metrics.wide_padding, metrics.padding, metrics.wide_padding, metrics.padding);
    row->addWidget(make_label(title, type_step::secondary_strong, QStringLiteral("muted"), nullptr));
    row->addStretch(1);
    if (fact) {
        *fact = make_label({}, type_step::secondary_strong, QStringLiteral("muted"), nullptr);
        row->addWidget(*fact);
    }
    column.addLayout(row);
}

void inspector_view::build_times(QVBoxLayout& column) {
    const theme_metrics& metrics = theme::current().metrics;
    add_section(column, tr("Times"));
    auto* form = new QGridLayout;
    form->setContentsMargins(metrics.wide_padding, 0, metrics.wide_padding, metrics.wide_padding);
    form->setHorizontalSpacing(metrics.padding);
    form->setVerticalSpacing(metrics.grid);
    form->setColumnMinimumWidth(0, metrics.inspector_label_width);
    form->setColumnStretch(1, 1);
    const auto add_row = [&](int row, const QString& words, QWidget* field, QWidget* button) {
        auto* label = make_label(words, type_step::secondary, QStringLiteral("muted"), nullptr);
        label->setFixedHeight(metrics.field_height);
        form->addWidget(label, row, 0);
        form->addWidget(field, row, 1);
        if (button) form->addWidget(button, row, 2);
        field->setAccessibleName(words);
    };
    start_field_->setObjectName(QStringLiteral("inspector.start"));
    end_field_->setObjectName(QStringLiteral("inspector.end"));
    length_->setObjectName(QStringLiteral("inspector.length"));
    start_here_->setObjectName(QStringLiteral("inspector.start_here"));
    end_here_->setObjectName(QStringLiteral("inspector.end_here"));
    start_here_->set_framed(true);
    end_here_->set_framed(true);
    add_row(0, tr("Start"), start_field_, start_here_);
    add_row(1, tr("End"), end_field_, end_here_);
    add_row(2, tr("Length"), length_, nullptr);
    column.addLayout(form);
}

void inspector_view::build_look(QVBoxLayout& column) {
    const theme_metrics& metrics = theme::current().metrics;
    add_section(column, tr("Look"));
    auto* look = new QVBoxLayout;
    look->setContentsMargins(metrics.wide_padding, 0, metrics.wide_padding, metrics.wide_padding);
    look->setSpacing(metrics.grid);
    swatches_->setObjectName(QStringLiteral("inspector.colour"));
    stars_->setObjectName(QStringLiteral("inspector.stars"));
    look->addWidget(swatches_);
    auto* row = new QHBoxLayout;
    row->setSpacing(metrics.padding);
    auto* label = make_label(tr("Stars"), type_step::secondary, QStringLiteral("muted"), nullptr);
    label->setFixedWidth(metrics.inspector_label_width);
    row->addWidget(label);
    row->addWidget(stars_);
    row->addStretch(1);
    look->addLayout(row);
    column.addLayout(look);
}

void inspector_view::connect_parts() {
    connect(title_, &clip_title_block::play_asked, this, [this] { Q_EMIT play_asked(start_, end_); });
    connect(start_field_, &time_field::seconds_asked, this, [this](double s) { ask_times(s, end_); });
    connect(end_field_, &time_field::seconds_asked, this, [this](double s) { ask_times(start_, s); });
    connect(start_here_, &icon_button::clicked, this, [this] { trim_here(true); });
    connect(end_here_, &icon_button::clicked, this, [this] { trim_here(false); });
    connect(stars_, &star_row::stars_asked, this, [this](int stars) {
        if (document_) apply(plan_clip_stars(document_->timeline(), clips_, stars));
    });
    connect(swatches_, &swatch_row::colour_asked, this, [this](const std::optional<colour>& chosen) {
        if (document_) apply(plan_clip_colour(document_->timeline(), clips_, chosen));
    });
    connect(chips_, &qualifier_chips::remove_asked, this, [this](const QString& qualifier) {
        if (!document_ || clips_.size() != 1) return;
        apply(plan_remove_qualifier(document_->timeline(), clips_.front(), qualifier.toStdString()));
    });
    connect(chips_, &qualifier_chips::chosen_changed, this, &inspector_view::show_qualifier);
    connect(qualifier_, &qualifier_fields::words_asked, this, [this](const qualifier_words& words) {
        if (!document_ || clips_.size() != 1) return;
        apply(plan_change_qualifier(document_->timeline(), clips_.front(), chips_->chosen(), words));
    });
    connect(added_, &qualifier_entry::qualifier_asked, this,
            [this](const QString& name, const QString& category) {
                if (!document_ || clips_.empty()) return;
                apply(plan_add_qualifier(document_->timeline(), clips_, name.toStdString(),
                                         category.toStdString(), now_()));
            });
    note_->set_acceptor([this](const std::string& clip, const std::string& text) {
        return document_ && apply(plan_note(document_->timeline(), clip, text));
    });
}

void inspector_view::set_view(clip_view* view, std::function<double()> now) {
    note_->set_note({}, {});  // what is being typed belongs to the one that was shown
    changed_.disconnect();
    view_ = view;
    document_ = view ? &view->document() : nullptr;
    added_->set_known([this] {
        return document_ ? known_qualifiers(document_->timeline()) : qualifier_entry::known_list();
    });
    now_ = std::move(now);
    if (document_) {
        changed_ = document_->changed.connect([this](const change_set& change) {
            if (concerns_shown(change)) refresh();
        });
    }
    refresh();
}

void inspector_view::set_filter(filter_entry* entry) {
    filter_->set_entry(entry);
}

filter_field& inspector_view::filter() {
    return filter_->field();
}

void inspector_view::refresh() {
    selected_.clear();
    const auto all = view_ ? view_->selection().clips() : std::vector<clip_place>();
    for (const clip_place& one : all) selected_.push_back(one.clip->id());
    show_clips(seen_of(all));
}

// What is selected and seen. When all of it is hidden, it is shown here all the same: otherwise a clip would
// vanish under the hand that changes it.
std::vector<clip_place> inspector_view::seen_of(const std::vector<clip_place>& all) const {
    if (!hides_) return all;
    std::vector<clip_place> seen;
    std::copy_if(all.begin(), all.end(), std::back_inserter(seen),
                 [this](const clip_place& one) { return view_->verdicts().passes(*one.clip); });
    return seen.empty() ? all : seen;
}

void inspector_view::show_filter(bool is_on, bool hides) {
    is_filtered_ = is_on;
    hides_ = hides;
    std::vector<clip_place> all;
    for (const std::string& clip : selected_) {
        if (const auto place = document_->timeline().find_clip(clip)) all.push_back(*place);
    }
    const auto clips = seen_of(all);
    const bool are_same =
        std::equal(clips.begin(), clips.end(), clips_.begin(), clips_.end(),
                   [](const clip_place& one, const std::string& shown) { return one.clip->id() == shown; });
    if (!are_same) return show_clips(clips);
    // What is being typed into the fields is left alone.
    if (clips.empty()) return;
    show_title(clips);
    show_chips(clips);
}

bool inspector_view::concerns_shown(const change_set& change) const {
    const auto is_shown = [](const auto& shown) {
        return
            [&shown](const auto& one) { return std::find(shown.begin(), shown.end(), one) != shown.end(); };
    };
    return std::any_of(change.rows.begin(), change.rows.end(), is_shown(rows_)) ||
           std::any_of(change.clips.begin(), change.clips.end(), is_shown(clips_));
}

void inspector_view::show_clips(const std::vector<clip_place>& clips) {
    clips_.clear();
    rows_.clear();
    for (const auto& one : clips) {
        clips_.push_back(one.clip->id());
        if (std::find(rows_.begin(), rows_.end(), one.row) == rows_.end()) rows_.push_back(one.row);
    }
    empty_->setVisible(clips.empty());
    scroll_->setVisible(!clips.empty());
    header_->set_fact(clips.empty()       ? QString()
                      : clips.size() == 1 ? tr("Clip")
                                          : tr("%1 clips").arg(clips.size()));
    if (clips.empty()) return note_->set_note({}, {});
    show_title(clips);
    show_values(clips);
}

void inspector_view::show_title(const std::vector<clip_place>& clips) {
    const sxy_DATA_root& timeline = document_->timeline();
    const auto shade =
        shared_value(clips, [&](const clip_place& one) { return shown_colour(timeline, one); });
    const QColor bar = shade && *shade ? to_qt(**shade) : QColor();
    const auto row = shared_value(clips, [](const clip_place& one) { return one.row; });
    const auto record = row ? timeline.row(*row) : nullptr;
    const QString what = record ? QString::fromStdString(record->category()) : tr("of several rows");
    if (clips.size() > 1) {
        title_->set_title(tr("%1 clips").arg(clips.size()),
                          record ? QString::fromStdString(record->name()) : what, verdict_on(clips), bar);
        return;
    }
    title_->set_title(QString::fromStdString(clip_title(timeline, clips.front())), what, verdict_on(clips),
                      bar);
}

QString inspector_view::verdict_on(const std::vector<clip_place>& clips) const {
    if (!is_filtered_) return {};
    const auto passing = std::count_if(clips.begin(), clips.end(), [this](const clip_place& one) {
        return view_->verdicts().passes(*one.clip);
    });
    if (clips.size() == 1) return passing == 1 ? tr("passes the filter") : tr("filtered out");
    if (passing == static_cast<std::ptrdiff_t>(clips.size())) return tr("all pass the filter");
    return passing == 0 ? tr("all filtered out") : tr("%1 pass the filter").arg(passing);
}

void inspector_view::show_chips(const std::vector<clip_place>& clips) {
    const bool single = clips.size() == 1;
    const auto chips =
        single ? chips_of(*clips.front().clip, view_->verdicts()) : std::vector<qualifier_chip>();
    qualifier_count_->setText(single ? QString::number(chips.size()) : tr("several"));
    chips_->set_chips(chips);
    show_qualifier();
}

// The one that is chosen, to be written.
void inspector_view::show_qualifier() {
    const auto place =
        document_ && clips_.size() == 1 ? document_->timeline().find_clip(clips_.front()) : std::nullopt;
    if (!place || chips_->chosen().empty()) return qualifier_->set_qualifier(std::nullopt, {});
    const auto all = place->clip->qualifiers();
    for (const qual_ITEM& one : *all) {
        if (one.uuid() != chips_->chosen()) continue;
        const QString at = time_text(one.time(), time_form::field);
        return qualifier_->set_qualifier(
            words_in(one), tr("%1, stamped at %2").arg(QString::fromStdString(one.name().str()), at));
    }
    qualifier_->set_qualifier(std::nullopt, {});
}

void inspector_view::show_values(const std::vector<clip_place>& clips) {
    const auto start = shared_value(clips, [](const clip_place& one) { return one.clip->secs_start(); });
    const auto end = shared_value(clips, [](const clip_place& one) { return one.clip->secs_end(); });
    const bool single = clips.size() == 1;
    start_ = clips.front().clip->secs_start();
    end_ = clips.front().clip->secs_end();
    start_field_->set_seconds(single ? start : std::nullopt);
    end_field_->set_seconds(single ? end : std::nullopt);
    start_here_->setEnabled(single);
    end_here_->setEnabled(single);
    length_->setText(single ? time_text(end_ - start_, time_form::field) : tr("several"));

    const auto stars = shared_value(clips, [](const clip_place& one) { return one.clip->stars(); });
    stars_->set_stars(stars);
    const sxy_DATA_root& timeline = document_->timeline();
    const auto shade =
        shared_value(clips, [&](const clip_place& one) { return shown_colour(timeline, one); });
    const bool own =
        std::all_of(clips.begin(), clips.end(), [](const auto& one) { return one.clip->col().has_value(); });
    swatches_->set_colour(shade.value_or(std::nullopt), own);

    show_chips(clips);
    note_->set_note(single ? clips_.front() : std::string(),
                    single ? clips.front().clip->note_text() : std::string());
    note_section_->setVisible(single);
}

void inspector_view::ask_times(double start, double end) {
    if (!document_ || clips_.size() != 1) return;
    apply(plan_clip_times(document_->timeline(), clips_.front(), start, end));
}

void inspector_view::trim_here(bool start) {
    if (!document_ || clips_.size() != 1) return;
    const double now = now_();
    apply(plan_clips_Trim_Mark_in_Mark_Out(document_->timeline(), clips_,
                                           start ? std::optional(now) : std::nullopt,
                                           start ? std::nullopt : std::optional(now)));
}

bool inspector_view::apply(timeline_edit edit) {
    if (edit.operations.empty()) return true;
    const auto done = document_->apply(std::move(edit));
    if (!done) Q_EMIT failed(words_of(done.error()));
    refresh();
    return bool(done);
}

bool inspector_view::apply(result<timeline_edit> planned) {
    if (planned) return apply(std::move(planned).value());
    Q_EMIT failed(words_of(planned.error()));
    return false;
}

void inspector_view::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), theme::current().pane);
}

}  // namespace vistels
