// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/job_popover.h"

#include <QGridLayout>
#include <QLabel>
#include <QScreen>
#include <algorithm>

#include "shell/kit/controls.h"
#include "shell/kit/job_bar.h"
#include "shell/kit/job_metrics.h"
#include "shell/kit/job_words.h"
#include "shell/kit/theme.h"

namespace vistels {

job_popover::job_popover(job_list& list, QWidget* parent)
    : popover(parent), list_(list), column_(new QVBoxLayout(this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("jobs.list"));
    setAccessibleName(tr("Tasks"));
    setFixedWidth(job_sizes.popover_width);
    column_->setContentsMargins(metrics.group_gap, metrics.wide_padding, metrics.group_gap,
                                metrics.wide_padding);
    column_->setSpacing(metrics.wide_padding);
    count_ = make_label({}, type_step::secondary, QStringLiteral("muted"), this);
    auto* head = new QHBoxLayout;
    head->addWidget(make_label(tr("Tasks"), type_step::title, QStringLiteral("title"), this), 1);
    head->addWidget(count_);
    column_->addLayout(head);
    changed_ = list_.changed.connect([this] { follow(); });
    progressed_ = list_.progressed.connect([this](job_list::job_id id) {
        const auto shown = lines_.find(id);
        const auto status = shown == lines_.end() ? std::nullopt : list_.find(id);
        if (status) show_status(shown->second, *status);
    });
}

job_popover::line job_popover::add_line(const job_status& status) {
    const theme_metrics& metrics = theme::current().metrics;
    line made{};
    made.whole = new QWidget(this);
    made.title = new cut_label(type_step::body, {}, job_sizes.popover_width, made.whole);
    made.fact = make_label({}, type_step::secondary, QStringLiteral("muted"), made.whole);
    made.fact->setObjectName(QStringLiteral("jobs.fact.%1").arg(status.id));
    made.bar = new job_bar(made.whole);
    made.cancel = new icon_button(QStringLiteral("close"), {}, made.whole);
    made.cancel->set_size(metrics.push_button_height, metrics.push_button_height, metrics.icon);
    made.cancel->set_framed(true);
    made.cancel->setObjectName(QStringLiteral("jobs.cancel.%1").arg(status.id));
    connect(made.cancel, &QAbstractButton::clicked, this, [this, id = status.id] { list_.cancel(id); });
    auto* grid = new QGridLayout(made.whole);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(metrics.wide_padding);
    grid->setVerticalSpacing(metrics.grid);
    grid->addWidget(made.title, 0, 0);
    grid->addWidget(made.fact, 0, 1, Qt::AlignRight);
    grid->addWidget(made.bar, 1, 0, 1, 2);
    grid->addWidget(made.cancel, 0, 2, 2, 1, Qt::AlignVCenter);
    grid->setColumnStretch(0, 1);
    made.title->set_text(job_title(status));
    const QString words = QString::fromStdString(status.words);
    made.whole->setToolTip(words);
    made.bar->setAccessibleName(job_title(status));
    made.bar->setAccessibleDescription(words);
    column_->addWidget(made.whole);
    made.whole->show();
    return made;
}

void job_popover::show_status(const line& one, const job_status& status) {
    const bool can_stop = status.now != job_status::state::stopping;
    one.fact->setText(job_fact(status));
    one.bar->set_progress(status.progress);
    one.cancel->setEnabled(can_stop);
    one.cancel->set_tip(can_stop ? tr("Cancel “%1”; nothing is left half made").arg(job_title(status))
                                 : tr("Stopping; nothing is left half made"));
}

void job_popover::follow() {
    if (!isVisible()) return;
    std::map<job_list::job_id, line> before = std::exchange(lines_, {});
    std::size_t running = 0;
    for (const auto& status : list_.jobs()) {
        if (!status.lasts) continue;
        if (status.now != job_status::state::waiting) ++running;
        auto known = before.extract(status.id);
        auto& one = lines_[status.id] = known ? known.mapped() : add_line(status);
        show_status(one, status);
    }
    for (const auto& [id, gone] : before) {
        gone.whole->hide();
        gone.whole->deleteLater();
    }
    if (lines_.empty()) return hide();
    count_->setText(tr("%1 running").arg(running));
    if (!before.empty()) lines_.begin()->second.cancel->setFocus(Qt::PopupFocusReason);
    place();
}

void job_popover::show_below(const QWidget* control) {
    control_ = control;
    setVisible(true);
    follow();
    if (!lines_.empty()) lines_.begin()->second.cancel->setFocus(Qt::PopupFocusReason);
}

void job_popover::place() {
    column_->activate();
    resize(job_sizes.popover_width, column_->sizeHint().height());
    const QRect screen = control_->screen()->availableGeometry();
    const QPoint corner = control_->mapToGlobal(QPoint(control_->width(), control_->height()));
    move(std::clamp(corner.x() - width(), screen.left(),
                    std::max(screen.left(), screen.right() + 1 - width())),
         corner.y());
}

}  // namespace vistels
