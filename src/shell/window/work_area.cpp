// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/work_area.h"

#include <QVBoxLayout>
#include <algorithm>

#include "shell/kit/pane_splitter.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_metrics.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/window/window_metrics.h"

namespace vistels {

namespace {

constexpr double picture_aspect = 16.0 / 9;
constexpr double timeline_least_share = 0.36;  // of the height
constexpr int timeline_least_rows = 5;
constexpr int timeline_enough_rows = 11;
constexpr double code_greatest_share = 0.4;  // of the width

property_value stored_sizes(const QSplitter& splitter) {
    property_array all;
    for (const int size : splitter.sizes()) all.emplace_back(size);
    return all;
}

void restore_sizes(pane_splitter& splitter, const property_array* stored) {
    if (!stored || static_cast<int>(stored->size()) != splitter.count()) return;
    QList<int> all;
    for (const auto& one : *stored) all << static_cast<int>(std::clamp(one.number().value_or(0), 0.0, 1e5));
    splitter.setSizes(all);
    splitter.set_was_moved(true);
}

}  // namespace

work_sizes plan_work_sizes(QSize room, int code_content, int beside_picture, bool with_code) {
    const theme_metrics& metrics = theme::current().metrics;
    work_sizes planned;
    if (with_code) {
        const int greatest = static_cast<int>(room.width() * code_greatest_share);
        planned.code_width = room.width() <= window_sizes.least_window_width
                                 ? metrics.small_code_window_width
                                 : std::clamp(code_content, metrics.small_code_window_width, greatest);
    }
    const int picture = static_cast<int>((room.width() - planned.code_width) / picture_aspect);
    const int beside_rows = timeline_sizes.pane_header_with_filter_height + timeline_sizes.ruler_height +
                            timeline_sizes.whole_event_height;
    const int timeline = std::clamp(static_cast<int>(room.height() * timeline_least_share),
                                    beside_rows + timeline_sizes.row_small_height * timeline_least_rows,
                                    beside_rows + timeline_sizes.row_height * timeline_enough_rows);
    planned.upper_height =
        std::max(room.height() / 3, std::min(picture + beside_picture, room.height() - timeline));
    return planned;
}

work_area::work_area(QWidget* collection, QWidget* code, QWidget* timeline, QWidget* parent)
    : QWidget(parent),
      collection_(collection),
      code_(code),
      timeline_(timeline),
      rows_(new pane_splitter(Qt::Vertical, this)),
      columns_(new pane_splitter(Qt::Horizontal, rows_)) {
    const theme_metrics& metrics = theme::current().metrics;
    code_content_width_ = metrics.small_code_window_width;
    rows_->setObjectName(QStringLiteral("work.rows"));
    columns_->setObjectName(QStringLiteral("work.columns"));
    columns_->addWidget(collection);
    columns_->addWidget(code);
    columns_->setStretchFactor(0, 1);
    rows_->addWidget(columns_);
    rows_->addWidget(timeline);
    rows_->setStretchFactor(0, 1);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(rows_);
    connect(rows_, &QSplitter::splitterMoved, this, [this] {
        if (held_height_ >= 0) held_height_ = rows_->sizes().front();
    });
}

void work_area::set_code_content_width(int width) {
    if (width == code_content_width_) return;
    code_content_width_ = width;
    arrange();
}

void work_area::set_shows_code(bool shows) {
    if (shows == shows_code_) return;
    shows_code_ = shows;
    if (code_) code_->setVisible(shows);
    arrange();
}

void work_area::set_shows_pictures(bool shows) {
    if (shows == shows_pictures_) return;
    if (!shows) kept_sizes_ = sizes();
    shows_pictures_ = shows;
    if (shows) {
        if (collection_) columns_->insertWidget(0, collection_);
        if (timeline_) rows_->addWidget(timeline_);
    } else {
        if (collection_) rows_->insertWidget(0, collection_);
        if (timeline_) columns_->insertWidget(0, timeline_);
    }
    columns_->setStretchFactor(0, 1);
    rows_->setStretchFactor(shows ? 0 : 1, 1);
    rows_->setStretchFactor(shows ? 1 : 0, 0);
    columns_->set_was_moved(false);
    rows_->set_was_moved(false);
    arrange();
    if (shows) set_sizes(kept_sizes_);
}

void work_area::hold_upper(bool holds) {
    if (holds && held_height_ < 0) held_height_ = rows_->sizes().front();
    holds_upper_ = holds;
}

void work_area::resizeEvent(QResizeEvent*) {
    arrange();
    if (held_height_ < 0) return;
    if (shows_pictures_) rows_->setSizes({held_height_, height() - held_height_ - rows_->handleWidth()});
    if (!holds_upper_) held_height_ = -1;
}

void work_area::arrange() {
    const theme_metrics& metrics = theme::current().metrics;
    const int beside = metrics.pane_header_height + collection_sizes.transport_height +
                       metrics.slider_handle_height + 2 * metrics.focus_ring;
    work_sizes planned = plan_work_sizes(size(), code_content_width_, beside, shows_code_);
    // The timeline leaves the code window what it needs, where the video would not.
    if (!shows_pictures_ && shows_code_) {
        planned.code_width =
            std::clamp(code_content_width_, planned.code_width, std::max(planned.code_width, width() / 2));
    }
    if (!columns_->was_moved()) {
        columns_->setSizes({width() - planned.code_width - metrics.splitter, planned.code_width});
    }
    if (!shows_pictures_) {
        rows_->setSizes({collection_ ? collection_->minimumHeight() : 0, height()});
    } else if (!rows_->was_moved()) {
        rows_->setSizes({planned.upper_height, height() - planned.upper_height - metrics.splitter});
    }
}

property_dictionary work_area::sizes() const {
    if (!shows_pictures_) return kept_sizes_;
    property_dictionary stored;
    if (columns_->was_moved()) stored.set("columns", stored_sizes(*columns_));
    if (rows_->was_moved()) stored.set("rows", stored_sizes(*rows_));
    return stored;
}

void work_area::set_sizes(const property_dictionary& stored) {
    if (!shows_pictures_) {
        kept_sizes_ = stored;
        return;
    }
    restore_sizes(*columns_, stored.array("columns"));
    restore_sizes(*rows_, stored.array("rows"));
}

}  // namespace vistels
