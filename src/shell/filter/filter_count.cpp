// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/filter_count.h"

#include <QFontMetrics>
#include <QLocale>
#include <QPainter>
#include <algorithm>

#include "shell/filter/filter_entry.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

// With its separators, for people to read: "1,842".
QString counted(std::size_t number) {
    return QLocale().toString(static_cast<qulonglong>(number));
}

}  // namespace

filter_count::filter_count(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    set_counts(0, 0, false, false);
}

void filter_count::follow(const filter_entry* entry) {
    if (entry_) entry_->disconnect(this);
    entry_ = entry;
    if (!entry) return hide();
    const auto show = [this, entry] {
        const filter_standing& standing = entry->standing();
        set_counts(standing.passing, standing.total, entry->is_on(), standing.is_judging);
        setVisible(entry->has_source());
    };
    connect(entry, &filter_entry::standing_changed, this, show);
    show();
}

void filter_count::set_counts(std::size_t passing, std::size_t total, bool is_on, bool is_judging) {
    const QString before = counted(is_on ? passing : total);
    QString after = tr(" of %1").arg(counted(total));
    if (!is_on) after = total == 1 ? tr(" clip") : tr(" clips");
    if (before == before_ && after == after_ && is_judging == is_judging_) return;
    before_ = before;
    after_ = after;
    is_judging_ = is_judging;
    if (total_ != total) {
        total_ = total;
        updateGeometry();
    }
    setAccessibleName(is_on ? tr("%1 clips pass the filter").arg(words()) : words());
    setToolTip(is_on ? tr("%1 of %2 clips pass the filter").arg(before, counted(total))
                     : tr("Every clip passes: no filter is on"));
    update();
}

QSize filter_count::sizeHint() const {
    const QFontMetrics strong(theme::font(type_step::title));
    const QFontMetrics plain(theme::font(type_step::body));
    const QString most = counted(total_);
    const int of = strong.horizontalAdvance(most) + plain.horizontalAdvance(tr(" of %1").arg(most));
    const int all = strong.horizontalAdvance(most) + plain.horizontalAdvance(tr(" clips"));
    return {std::max(of, all) + theme::current().metrics.grid, theme::line_height(type_step::body)};
}

void filter_count::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    const QFont strong = theme::font(type_step::title);
    painter.setFont(strong);
    painter.setPen(is_judging_ ? look.muted : look.text);
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter, before_);
    painter.setFont(theme::font(type_step::body));
    painter.setPen(look.muted);
    const QRect rest = rect().adjusted(QFontMetrics(strong).horizontalAdvance(before_), 0, 0, 0);
    painter.drawText(rest, Qt::AlignLeft | Qt::AlignVCenter, after_);
}

}  // namespace vistels
