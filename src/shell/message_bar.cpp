// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/message_bar.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include "shell/controls.h"
#include "shell/icons.h"
#include "shell/theme.h"

namespace vistels {

namespace {

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
    hide();
}

void message_bar::tell(user_message message) {
    waiting_.push_back(std::move(message));
    waiting_.size() == 1 ? show_first() : show_detail();
}

QString message_bar::headline() const {
    return waiting_.empty() ? QString() : waiting_.front().headline;
}

QString message_bar::text() const {
    return waiting_.empty() ? QString() : waiting_.front().text;
}

void message_bar::clear() {
    waiting_.clear();
    hide();
}

void message_bar::show_first() {
    while (QLayoutItem* item = buttons_->takeAt(0)) {
        if (item->widget()) item->widget()->deleteLater();
        delete item;
    }
    setVisible(!waiting_.empty());
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
    update();
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
    const auto does = waiting_.front().choices[index].does;
    waiting_.pop_front();
    show_first();
    if (does) does();
}

void message_bar::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    painter.fillRect(rect(), look.raised);
    painter.fillRect(QRect(0, height() - look.metrics.line, width(), look.metrics.line), look.edge);
    if (waiting_.empty()) return;
    const QColor tone = tone_colour(look, waiting_.front().kind);
    painter.fillRect(QRect(0, 0, look.metrics.grid, height()), tone);
    painter.drawPixmap(icon_->pos(), icon_pixmap(tone_icon(waiting_.front().kind), tone, look.metrics.icon,
                                                 devicePixelRatioF()));
}

std::vector<user_message> messages_of_opening(const QString& event, std::size_t recovered_edits,
                                              const std::vector<std::string>& messages) {
    std::vector<user_message> all;
    if (recovered_edits > 0) {
        user_message told;
        told.headline = QObject::tr("Vistels was closed before it had saved");
        told.text = recovered_edits == 1
                        ? QObject::tr("1 change was put back into the timeline of “%1”.").arg(event)
                        : QObject::tr("All %1 changes since then were put back into the timeline of “%2”.")
                              .arg(recovered_edits)
                              .arg(event);
        all.push_back(std::move(told));
    }
    for (const auto& message : messages) {
        user_message told;
        told.headline = QObject::tr("Something in “%1” needs a look").arg(event);
        told.text = QString::fromStdString(message);
        all.push_back(std::move(told));
    }
    return all;
}

}  // namespace vistels
