// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/collection_view.h"

#include <QContextMenuEvent>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QRegularExpression>
#include <QStyle>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "shell/icons.h"
#include "shell/theme.h"
#include "shell/theme_time_text.h"
#include "shell/vistel_layout.h"

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
    growth_.setStartValue(0.0);
    growth_.setEndValue(1.0);
    growth_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&growth_, &QVariantAnimation::valueChanged, this, [this] { update(); });
    connect(&growth_, &QVariantAnimation::finished, this, [this] {
        leaving_.clear();
        update();
    });
    ring_time_.setSingleShot(true);
    connect(&ring_time_, &QTimer::timeout, this, [this] {
        ringed_.clear();
        update();
    });
}

void collection_view::set_vistels(std::vector<shown_vistel> vistels) {
    std::vector<tile> tiles;
    for (auto& one : vistels) {
        // What is on show stays until its next picture.
        const tile* before = find(one.uuid);
        tile made = before ? *before : tile();
        made.vistel = std::move(one);
        tiles.push_back(std::move(made));
    }
    tiles_ = std::move(tiles);
    if (!find(enlarged_)) enlarged_.clear();
    leaving_.clear();
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

void collection_view::set_gap(const std::string& vistel, double seconds) {
    tile* one = find(vistel);
    if (!one || (one->in_gap && (one->gap_end == seconds || !std::isfinite(seconds + one->gap_end)))) return;
    one->in_gap = true;
    one->gap_end = seconds;
    one->picture = {};
    update(place(*one));
}

void collection_view::set_problem(const std::string& vistel, const QString& problem) {
    tile* one = find(vistel);
    if (!one || one->vistel.problem == problem) return;
    one->vistel.problem = problem;
    update();
}

void collection_view::set_sound(const std::string& vistel) {
    for (auto& one : tiles_) one.vistel.has_sound = one.vistel.uuid == vistel;
    update();
}

void collection_view::set_enlarged(const std::string& vistel) {
    const std::string next = find(vistel) ? vistel : std::string();
    if (next == enlarged_) return;
    leaving_ = enlarged_;
    enlarged_ = next;
    start_ring(enlarged_.empty() ? leaving_ : enlarged_);
    const bool moves = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    growth_.stop();
    growth_.setDuration(moves ? theme::current().motion.change : 0);
    growth_.start();
    Q_EMIT sizes_changed();
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

void collection_view::lay_out() {
    std::vector<rectangle> frames;
    for (const auto& one : tiles_) frames.push_back(one.vistel.frame);
    area_ = video_area(rect(), frames, tiles_.empty() ? 0 : tiles_.front().aspect);
    Q_EMIT sizes_changed();
    update();
}

QRect collection_view::home_of(const tile& one) const {
    return view_of(area_, one.vistel.frame, theme::current().metrics.vistel_gap);
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
    if (!one->in_gap) return {};
    return std::isfinite(one->gap_end)
               ? tr("No picture until %1").arg(time_text(one->gap_end, time_form::clock))
               : tr("No picture from here on");
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

bool collection_view::event(QEvent* event) {
    // Moved to a screen of another density: the same place has another number of pixels.
    if (event->type() == QEvent::ScreenChangeInternal) lay_out();
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const tile* one = tile_at(help->pos());
        QToolTip::showText(help->globalPos(), one ? one->vistel.problem : QString(), this);
        return true;
    }
    return QWidget::event(event);
}

void collection_view::paintEvent(QPaintEvent* event) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.fillRect(event->rect(), look.video_surround);
    if (tiles_.empty()) {
        painter.setFont(theme::font(type_step::secondary));
        painter.setPen(theme::dark().muted);
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         tr("Nothing is open. Open a collection from the side bar,\nor drop movies here."));
        return;
    }
    const bool moving = growth_.state() == QAbstractAnimation::Running;
    for (const auto& one : tiles_) {
        const bool on_top = one.vistel.uuid == enlarged_ || one.vistel.uuid == leaving_;
        if (on_top || (!enlarged_.empty() && !moving)) continue;
        if (place(one).intersects(event->rect())) paint_tile(painter, one);
    }
    for (const auto* uuid : {&leaving_, &enlarged_}) {
        if (const tile* one = uuid->empty() ? nullptr : find(*uuid)) paint_tile(painter, *one);
    }
}

void collection_view::paint_tile(QPainter& painter, const tile& one) const {
    const theme& look = theme::current();
    const QRect view = place(one);
    const bool has_picture = !one.picture.isNull() && one.vistel.problem.isEmpty() && !one.in_gap;
    if (has_picture) {
        const QRect target = picture_in(view, one.aspect);
        if (target != view) painter.fillRect(view, look.video_surround);
        painter.drawImage(target, one.picture);
    } else {
        painter.fillRect(view, look.video_surround);
        paint_words(painter, view, one);
    }
    if (one.vistel.problem.isEmpty()) paint_chip(painter, view, one);
    if (one.vistel.uuid == ringed_) {
        const double half = look.metrics.vistel_ring / 2.0;
        painter.setPen(QPen(look.video_label, look.metrics.vistel_ring));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(view).adjusted(half, half, -half, -half));
    }
}

