// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/collection/collection_view.h"

#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "shell/kit/failure_words.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/vistel_layout.h"

namespace vistels {

collection_view::collection_view(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("collection.view"));
    setAccessibleName(tr("Vistels of the collection"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    setAcceptDrops(true);
    connect(&scrolling_, &collection_scrolling::scrolled_by_user, this, &collection_view::follow_scroll);
    growth_.setStartValue(0.0);
    growth_.setEndValue(1.0);
    growth_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&growth_, &QVariantAnimation::valueChanged, this, [this](const QVariant& share) {
        geometry_.set_growth(share.toDouble());
        update();
    });
    connect(&growth_, &QVariantAnimation::finished, this, &collection_view::end_growth);
    ring_time_.setSingleShot(true);
    connect(&ring_time_, &QTimer::timeout, this, [this] {
        handling_.ringed.clear();
        update();
    });
}

const vistel_tile* collection_view::find(const std::string& vistel) const {
    const auto found = std::find_if(tiles_.begin(), tiles_.end(),
                                    [&](const vistel_tile& one) { return one.vistel.uuid == vistel; });
    return found == tiles_.end() ? nullptr : &*found;
}

vistel_tile* collection_view::find(const std::string& vistel) {
    return const_cast<vistel_tile*>(std::as_const(*this).find(vistel));
}

void collection_view::update_place(const std::string& vistel) {
    update(geometry_.place(vistel));
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
    std::vector<vistel_tile> tiles;
    std::vector<placed_vistel> placed;
    for (auto& one : vistels) {
        // What is on show stays until its next picture.
        const vistel_tile* before = find(one.uuid);
        vistel_tile made = before ? *before : vistel_tile();
        placed.push_back({one.uuid, one.frame, one.order});
        made.vistel = std::move(one);
        tiles.push_back(std::move(made));
    }
    tiles_ = std::move(tiles);
    geometry_.set_vistels(std::move(placed), ratio, scrolls);
    if (handling_.drag && !find(handling_.drag->vistel)) input_.end_drag(false);
    lay_out();
}

void collection_view::set_picture(const std::string& vistel, const QImage& picture, double aspect) {
    vistel_tile* one = find(vistel);
    if (!one) return;
    one->in_gap = false;
    if (!picture.isNull()) one->picture = picture;
    if (geometry_.set_aspect(vistel, aspect)) lay_out();
    update_place(vistel);
}

void collection_view::forget_picture(const std::string& vistel) {
    vistel_tile* one = find(vistel);
    if (!one || (one->picture.isNull() && !one->in_gap)) return;
    one->picture = {};
    one->in_gap = false;
    update_place(vistel);
}

void collection_view::set_gap(const std::string& vistel, double seconds, bool marks_start) {
    vistel_tile* one = find(vistel);
    if (!one) return;
    const bool ends_alike = one->gap_end == seconds || !std::isfinite(seconds + one->gap_end);
    if (one->in_gap && ends_alike && one->marks_start == marks_start) return;
    one->in_gap = true;
    one->gap_end = seconds;
    one->marks_start = marks_start;
    one->picture = {};
    update_place(vistel);
}

void collection_view::set_over(const std::string& vistel, bool over) {
    vistel_tile* one = find(vistel);
    if (!one || one->is_over == over) return;
    one->is_over = over;
    update_place(vistel);
}

void collection_view::set_difference(const std::string& vistel, const failure& difference) {
    vistel_tile* one = find(vistel);
    if (!one || one->difference == difference) return;
    one->difference = difference;
    update_place(vistel);
}

void collection_view::set_health(const std::string& vistel, const QString& words) {
    vistel_tile* one = find(vistel);
    if (!one || one->health == words) return;
    one->health = words;
    update_place(vistel);
}

void collection_view::set_problem(const std::string& vistel, const failure& problem) {
    vistel_tile* one = find(vistel);
    if (!one || one->vistel.problem == problem) return;
    one->vistel.problem = problem;
    update();
}

void collection_view::set_overlay(const std::string& vistel, const QImage& picture, const rectangle& frame,
                                  double opacity) {
    vistel_tile* one = find(vistel);
    if (!one) return;
    one->overlay = picture;
    one->overlay_frame = frame;
    one->overlay_opacity = opacity;
    update_place(vistel);
}

bool collection_view::is_heard(const std::string& vistel) const {
    const vistel_tile* one = find(vistel);
    return one && one->vistel.has_sound;
}

void collection_view::set_ready(const std::string& vistel) {
    vistel_tile* one = find(vistel);
    if (!one || !one->vistel.is_waiting) return;
    one->vistel.is_waiting = false;
    update_place(vistel);
}

void collection_view::set_enlarged(const std::string& vistel) {
    const std::string next = find(vistel) ? vistel : std::string();
    if (next == enlarged()) return;
    growth_.stop();
    geometry_.enlarge(next);
    const std::string& leaving = geometry_.leaving();
    // Another one than before may have been enlarged meanwhile: it goes back to where it is seen.
    if (next.empty() && !geometry_.home(leaving).intersects(rect())) bring_into_sight(leaving);
    start_ring(next.empty() ? leaving : next);
    const bool moves = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    growth_.setDuration(moves ? theme::current().motion.change : 0);
    growth_.start();
    scrolling_.show_bar();
    Q_EMIT sizes_changed();
    Q_EMIT sight_changed();
    update();
}

void collection_view::end_growth() {
    geometry_.end_growth();
    scrolling_.show_bar();
    Q_EMIT sight_changed();
    update();
}

std::string collection_view::enlarged() const {
    return geometry_.enlarged();
}

void collection_view::start_ring(const std::string& vistel) {
    handling_.ringed = vistel;
    ring_time_.start(theme::current().motion.vistel_ring);
}

QSize collection_view::picture_size(const std::string& vistel) const {
    if (!find(vistel)) return {};
    const QRect view = vistel == enlarged() ? rect() : geometry_.home(vistel);
    const QRect fitted = picture_in(view, geometry_.aspect_of(vistel));
    const double ratio = devicePixelRatioF();
    return {static_cast<int>(std::lround(fitted.width() * ratio)),
            static_cast<int>(std::lround(fitted.height() * ratio))};
}

QRect collection_view::place_of(const std::string& vistel) const {
    if (!enlarged().empty() && enlarged() != vistel) return {};
    return geometry_.place(vistel);
}

QString collection_view::words_in(const std::string& vistel) const {
    const vistel_tile* one = find(vistel);
    return one ? words_in_place(*one) : QString();
}

std::string collection_view::current() const {
    if (!enlarged().empty()) return enlarged();
    return geometry_.has(handling_.chosen) ? handling_.chosen : geometry_.first();
}

void collection_view::set_current(const std::string& vistel) {
    if (!find(vistel) || vistel == current()) return;
    handling_.chosen = vistel;
    update();
    Q_EMIT current_changed();
}

void collection_view::set_aligning(bool aligning) {
    if (handling_.is_aligning == aligning) return;
    input_.end_drag(false);
    handling_.is_aligning = aligning;
    update();
}

void collection_view::set_note(const std::string& vistel, const QString& words) {
    vistel_tile* one = find(vistel);
    if (!one || one->note == words) return;
    one->note = words;
    update_place(vistel);
}

QString collection_view::note_in(const std::string& vistel) const {
    const vistel_tile* one = find(vistel);
    return one ? one->note : QString();
}

void collection_view::set_has_collection(bool has_collection) {
    has_collection_ = has_collection;
    update();
}

void collection_view::set_changeable(bool changeable) {
    handling_.is_changeable = changeable;
    if (!changeable) input_.end_drag(false);
    update();
}

vistel_arrangement collection_view::arrangement() const {
    return geometry_.arrangement();
}

double collection_view::picture_aspect() const {
    return geometry_.aspect_of(geometry_.first());
}

std::string collection_view::vistel_at(const QPoint& point) const {
    return geometry_.at(point);
}

QRect collection_view::chip_of(const std::string& vistel) const {
    const vistel_tile* one = find(vistel);
    return one ? chip_layer::chip_in(geometry_.place(vistel), *one) : QRect();
}

QString collection_view::chip_words(const std::string& vistel) const {
    const vistel_tile* one = find(vistel);
    return one ? chip_words_of(*one) : QString();
}

bool collection_view::has_picture(const std::string& vistel) const {
    const vistel_tile* one = find(vistel);
    return one && !one->picture.isNull();
}

QSize collection_view::minimumSizeHint() const {
    const theme_metrics& metrics = theme::current().metrics;
    return {metrics.small_code_window_width, metrics.small_code_window_width / 2};
}

int collection_view::offset() const {
    return geometry_.offset();
}

void collection_view::set_offset(double offset) {
    geometry_.want_offset(offset);
    lay_out();
}

void collection_view::bring_into_sight(const std::string& vistel) {
    scrolling_.scroll_to(geometry_.offset_showing(vistel));
}

bool collection_view::is_in_sight(const std::string& vistel) const {
    return geometry_.is_in_sight(vistel);
}

void collection_view::lay_out() {
    const bool is_elsewhere = geometry_.lay_out(rect(), scrolling_.bar_width());
    scrolling_.show_layout();
    if (is_elsewhere) Q_EMIT scrolled(offset());
    Q_EMIT sizes_changed();
    Q_EMIT sight_changed();
    update();
}

void collection_view::follow_scroll(int offset) {
    geometry_.scroll_to(offset);
    input_.follow_scroll();
    update();
    Q_EMIT sight_changed();
    Q_EMIT scrolled(offset);
}

void collection_view::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), theme::current().video_surround);
    if (geometry_.empty()) return paint_empty(painter);
    handling_.has_focus = hasFocus();
    const std::string& enlarged = geometry_.enlarged();
    const std::string& leaving = geometry_.leaving();
    for (const std::string& vistel : geometry_.from_back()) {
        const bool on_top = vistel == enlarged || vistel == leaving;
        if (on_top || (!enlarged.empty() && !geometry_.is_growing())) continue;
        if (geometry_.place(vistel).intersects(event->rect())) paint_vistel(painter, vistel);
    }
    for (const auto* vistel : {&leaving, &enlarged}) {
        if (!vistel->empty()) paint_vistel(painter, *vistel);
    }
    for (const collection_layer* layer : layers_) layer->paint_above(painter);
}

