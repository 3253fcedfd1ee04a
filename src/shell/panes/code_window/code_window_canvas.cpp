// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/code_window_canvas.h"

#include <QPainter>
#include <QTouchEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "shell/keys/event_stamp.h"
#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_metrics.h"
#include "util/clock.h"

namespace vistels {

double code_window_scale(const std::vector<code_button>& buttons, double content, double available) {
    if (content <= available || content <= 0) return 1;
    double least = 0;
    for (const code_button& button : buttons) {
        least = std::max({least, code_window_sizes.button_least_width / std::max(button.place.width(), 1.0),
                          code_window_sizes.button_least_height / std::max(button.place.height(), 1.0)});
    }
    return std::clamp(available / content, std::min(least, 1.0), 1.0);
}

code_window_canvas::code_window_canvas(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("code_window_canvas"));
    setAccessibleName(tr("Code window"));
    setAttribute(Qt::WA_AcceptTouchEvents);
}

// Buttons that go lose the focus and let go, which must not find what is gone already.
code_window_canvas::~code_window_canvas() {
    for (code_window_button* each : widgets_) each->disconnect(this);
}

// What makes edits of the code window while buttons are held leaves them as they are.
bool code_window_canvas::set_looks(const std::vector<code_button>& buttons) {
    const auto is_same = [](const code_button& a, const code_button& b) {
        return a.uuid == b.uuid && a.place == b.place && a.depth == b.depth;
    };
    if (!std::equal(all_.begin(), all_.end(), buttons.begin(), buttons.end(), is_same)) return false;
    for (std::size_t i = 0; i < widgets_.size(); ++i) widgets_[i]->set_button(buttons[i]);
    return true;
}

void code_window_canvas::set_buttons(std::vector<code_button> buttons) {
    if (set_looks(buttons)) {
        all_ = std::move(buttons);
        return;
    }
    auto before = std::exchange(by_uuid_, {});
    widgets_.clear();
    all_ = std::move(buttons);
    for (const code_button& button : all_) {
        const auto known = before.extract(button.uuid);
        if (!known) {
            add(button);
            continue;
        }
        known.mapped()->set_button(button);
        widgets_.push_back(known.mapped());
        by_uuid_[button.uuid] = known.mapped();
    }
    // One of them may be telling of its press.
    for (const auto& [uuid, gone] : before) {
        gone->let_go();
        gone->hide();
        gone->disconnect(this);
        gone->deleteLater();
    }
    find_current();
    raise_by_depth();
    // The Tab key goes along the rows as they are seen, not as they were made.
    std::vector<code_window_button*> seen = widgets_;
    std::stable_sort(seen.begin(), seen.end(), [](const auto* a, const auto* b) {
        const QRectF& one = a->button().place;
        const QRectF& other = b->button().place;
        if (one.top() != other.top()) return one.top() < other.top();
        return one.left() < other.left();
    });
    for (std::size_t index = 1; index < seen.size(); ++index) setTabOrder(seen[index - 1], seen[index]);
    fit_to(pane_);
    update();
}

void code_window_canvas::find_current() {
    code_window_button* found = nullptr;
    for (code_window_button* each : widgets_) {
        if (each->underMouse()) found = each;
        if (!found && each->hasFocus()) found = each;
    }
    if (found == current_) return;
    current_ = found;
    Q_EMIT current_changed();
}

// Of the same depth in the order of the code window.
void code_window_canvas::raise_by_depth() {
    std::vector<code_window_button*> order = widgets_;
    std::stable_sort(order.begin(), order.end(),
                     [](const auto* a, const auto* b) { return a->button().depth < b->button().depth; });
    for (code_window_button* each : order) each->raise();
}

void code_window_canvas::add(const code_button& button) {
    auto* made = new code_window_button(button, this);
    const std::string uuid = button.uuid;
    connect(made, &code_window_button::went_down, this,
            [this, uuid](double clock_seconds, const QPointF& place, bool latches) {
                Q_EMIT went_down(uuid, clock_seconds, place, latches);
            });
    connect(made, &code_window_button::went_up, this,
            [this, uuid](double clock_seconds) { Q_EMIT went_up(uuid, clock_seconds); });
    connect(made, &code_window_button::attention_changed, this, &code_window_canvas::find_current);
    widgets_.push_back(made);
    by_uuid_[uuid] = made;
    if (const auto picture = pictures_.find(uuid); picture != pictures_.end())
        made->set_picture(picture->second);
    made->show();
}

code_window_button* code_window_canvas::button(const std::string& uuid) const {
    const auto found = by_uuid_.find(uuid);
    return found == by_uuid_.end() ? nullptr : found->second;
}