void collection_view::paint_words(QPainter& painter, const QRect& view, const tile& one) const {
    // The surround is dark in both themes, so the words are the dark theme's.
    const theme& look = theme::dark();
    const theme_metrics& metrics = look.metrics;
    QRect inside =
        view.adjusted(metrics.group_gap, metrics.wide_padding, -metrics.group_gap, -metrics.wide_padding);
    const QString words = words_in(one.vistel.uuid);
    if (one.vistel.problem.isEmpty()) {
        painter.setFont(theme::font(type_step::secondary));
        painter.setPen(look.muted);
        painter.drawText(inside, Qt::AlignCenter | Qt::TextWordWrap, words);
        return;
    }
    painter.drawPixmap(inside.topLeft(), icon_pixmap(QStringLiteral("missing-movie"), look.warning,
                                                     metrics.icon, devicePixelRatioF()));
    const QFont strong = theme::font(type_step::title);
    const QFontMetrics strong_metrics(strong);
    QRect head = inside.adjusted(metrics.icon + metrics.padding, 0, 0, 0);
    head.setHeight(std::max(metrics.icon, strong_metrics.height()));
    painter.setFont(strong);
    painter.setPen(look.warning);
    painter.drawText(
        head, Qt::AlignLeft | Qt::AlignVCenter,
        strong_metrics.elidedText(tr("%1: no picture").arg(one.vistel.name), Qt::ElideRight, head.width()));
    inside.setTop(head.bottom() + metrics.padding);
    const QFont usual = theme::font(type_step::secondary);
    const int needed = QFontMetrics(usual).boundingRect(inside, Qt::TextWordWrap, words).height();
    painter.setFont(needed <= inside.height() ? usual : theme::font(type_step::smallest));
    painter.setPen(look.text);
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, words);
}

void collection_view::paint_chip(QPainter& painter, const QRect& view, const tile& one) const {
    const theme& look = theme::current();
    const theme_metrics& metrics = look.metrics;
    const QFont font = theme::font(type_step::secondary_strong);
    const QFontMetrics words(font);
    int width = words.horizontalAdvance(one.vistel.name) + 2 * metrics.padding;
    if (one.vistel.has_sound) width += metrics.icon + metrics.grid;
    const int height = metrics.vistel_label_height;
    QRect chip(view.left() + metrics.padding, view.bottom() - metrics.padding - height + 1, width, height);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.video_label_ground);
    painter.drawRoundedRect(chip, metrics.radius_clip, metrics.radius_clip);
    chip.adjust(metrics.padding, 0, -metrics.padding, 0);
    if (one.vistel.has_sound) {
        painter.drawPixmap(
            chip.left(), chip.top() + (height - metrics.icon) / 2,
            icon_pixmap(QStringLiteral("volume"), look.video_label, metrics.icon, devicePixelRatioF()));
        chip.setLeft(chip.left() + metrics.icon + metrics.grid);
    }
    painter.setFont(font);
    painter.setPen(look.video_label);
    painter.drawText(chip, Qt::AlignLeft | Qt::AlignVCenter, one.vistel.name);
    painter.restore();
}

const collection_view::tile* collection_view::tile_at(const QPoint& point) const {
    if (!enlarged_.empty()) return find(enlarged_);
    for (const auto& one : tiles_) {
        if (place(one).contains(point)) return &one;
    }
    return nullptr;
}

void collection_view::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const tile* one = tile_at(event->position().toPoint());
    if (!one) return;
    Q_EMIT enlarge_asked(enlarged_.empty() ? QString::fromStdString(one->vistel.uuid) : QString());
}

void collection_view::contextMenuEvent(QContextMenuEvent* event) {
    const tile* one = tile_at(event->pos());
    if (!one) return;
    const QString uuid = QString::fromStdString(one->vistel.uuid);
    const bool is_large = !enlarged_.empty();
    const bool is_heard = one->vistel.has_sound;
    QMenu menu(this);
    QAction* size =
        menu.addAction(is_large ? tr("Show All Vistels") : tr("Enlarge “%1”").arg(one->vistel.name));
    QAction* sound = menu.addAction(tr("Hear “%1”").arg(one->vistel.name));
    sound->setEnabled(!is_heard);
    const QAction* chosen = menu.exec(event->globalPos());
    if (chosen == size) Q_EMIT enlarge_asked(is_large ? QString() : uuid);
    if (chosen == sound) Q_EMIT sound_asked(uuid);
}

}  // namespace vistels
