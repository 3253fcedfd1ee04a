// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/link_arrows.h"

#include <QLineF>
#include <QPainter>
#include <algorithm>
#include <chrono>
#include <utility>

#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_metrics.h"
#include "shell/panes/code_window/link_words.h"

namespace vistels {

namespace {

constexpr std::chrono::milliseconds frame(16);
constexpr std::size_t most_runs = 200;  // at once
constexpr double sign_share = 0.62;     // of the way
constexpr double head_angle = 25;       // degrees on each side

// Where the line from the middle of a face leaves it.
QPointF edge_of(const QRectF& face, const QPointF& towards) {
    const QLineF way(face.center(), towards);
    const QLineF sides[] = {{face.topLeft(), face.topRight()},
                            {face.topRight(), face.bottomRight()},
                            {face.bottomRight(), face.bottomLeft()},
                            {face.bottomLeft(), face.topLeft()}};
    for (const QLineF& side : sides) {
        QPointF met;
        if (way.intersects(side, &met) == QLineF::BoundedIntersection) return met;
    }
    return face.center();
}

}  // namespace

link_arrows::link_arrows(QWidget* parent, std::function<QRectF(const std::string&)> place_of)
    : QWidget(parent), place_of_(std::move(place_of)) {
    setObjectName(QStringLiteral("link_arrows"));
    setAccessibleName(tr("Links of the buttons"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    ticks_.setInterval(frame);
    connect(&ticks_, &QTimer::timeout, this, &link_arrows::tick);
    clock_.start();
}

void link_arrows::set_links(std::vector<code_link> links) {
    links_ = std::move(links);
    runs_.clear();
    ticks_.stop();
    update();
}

void link_arrows::set_current(const std::string& button) {
    if (button == current_) return;
    current_ = button;
    update();
}

void link_arrows::run(const std::string& from, const std::string& to, const link_kind& kind) {
    if (!isVisible() || runs_.size() >= most_runs) return;
    const auto found = std::find_if(links_.begin(), links_.end(), [&](const code_link& one) {
        return one.from == from && one.to == to && one.kind == &kind;
    });
    if (found == links_.end()) return;
    runs_.push_back({static_cast<std::size_t>(found - links_.begin()), clock_.elapsed()});
    if (!ticks_.isActive()) ticks_.start();
    update();
}

void link_arrows::tick() {
    const qint64 over = clock_.elapsed() - theme::current().motion.ping;
    std::erase_if(runs_, [&](const running& one) { return one.since <= over; });
    if (runs_.empty()) ticks_.stop();
    update();
}

link_arrows::arrow link_arrows::arrow_of(const code_link& link) const {
    const QRectF from = place_of_(link.from);
    const QRectF to = place_of_(link.to);
    return {edge_of(from, to.center()), edge_of(to, from.center())};
}

void link_arrows::paint_link(QPainter& painter, const code_link& link) const {
    const theme& look = theme::current();
    const arrow drawn = arrow_of(link);
    QLineF line(drawn.from, drawn.to);
    if (line.length() < 1) return;
    const bool is_aside = !current_.empty() && link.from != current_ && link.to != current_;
    painter.setOpacity(is_aside ? look.disabled_share : 1);
    const QColor colour = look.item_colour(static_cast<std::size_t>(link.kind->effect));
    const Qt::PenStyle style = link.kind->has_condition() ? Qt::DashLine : Qt::SolidLine;
    const double width = code_window_sizes.link_width;
    painter.setPen(QPen(look.clip_ink_dark, 2 * width, style));
    painter.drawLine(line);
    painter.setPen(QPen(colour, width, style));
    painter.drawLine(line);
    QPolygonF head{line.p2()};
    for (const double side : {-head_angle, head_angle}) {
        QLineF edge(line.p2(), line.p1());
        edge.setLength(code_window_sizes.link_head);
        edge.setAngle(edge.angle() + side);
        head << edge.p2();
    }
    painter.setPen(QPen(look.clip_ink_dark, look.metrics.line));
    painter.setBrush(colour);
    painter.drawPolygon(head);
    const double radius = code_window_sizes.link_sign / 2.0;
    const QPointF at = line.pointAt(sign_share);
    const QRectF sign(at.x() - radius, at.y() - radius, 2 * radius, 2 * radius);
    painter.drawEllipse(sign);
    painter.setFont(theme::font(type_step::secondary_strong));
    painter.setPen(ink_on(look, colour));
    painter.drawText(sign, Qt::AlignCenter, link_sign(*link.kind));
}

void link_arrows::paint_runs(QPainter& painter) {
    const theme& look = theme::current();
    painter.setOpacity(1);
    for (const running& one : runs_) {
        const arrow drawn = arrow_of(links_[one.link]);
        const double share = std::clamp(
            static_cast<double>(clock_.elapsed() - one.since) / std::max(1, look.motion.ping), 0.0, 1.0);
        painter.setPen(QPen(look.clip_ink_dark, look.metrics.focus_ring));
        painter.setBrush(look.selection);
        painter.drawEllipse(QLineF(drawn.from, drawn.to).pointAt(share), code_window_sizes.link_run,
                            code_window_sizes.link_run);
    }
}

void link_arrows::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const code_link& link : links_) {
        if (link.from != link.to) paint_link(painter, link);
    }
    paint_runs(painter);
}

}  // namespace vistels
