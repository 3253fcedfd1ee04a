// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/align_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/kit/check_box.h"
#include "shell/kit/controls.h"
#include "shell/kit/inspector_parts.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/collection/buttons_Adjust_Offsets.h"
#include "shell/panes/collection/collection_metrics.h"

namespace vistels {

namespace {

QHBoxLayout* make_line(QWidget* parent) {
    const theme_metrics& metrics = theme::current().metrics;
    auto* line = new QHBoxLayout(parent);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(metrics.padding);
    return line;
}

time_field* make_field(const QString& name, const QString& tip, QWidget* parent) {
    auto* field = new time_field(parent);
    field->setObjectName(name);
    field->setAccessibleName(tip);
    field->setToolTip(tip);
    // As wide as any time that is shown, with its minus sign.
    const QString widest = QStringLiteral("−00:00:00.000");
    const theme_metrics& metrics = theme::current().metrics;
    field->setFixedWidth(field->fontMetrics().horizontalAdvance(widest) + 2 * metrics.padding);
    return field;
}

}  // namespace

align_bar::align_bar(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("align"));
    setAccessibleName(tr("Bring vistels into step"));
    const theme_metrics& metrics = theme::current().metrics;
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.wide_padding, metrics.grid, metrics.padding, metrics.grid);
    column->setSpacing(metrics.grid);
    column->addWidget(make_offset_line());
    column->addWidget(make_parts_line());
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect_parts();
    set_mark({});
    set_shows_parts(false);
}

QWidget* align_bar::make_offset_line() {
    auto* whole = new QWidget(this);
    auto* line = make_line(whole);
    name_ = new cut_label(type_step::title, {}, collection_sizes.align_name_width, whole);
    name_->setObjectName(QStringLiteral("align.vistel"));
    auto* what = make_label(tr("Offset"), type_step::secondary, QStringLiteral("muted"), whole);
    offset_ = make_field(QStringLiteral("align.offset"),
                         tr("Start offset of the vistel, in seconds or as h:mm:ss"), whole);
    nudge_ = new buttons_Adjust_Offsets(QStringLiteral("align.nudge"),
                                        tr("Offset one frame less: the vistel shows a frame later "
                                           "(Ctrl+Shift+Right)"),
                                        tr("Offset one frame more: the vistel shows a frame earlier "
                                           "(Ctrl+Shift+Left)"),
                                        whole);
    mark_ = make_push_button(tr("Mark Moment"), {}, whole);
    mark_->setObjectName(QStringLiteral("align.mark"));
    mark_->setToolTip(
        tr("Remember the instant that this vistel shows; then find the same instant in another one"));
    same_ = make_push_button(tr("Same Moment"), QStringLiteral("first"), whole);
    same_->setObjectName(QStringLiteral("align.same"));
    same_->setToolTip(tr("This vistel shows the marked instant now: bring both into step"));
    marked_ = new cut_label(type_step::secondary, QStringLiteral("muted"), collection_sizes.align_name_width,
                            whole);
    marked_->setObjectName(QStringLiteral("align.marked"));
    unmark_ = new icon_button(QStringLiteral("close"), tr("Forget the marked moment"), whole);
    unmark_->setObjectName(QStringLiteral("align.unmark"));
    show_parts_ = make_push_button(tr("Movie Parts"), {}, whole);
    show_parts_->setObjectName(QStringLiteral("align.parts"));
    show_parts_->setCheckable(true);
    show_parts_->setToolTip(tr("Show the vistel's movie parts and the gaps between them"));
    close_ = new icon_button(QStringLiteral("close"), tr("Done with aligning"), whole);
    close_->setObjectName(QStringLiteral("align.close"));
    line->addWidget(name_);
    line->addWidget(what);
    line->addWidget(offset_);
    line->addWidget(nudge_);
    line->addWidget(mark_);
    line->addWidget(same_);
    line->addWidget(marked_);
    line->addWidget(unmark_);
    line->addStretch(1);
    line->addWidget(show_parts_);
    line->addWidget(close_);
    return whole;
}

QWidget* align_bar::make_parts_line() {
    parts_line_ = new QWidget(this);
    auto* column = new QVBoxLayout(parts_line_);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme::current().metrics.grid);
    strip_ = new single_Adjust_offset_View(parts_line_);
    column->addWidget(strip_);
    auto* whole = new QWidget(parts_line_);
    auto* line = make_line(whole);
    part_name_ = make_label({}, type_step::secondary, QStringLiteral("muted"), whole);
    part_name_->setObjectName(QStringLiteral("movie_parts.name"));
    gap_ = make_field(QStringLiteral("movie_parts.gap"), tr("Gap before the movie part"), whole);
    gap_->set_least(0);
    gap_nudge_ = new buttons_Adjust_Offsets(QStringLiteral("movie_parts.nudge"), tr("Gap one frame shorter"),
                                            tr("Gap one frame longer"), whole);
    lock_ = new check_box(tr("Lock clips to the movie parts"), whole);
    lock_->setObjectName(QStringLiteral("drone_lock_clips"));
    lock_->setToolTip(tr("Clips that lie on a movie part move with it when a gap is changed"));
    line->addWidget(part_name_);
    line->addWidget(gap_);
    line->addWidget(gap_nudge_);
    line->addStretch(1);
    line->addWidget(lock_);
    column->addWidget(whole);
    return parts_line_;
}