void code_window_canvas::set_ground(std::optional<QColor> ground) {
    ground_ = std::move(ground);
    update();
}

void code_window_canvas::set_pictures(std::map<std::string, QImage> pictures) {
    pictures_ = std::move(pictures);
    for (code_window_button* each : widgets_) {
        const auto found = pictures_.find(each->button().uuid);
        each->set_picture(found == pictures_.end() ? QImage() : found->second);
    }
}

void code_window_canvas::set_state(const std::string& uuid, const code_button_state& state) {
    if (code_window_button* found = button(uuid)) found->set_state(state);
}

void code_window_canvas::set_now(double collection_seconds) {
    for (code_window_button* each : widgets_) each->set_now(collection_seconds);
}

void code_window_canvas::let_go() {
    fingers_.clear();
    // What comes up may change the buttons.
    const std::vector<code_window_button*> all = widgets_;
    for (code_window_button* each : all) each->let_go();
}

std::size_t code_window_canvas::down_count() const {
    return static_cast<std::size_t>(std::count_if(widgets_.begin(), widgets_.end(),
                                                  [](const auto* each) { return each->state().is_down; }));
}

QSizeF code_window_canvas::content() const {
    QRectF whole;
    for (const code_button& button : all_) whole |= button.place;
    const int margin = code_window_sizes.button_margin;
    return {whole.right() + margin, whole.bottom() + margin};
}

void code_window_canvas::fit_to(const QSize& pane) {
    pane_ = pane;
    const QSizeF whole = content();
    scale_ = code_window_scale(all_, whole.width(), pane.width());
    const int margin = code_window_button::margin();
    for (code_window_button* each : widgets_) {
        const QRectF& place = each->button().place;
        // Edges are rounded, not sizes, so that equal gaps stay equal.
        const QRect face(QPoint(static_cast<int>(std::lround(place.left() * scale_)),
                                static_cast<int>(std::lround(place.top() * scale_))),
                         QPoint(static_cast<int>(std::lround(place.right() * scale_)) - 1,
                                static_cast<int>(std::lround(place.bottom() * scale_)) - 1));
        each->setGeometry(face.adjusted(-margin, -margin, margin, margin));
    }
    resize((whole * scale_).toSize().expandedTo(pane));
}

bool code_window_canvas::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
            if (touch(*static_cast<QTouchEvent*>(event))) return true;
            break;
        case QEvent::TouchCancel:
            lift_all(event_seconds(static_cast<QTouchEvent*>(event)->timestamp(), steady_clock().seconds()));
            return true;
        default:
            break;
    }
    return QWidget::event(event);
}

// Fingers may come as one sequence or each as its own: what counts is the number of each. False: none of them
// is on a button.
bool code_window_canvas::touch(QTouchEvent& event) {
    const double at = event_seconds(event.timestamp(), steady_clock().seconds());
    bool is_ours = false;
    for (const QEventPoint& finger : event.points()) {
        if (finger.state() == QEventPoint::Pressed) {
            is_ours = put_finger(finger, at) || is_ours;
        } else {
            is_ours = fingers_.contains(finger.id()) || is_ours;
            if (finger.state() == QEventPoint::Released) lift_finger(finger.id(), at);
        }
    }
    event.setAccepted(is_ours);
    return is_ours;
}

bool code_window_canvas::put_finger(const QEventPoint& finger, double clock_seconds) {
    const QPointF at = mapFromGlobal(finger.globalPosition());
    auto* found = qobject_cast<code_window_button*>(childAt(at.toPoint()));
    if (!found) return false;
    lift_finger(finger.id(), clock_seconds);  // its end was not told
    fingers_[finger.id()] = found->button().uuid;
    found->touch(finger.id(), found->mapFrom(this, at), clock_seconds);
    return true;
}

void code_window_canvas::lift_finger(int id, double clock_seconds) {
    const auto held = fingers_.extract(id);
    if (!held) return;
    if (code_window_button* found = button(held.mapped())) found->lift(id, clock_seconds);
}

void code_window_canvas::lift_all(double clock_seconds) {
    while (!fingers_.empty()) lift_finger(fingers_.begin()->first, clock_seconds);
}

void code_window_canvas::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.fillRect(rect(), ground_.value_or(look.pane));
    if (!all_.empty()) return;
    painter.setFont(theme::font(type_step::secondary));
    painter.setPen(ground_ ? legible_on(look.muted, *ground_) : look.muted);
    painter.drawText(rect(), Qt::AlignCenter, tr("No buttons"));
}

}  // namespace vistels
