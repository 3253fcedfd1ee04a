// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/collection_view.h"

#include <QHBoxLayout>
#include <QRegularExpression>
#include <QStyle>
#include <algorithm>
#include <cmath>

#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/collection/collection_metrics.h"
#include "shell/panes/collection/vistel_layout.h"

namespace vistels {

namespace {

// A message with the paths of files in it cut to the files' names, for places where room is short.
QString with_short_paths(const QString& message) {
    static const QRegularExpression path(QStringLiteral("([“\"])/[^”\"]*/([^/”\"]+)([”\"])"));
    return QString(message).replace(path, QStringLiteral("\\1\\2\\3"));
}

}  // namespace

collection_view::collection_view(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("collection.view"));
    setAccessibleName(tr("Vistels of the collection"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    setAcceptDrops(true);
    make_bar();
    growth_.setStartValue(0.0);
    growth_.setEndValue(1.0);
    growth_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&growth_, &QVariantAnimation::valueChanged, this, [this] { update(); });
    connect(&growth_, &QVariantAnimation::finished, this, [this] {
        leaving_.clear();
        show_bar();
        Q_EMIT sight_changed();
        update();
    });
    ring_time_.setSingleShot(true);
    connect(&ring_time_, &QTimer::timeout, this, [this] {
        ringed_.clear();
        update();
    });
}

void collection_view::set_middle(QWidget* widget) {
    middle_ = widget;
    if (!layout()) {
        auto* room = new QHBoxLayout(this);
        room->setSizeConstraint(QLayout::SetNoConstraint);
        room->addStretch(1);
        room->addStretch(1);
    }
    // As wide as it may be, where there is room.
    constexpr int before_the_stretches = 1000;
    static_cast<QHBoxLayout*>(layout())->insertWidget(1, widget, before_the_stretches, Qt::AlignVCenter);
    update();
}

void collection_view::set_vistels(std::vector<shown_vistel> vistels, double ratio, bool scrolls) {
    std::vector<tile> tiles;
    for (auto& one : vistels) {
        // What is on show stays until its next picture.
        const tile* before = find(one.uuid);
        tile made = before ? *before : tile();
        made.vistel = std::move(one);
        tiles.push_back(std::move(made));
    }
    tiles_ = std::move(tiles);
    ratio_ = ratio;
    scrolls_ = scrolls;
    if (!find(enlarged_)) enlarged_.clear();
    if (!find(leaving_)) leaving_.clear();
    if (drag_ && !find(drag_->vistel)) end_drag(false);
    lay_out();
}

void collection_view::set_picture(const std::string& vistel, const QImage& picture, double aspect) {
    tile* one = find(vistel);
    if (!one) return;
    one->in_gap = false;
    if (!picture.isNull()) one->picture = picture;
    if (aspect > 0 && aspect != one->aspect) {
        one->aspect = aspect;
        lay_out();
    }
    update(place(*one));
}

void collection_view::forget_picture(const std::string& vistel) {
    tile* one = find(vistel);
    if (!one || (one->picture.isNull() && !one->in_gap)) return;
    one->picture = {};
    one->in_gap = false;
    update(place(*one));
}

void collection_view::set_gap(const std::string& vistel, double seconds, bool marks_start) {
    tile* one = find(vistel);
    if (!one) return;
    const bool ends_alike = one->gap_end == seconds || !std::isfinite(seconds + one->gap_end);
    if (one->in_gap && ends_alike && one->marks_start == marks_start) return;
    one->in_gap = true;
    one->gap_end = seconds;
    one->marks_start = marks_start;
    one->picture = {};
    update(place(*one));
}

void collection_view::set_over(const std::string& vistel, bool over) {
    tile* one = find(vistel);
    if (!one || one->is_over == over) return;
    one->is_over = over;
    update(place(*one));
}

void collection_view::set_problem(const std::string& vistel, const QString& problem) {
    tile* one = find(vistel);
    if (!one || one->vistel.problem == problem) return;
    one->vistel.problem = problem;
    update();
}

void collection_view::set_overlay(const std::string& vistel, const QImage& picture, const rectangle& frame,
                                  double opacity) {
    tile* one = find(vistel);
    if (!one) return;
    one->overlay = picture;
    one->overlay_frame = frame;
    one->overlay_opacity = opacity;
    update(place(*one));
}

bool collection_view::is_heard(const std::string& vistel) const {
    const tile* one = find(vistel);
    return one && one->vistel.has_sound;
}

void collection_view::set_ready(const std::string& vistel) {
    tile* one = find(vistel);
    if (!one || !one->vistel.is_waiting) return;
    one->vistel.is_waiting = false;
    update(place(*one));
}

void collection_view::set_enlarged(const std::string& vistel) {
    const std::string next = find(vistel) ? vistel : std::string();
    if (next == enlarged_) return;
    leaving_ = enlarged_;
    enlarged_ = next;
    // Another one than before may have been enlarged meanwhile: it goes back to where it is seen.
    if (enlarged_.empty() && !home_of(*find(leaving_)).intersects(rect())) bring_into_sight(leaving_);
    start_ring(enlarged_.empty() ? leaving_ : enlarged_);
    const bool moves = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    growth_.stop();
    growth_.setDuration(moves ? theme::current().motion.change : 0);
    growth_.start();
    show_bar();
    Q_EMIT sizes_changed();
    Q_EMIT sight_changed();
    update();
}

std::string collection_view::enlarged() const {
    return enlarged_;
}

void collection_view::start_ring(const std::string& vistel) {
    ringed_ = vistel;
    ring_time_.start(theme::current().motion.vistel_ring);
}

const collection_view::tile* collection_view::find(const std::string& vistel) const {
    const auto found = std::find_if(tiles_.begin(), tiles_.end(),
                                    [&](const tile& one) { return one.vistel.uuid == vistel; });
    return found == tiles_.end() ? nullptr : &*found;
}

collection_view::tile* collection_view::find(const std::string& vistel) {
    return const_cast<tile*>(std::as_const(*this).find(vistel));
}

QRect collection_view::home_of(const tile& one) const {
    const bool is_dragged = drag_ && drag_->moves && !drag_->shifts && drag_->vistel == one.vistel.uuid;
    return view_of(area_, is_dragged ? drag_->now.frame : one.vistel.frame, collection_sizes.vistel_gap);
}

QRect collection_view::place(const tile& one) const {
    const bool grows = one.vistel.uuid == enlarged_;
    const bool shrinks = one.vistel.uuid == leaving_;
    const QRect home = home_of(one);
    if (!grows && !shrinks) return home;
    const double done =
        growth_.state() == QAbstractAnimation::Running ? growth_.currentValue().toDouble() : 1.0;
    const double share = grows ? done : 1 - done;
    const auto between = [share](int from, int to) {
        return from + static_cast<int>(std::lround((to - from) * share));
    };
    return {QPoint(between(home.left(), rect().left()), between(home.top(), rect().top())),
            QPoint(between(home.right(), rect().right()), between(home.bottom(), rect().bottom()))};
}

QSize collection_view::picture_size(const std::string& vistel) const {
    const tile* one = find(vistel);
    if (!one) return {};
    const QRect view = vistel == enlarged_ ? rect() : home_of(*one);
    const QRect fitted = picture_in(view, one->aspect);
    const double ratio = devicePixelRatioF();
    return {static_cast<int>(std::lround(fitted.width() * ratio)),
            static_cast<int>(std::lround(fitted.height() * ratio))};
}

QRect collection_view::place_of(const std::string& vistel) const {
    const tile* one = find(vistel);
    if (!one || (!enlarged_.empty() && enlarged_ != vistel)) return {};
    return place(*one);
}

QString collection_view::words_in(const std::string& vistel) const {
    const tile* one = find(vistel);
    if (!one) return {};
    if (!one->vistel.problem.isEmpty()) return with_short_paths(one->vistel.problem);
    if (!one->in_gap) return one->vistel.is_waiting ? tr("Getting the movie ready") : QString();
    if (one->marks_start && std::isfinite(one->gap_end)) {
        return tr("Starts at %1").arg(time_text(one->gap_end, time_form::clock));
    }
    return std::isfinite(one->gap_end)
               ? tr("No picture until %1").arg(time_text(one->gap_end, time_form::clock))
               : tr("No picture from here on");
}

std::string collection_view::current() const {
    if (!enlarged_.empty()) return enlarged_;
    if (find(current_)) return current_;
    return tiles_.empty() ? std::string() : tiles_.front().vistel.uuid;
}

void collection_view::set_current(const std::string& vistel) {
    if (!find(vistel) || vistel == current()) return;
    current_ = vistel;
    update();
    Q_EMIT current_changed();
}

void collection_view::set_aligning(bool aligning) {
    if (aligning_ == aligning) return;
    end_drag(false);
    aligning_ = aligning;
    update();
}

void collection_view::set_note(const std::string& vistel, const QString& words) {
    tile* one = find(vistel);
    if (!one || one->note == words) return;
    one->note = words;
    update(place(*one));
}

QString collection_view::note_in(const std::string& vistel) const {
    const tile* one = find(vistel);
    return one ? one->note : QString();
}

void collection_view::set_has_collection(bool has_collection) {
    has_collection_ = has_collection;
    update();
}

void collection_view::set_changeable(bool changeable) {
    changeable_ = changeable;
    if (!changeable) end_drag(false);
    update();
}

vistel_arrangement collection_view::arrangement() const {
    vistel_arrangement now;
    // Whatever is moved from here on, the others stay where they are.
    now.ratio = area_.height() > 0 ? static_cast<double>(area_.width()) / area_.height() : ratio_;
    if (ratio_ > 0) now.ratio = ratio_;
    now.scrolls = scrolls_;
    for (const auto& one : tiles_)
        now.vistels.push_back({one.vistel.uuid, one.vistel.frame, one.vistel.order});
    return now;
}

double collection_view::picture_aspect() const {
    return tiles_.empty() ? 0 : tiles_.front().aspect;
}

std::vector<const collection_view::tile*> collection_view::from_back() const {
    std::vector<const tile*> order;
    for (const auto& one : tiles_) order.push_back(&one);
    std::stable_sort(order.begin(), order.end(),
                     [](const tile* a, const tile* b) { return a->vistel.order < b->vistel.order; });
    const auto dragged = std::find_if(order.begin(), order.end(), [this](const tile* one) {
        return drag_ && drag_->moves && one->vistel.uuid == drag_->vistel;
    });
    if (dragged != order.end()) std::rotate(dragged, dragged + 1, order.end());
    return order;
}

const collection_view::tile* collection_view::tile_at(const QPoint& point) const {
    if (!enlarged_.empty()) return find(enlarged_);
    const auto order = from_back();
    const auto found = std::find_if(order.rbegin(), order.rend(),
                                    [&](const tile* one) { return place(*one).contains(point); });
    return found == order.rend() ? nullptr : *found;
}

std::string collection_view::vistel_at(const QPoint& point) const {
    const tile* one = tile_at(point);
    return one ? one->vistel.uuid : std::string();
}

QRect collection_view::chip_of(const std::string& vistel) const {
    const tile* one = find(vistel);
    return one ? chip_in(place(*one), *one) : QRect();
}

QString collection_view::chip_words_of(const tile& one) {
    if (one.vistel.name.isEmpty() || !one.vistel.problem.isEmpty()) return {};
    return one.is_over ? tr("%1 · ended").arg(one.vistel.name) : one.vistel.name;
}

QString collection_view::chip_words(const std::string& vistel) const {
    const tile* one = find(vistel);
    return one ? chip_words_of(*one) : QString();
}

bool collection_view::has_picture(const std::string& vistel) const {
    const tile* one = find(vistel);
    return one && !one->picture.isNull();
}

QSize collection_view::minimumSizeHint() const {
    const theme_metrics& metrics = theme::current().metrics;
    return {metrics.small_code_window_width, metrics.small_code_window_width / 2};
}

void collection_view::resizeEvent(QResizeEvent*) {
    lay_out();
}

}  // namespace vistels
