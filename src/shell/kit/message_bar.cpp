// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/message_bar.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <algorithm>
#include <chrono>

#include "shell/kit/controls.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

constexpr auto time_to_read = std::chrono::seconds(8);

QColor tone_colour(const theme& look, user_message::tone kind) {
    switch (kind) {
        case user_message::tone::warning:
            return look.warning;
        case user_message::tone::error:
            return look.live;
        case user_message::tone::good:
            return look.good;
    }
    return look.text;
}

QString tone_icon(user_message::tone kind) {
    return kind == user_message::tone::good ? QStringLiteral("check") : QStringLiteral("warning");
}

}  // namespace

message_bar::message_bar(QWidget* parent)
    : QWidget(parent),
      icon_(new QWidget(this)),
      headline_(make_label({}, type_step::headline, {}, this)),
      text_(make_label({}, type_step::body, {}, this)),
      detail_(make_label({}, type_step::secondary, QStringLiteral("muted"), this)),
      buttons_(new QHBoxLayout) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("message"));
    headline_->setObjectName(QStringLiteral("message.headline"));
    text_->setObjectName(QStringLiteral("message.text"));
    for (QLabel* label : {headline_, text_, detail_}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
    }
    icon_->setFixedSize(metrics.icon, metrics.icon);

    auto* head = new QHBoxLayout;
    head->setSpacing(metrics.padding);
    head->addWidget(icon_);
    head->addWidget(headline_, 1);
    buttons_->setSpacing(metrics.padding);
    auto* words = new QVBoxLayout;
    words->setSpacing(metrics.grid);
    words->addLayout(head);
    words->addWidget(text_);
    words->addWidget(detail_);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(metrics.group_gap, metrics.wide_padding, metrics.group_gap, metrics.wide_padding);
    row->setSpacing(metrics.group_gap);
    row->addLayout(words, 1);
    row->addLayout(buttons_);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    going_.setObjectName(QStringLiteral("message.going"));
    going_.setSingleShot(true);
    going_.setInterval(time_to_read);
    connect(&going_, &QTimer::timeout, this, [this] { answer(0); });
    hide();
}

void message_bar::tell(user_message message) {
    if (message.key.isEmpty()) {
        // Behind the others that happened, before the states that last.
        const auto at = std::find_if(waiting_.begin(), waiting_.end(),
                                     [](const user_message& one) { return !one.key.isEmpty(); });
        const bool is_first = at == waiting_.begin();
        waiting_.insert(at, std::move(message));
        return is_first ? show_first() : show_detail();
    }
    if (const auto gone = sent_away_.find(message.key); gone != sent_away_.end()) {
        if (gone->second == message.text) return;
        sent_away_.erase(gone);
    }
    const auto same = std::find_if(waiting_.begin(), waiting_.end(),
                                   [&](const user_message& one) { return one.key == message.key; });
    if (message.comes_first) {
        if (same != waiting_.end()) waiting_.erase(same);
        waiting_.push_front(std::move(message));
        return show_first();
    }
    if (same == waiting_.end()) {
        waiting_.push_back(std::move(message));
        return waiting_.size() == 1 ? show_first() : show_detail();
    }
    const bool is_news = same->text != message.text || same->headline != message.headline;
    *same = std::move(message);
    if (same == waiting_.begin() && is_news) show_first();
}

void message_bar::withdraw(const QString& key) {
    sent_away_.erase(key);
    const auto found = std::find_if(waiting_.begin(), waiting_.end(),
                                    [&](const user_message& one) { return one.key == key; });
    if (found == waiting_.end()) return;
    const bool was_first = found == waiting_.begin();
    waiting_.erase(found);
    was_first ? show_first() : show_detail();
}

QString message_bar::headline() const {
    return waiting_.empty() ? QString() : waiting_.front().headline;
}

QString message_bar::text() const {
    return waiting_.empty() ? QString() : waiting_.front().text;
}

void message_bar::clear() {
    waiting_.clear();
    going_.stop();
    sent_away_.clear();
    Q_EMIT changing(false);
    hide();
}

void message_bar::show_first() {
    while (QLayoutItem* item = buttons_->takeAt(0)) {
        if (item->widget()) item->widget()->deleteLater();
        delete item;
    }
    Q_EMIT changing(!waiting_.empty());
    setVisible(!waiting_.empty());
    going_.stop();
    if (waiting_.empty()) return;
    user_message& message = waiting_.front();
    if (message.choices.empty()) message.choices.push_back({tr("Continue"), {}});
    headline_->setText(message.headline);
    text_->setText(message.text);
    text_->setVisible(!message.text.isEmpty());
    show_detail();
    setAccessibleName(message.headline);
    setAccessibleDescription(message.text);
    for (std::size_t i = 0; i < message.choices.size(); ++i) {
        auto* button =
            make_push_button(message.choices[i].words, i == 0 ? QStringLiteral("first") : QString(), this);
        button->setObjectName(QStringLiteral("message.choice.%1").arg(i));
        connect(button, &QPushButton::clicked, this, [this, i] { answer(i); });
        buttons_->addWidget(button, 0, Qt::AlignTop);
    }
    start_going();
    update();
}

void message_bar::start_going() {
    if (waiting_.empty() || underMouse()) return;
    const user_message& message = waiting_.front();
    const bool asks = message.choices.size() > 1 || message.choices.front().does;
    if (message.kind == user_message::tone::good && message.key.isEmpty() && !asks) going_.start();
}

void message_bar::enterEvent(QEnterEvent* event) {
    going_.stop();
    QWidget::enterEvent(event);
}

void message_bar::leaveEvent(QEvent* event) {
    start_going();
    QWidget::leaveEvent(event);
}

void message_bar::show_detail() {
    QStringList parts;
    if (!waiting_.front().detail.isEmpty()) parts << waiting_.front().detail;
    const auto more = waiting_.size() - 1;
    if (more > 0)
        parts << (more == 1 ? tr("1 more message follows.") : tr("%1 more messages follow.").arg(more));
    detail_->setText(parts.join(QLatin1Char(' ')));
    detail_->setVisible(!parts.isEmpty());
}

void message_bar::answer(std::size_t index) {
    if (waiting_.empty() || index >= waiting_.front().choices.size()) return;
    const user_message::choice chosen = waiting_.front().choices[index];
    if (!chosen.keeps) {
        if (const QString key = waiting_.front().key; !key.isEmpty()) sent_away_[key] = waiting_.front().text;
        waiting_.pop_front();
        show_first();
    }
    if (chosen.does) chosen.does();
}

void message_bar::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.fillRect(rect(), look.raised);
    painter.fillRect(QRect(0, 0, width(), look.metrics.line), look.edge);
    if (waiting_.empty()) return;
    const QColor tone = tone_colour(look, waiting_.front().kind);
    painter.fillRect(QRect(0, 0, look.metrics.grid, height()), tone);
    painter.drawPixmap(icon_->pos(), icon_pixmap(tone_icon(waiting_.front().kind), tone, look.metrics.icon,
                                                 devicePixelRatioF()));
}

}  // namespace vistels
