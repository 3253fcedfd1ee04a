// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/note_popover.h"

#include <QFocusEvent>
#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

#include "app/event/open_event.h"
#include "logger/press_engine.h"
#include "shell/event/event_notices.h"
#include "shell/kit/controls.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/theme.h"
#include "shell/panes/inspector/note_field.h"
#include "shell/window/window_metrics.h"
#include "timeline/edits/clip_operations.h"

namespace vistels {

note_popover::note_popover(QWidget& window, event_notices& notices)
    : popover(&window, Qt::Widget),
      window_(window),
      notices_(notices),
      title_(make_label({}, type_step::title, QStringLiteral("title"), this)),
      field_(new note_field(this)) {
    setObjectName(QStringLiteral("press_note"));
    field_->setObjectName(QStringLiteral("press_note.text"));
    field_->set_acceptor(
        [this](const std::string& clip, const std::string& text) { return keep(clip, text); });
    field_->installEventFilter(this);
    const theme_metrics& metrics = theme::current().metrics;
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.wide_padding, metrics.padding, metrics.wide_padding,
                               metrics.wide_padding);
    column->setSpacing(metrics.grid);
    column->addWidget(title_);
    column->addWidget(field_);
    column->addWidget(make_label(tr("Ctrl+Return: done · Escape: as it was"), type_step::secondary,
                                 QStringLiteral("muted"), this));
    hide();
}

void note_popover::set_event(open_event* event) {
    field_->set_note({}, {});
    hide();
    event_ = event;
    wanted_.disconnect();
    if (!event) return;
    wanted_ = event->logger().note_wanted.connect(
        [this](const std::string& clip, const std::string& button) { open(clip, button); });
}

void note_popover::keep_typed() {
    field_->commit();
}

void note_popover::open(const std::string& clip, const std::string& button) {
    const auto place = event_->timeline().timeline().find_clip(clip);
    const auto* pressed = event_->logger().button(button);
    if (!place || !pressed) return;
    title_->setText(tr("Note: %1").arg(QString::fromStdString(pressed->name())));
    setAccessibleName(title_->text());
    field_->set_note(clip, place->clip->note_text());
    place_beside(button);
    show();
    raise();
    field_->setFocus();
}

bool note_popover::keep(const std::string& clip, const std::string& text) {
    auto edit = plan_note(event_->timeline().timeline(), clip, text);
    const result<void> done = edit ? event_->timeline().apply(std::move(edit).value()) : edit.error();
    if (!done) notices_.refuse_change(words_of(done.error()));
    return done.ok();
}

// Where the button is not seen, in the middle.
void note_popover::place_beside(const std::string& button) {
    const QSize size(window_sizes.press_note_width, sizeHint().height());
    const auto* beside =
        window_.findChild<QWidget*>(QStringLiteral("code_button.") + QString::fromStdString(button));
    QPoint corner((window_.width() - size.width()) / 2, (window_.height() - size.height()) / 2);
    if (beside && beside->isVisible()) {
        const int gap = theme::current().metrics.grid;
        const QRect at(beside->mapTo(&window_, QPoint(0, 0)), beside->size());
        corner = {at.right() + gap, at.top()};
        if (corner.x() + size.width() > window_.width()) corner.setX(at.left() - gap - size.width());
    }
    setGeometry(std::clamp(corner.x(), 0, std::max(0, window_.width() - size.width())),
                std::clamp(corner.y(), 0, std::max(0, window_.height() - size.height())), size.width(),
                size.height());
}

bool note_popover::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        const bool is_left = reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason;
        // The field hands over what was typed first.
        const auto leave = [this] {
            if (!field_->hasFocus()) hide();
        };
        if (is_left) QMetaObject::invokeMethod(this, leave, Qt::QueuedConnection);
    }
    return popover::eventFilter(watched, event);
}

}  // namespace vistels