void collection_view::paint_vistel(QPainter& painter, const std::string& vistel) const {
    const QRect place = geometry_.place(vistel);
    const QRect picture = picture_in(place, geometry_.aspect_of(vistel));
    for (const collection_layer* layer : layers_) layer->paint_vistel(painter, *find(vistel), place, picture);
}

void collection_view::paint_empty(QPainter& painter) const {
    if (middle_ && middle_->parentWidget() == this && middle_->isVisible()) return;
    painter.setFont(theme::font(type_step::secondary));
    painter.setPen(theme::dark().muted);
    const QString words =
        has_collection_ ? tr("There are no movies yet. Space starts the clock, and what is coded is kept.\n"
                             "Drop movies here to add them.")
                        : tr("Nothing is open. Open a collection from the side bar,\nor drop movies here.");
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, words);
}

void collection_view::resizeEvent(QResizeEvent*) {
    lay_out();
}

bool collection_view::event(QEvent* event) {
    // Moved to a screen of another density: the same place has another number of pixels.
    if (event->type() == QEvent::ScreenChangeInternal) lay_out();
    if (event->type() == QEvent::ShortcutOverride && input_.takes_key(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const vistel_tile* one = find(vistel_at(help->pos()));
        // In full what the vistel may have no room for.
        const failure told = !one ? failure() : one->vistel.problem ? one->vistel.problem : one->difference;
        QToolTip::showText(help->globalPos(), words_of(told), this);
        return true;
    }
    return QWidget::event(event);
}

void collection_view::mousePressEvent(QMouseEvent* event) {
    input_.press(*event);
}
void collection_view::mouseMoveEvent(QMouseEvent* event) {
    input_.move(*event);
}
void collection_view::mouseReleaseEvent(QMouseEvent* event) {
    input_.release(*event);
}
void collection_view::mouseDoubleClickEvent(QMouseEvent* event) {
    input_.double_click(*event);
}
void collection_view::leaveEvent(QEvent*) {
    input_.leave();
}
void collection_view::contextMenuEvent(QContextMenuEvent* event) {
    input_.open_menu(*event);
}

void collection_view::wheelEvent(QWheelEvent* event) {
    if (!scrolling_.turn(*event)) return event->ignore();
    event->accept();
    if (!handling_.drag) input_.hover(event->position().toPoint());
}

void collection_view::keyPressEvent(QKeyEvent* event) {
    if (!input_.takes_key(*event)) return QWidget::keyPressEvent(event);
    input_.press_key(*event);
}

void collection_view::focusInEvent(QFocusEvent* event) {
    update();
    QWidget::focusInEvent(event);
}
void collection_view::focusOutEvent(QFocusEvent* event) {
    update();
    QWidget::focusOutEvent(event);
}

void collection_view::dragEnterEvent(QDragEnterEvent* event) {
    // What is no movie goes on to the window, which opens it; so does everything while no collection is open.
    if (!has_collection_ || !input_.takes_drop(*event)) return event->ignore();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    input_.hold_drop(*event);
}

void collection_view::dragMoveEvent(QDragMoveEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
    input_.hold_drop(*event);
}

void collection_view::dragLeaveEvent(QDragLeaveEvent*) {
    input_.leave_drop();
}

void collection_view::dropEvent(QDropEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
    input_.drop(*event);
}

}  // namespace vistels