void align_bar::connect_parts() {
    connect(offset_, &time_field::seconds_asked, this, &align_bar::offset_asked);
    connect(nudge_, &buttons_Adjust_Offsets::nudged, this, &align_bar::nudge_asked);
    connect(nudge_, &buttons_Adjust_Offsets::ended, this, &align_bar::nudge_ended);
    connect(gap_nudge_, &buttons_Adjust_Offsets::ended, this, &align_bar::nudge_ended);
    connect(mark_, &QPushButton::clicked, this, &align_bar::mark_asked);
    connect(same_, &QPushButton::clicked, this, &align_bar::same_moment_asked);
    connect(unmark_, &icon_button::clicked, this, &align_bar::unmark_asked);
    connect(close_, &icon_button::clicked, this, &align_bar::close_asked);
    connect(show_parts_, &QPushButton::toggled, this, [this](bool shows) { parts_line_->setVisible(shows); });
    connect(strip_, &single_Adjust_offset_View::chosen_changed, this, &align_bar::show_part);
    connect(strip_, &single_Adjust_offset_View::gap_asked, this, &align_bar::gap_asked);
    connect(strip_, &single_Adjust_offset_View::gap_dragged, this,
            [this](int, double seconds) { gap_->set_seconds(seconds); });
    connect(strip_, &single_Adjust_offset_View::drag_cancelled, this, [this] { show_part(); });
    connect(gap_, &time_field::seconds_asked, this,
            [this](double seconds) { Q_EMIT gap_asked(strip_->chosen(), seconds); });
    connect(gap_nudge_, &buttons_Adjust_Offsets::nudged, this,
            [this](int frames) { Q_EMIT gap_nudge_asked(strip_->chosen(), frames); });
    connect(lock_, &check_box::clicked, this, &align_bar::lock_asked);
}

void align_bar::set_vistel(const QString& name, std::optional<double> offset) {
    name_->set_text(name);
    has_vistel_ = offset.has_value();
    if (offset) offset_->set_seconds(*offset);
    set_changeable(changeable_);
}

void align_bar::set_mark(const QString& words) {
    const bool is_marked = !words.isEmpty();
    marked_->set_text(words);
    mark_->setVisible(!is_marked);
    same_->setVisible(is_marked);
    marked_->setVisible(is_marked);
    unmark_->setVisible(is_marked);
}

void align_bar::set_parts(std::vector<shown_part> parts, bool locks_clips) {
    strip_->set_parts(std::move(parts));
    if (strip_->chosen() < 0) strip_->choose(0);
    lock_->setChecked(locks_clips);
    show_part();
}

void align_bar::show_part() {
    const int part = strip_->chosen();
    const auto count = strip_->parts().size();
    const bool has_part = part >= 0;
    part_name_->setText(has_part ? tr("Part %1 of %2, gap before").arg(part + 1).arg(count)
                                 : tr("There are no movie parts."));
    gap_->setVisible(has_part);
    gap_nudge_->setVisible(has_part);
    if (has_part && !strip_->is_dragging())
        gap_->set_seconds(strip_->parts()[static_cast<std::size_t>(part)].gap_before);
    gap_->setEnabled(changeable_ && has_part);
    gap_nudge_->setEnabled(changeable_ && has_part);
}

void align_bar::set_seconds(double seconds) {
    strip_->set_seconds(seconds);
}

void align_bar::set_changeable(bool changeable) {
    changeable_ = changeable;
    for (QWidget* one :
         {static_cast<QWidget*>(offset_), static_cast<QWidget*>(nudge_), static_cast<QWidget*>(same_)}) {
        one->setEnabled(changeable && has_vistel_);
    }
    lock_->setEnabled(changeable);
    strip_->set_changeable(changeable);
    show_part();
}

void align_bar::set_shows_parts(bool shows) {
    show_parts_->setChecked(shows);
    parts_line_->setVisible(shows);
}

void align_bar::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.fillRect(rect(), look.pane);
    painter.fillRect(QRect(0, height() - look.metrics.line, width(), look.metrics.line), look.line);
}

}  // namespace vistels
