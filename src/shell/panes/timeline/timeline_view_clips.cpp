// SPDX-License-Identifier: GPL-3.0-or-later
// What a timeline pane does with the selected clips as a whole: the clipboard and the menu.
#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>

#include "shell/kit/colour_menu.h"
#include "shell/kit/controls.h"
#include "shell/kit/inspector_parts.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/timeline/timeline_canvas.h"
#include "shell/panes/timeline/timeline_names.h"
#include "shell/panes/timeline/timeline_state.h"
#include "shell/panes/timeline/timeline_view.h"
#include "timeline/edits/clip_edits.h"
#include "timeline/edits/clip_moving.h"
#include "util/property_list.h"

namespace vistels {

namespace {

constexpr const char* clips_mime_type = "application/x-vistels-clips";
constexpr const char* clipboard_name = "the clipboard";

}  // namespace

void timeline_view::split_at_playhead() {
    state_->split_at_playhead();
}

void timeline_view::copy_selected() {
    const auto clips = state_->copied();
    if (!clips) return;
    auto* copied = new QMimeData;
    const std::string stored = write_property_list(*clips);
    copied->setData(QLatin1String(clips_mime_type), QByteArray::fromStdString(stored));
    QStringList lines;
    for (const timeline_row& row : state_->rows()) {
        for (std::size_t at = 0; at < row.selected.size(); ++at) {
            const track_clip& one = row.selected[at];
            lines << QStringLiteral("%1\t%2\t%3")
                         .arg(row.name, time_text(one.start, time_form::clock),
                              time_text(one.end, time_form::clock));
        }
    }
    copied->setText(lines.join(QLatin1Char('\n')));
    QGuiApplication::clipboard()->setMimeData(copied);
}

void timeline_view::cut_selected() {
    if (state_->selected_count() == 0) return;
    copy_selected();
    delete_selected();
}

void timeline_view::paste() {
    const QMimeData* pasted = QGuiApplication::clipboard()->mimeData();
    const QByteArray stored = pasted ? pasted->data(QLatin1String(clips_mime_type)) : QByteArray();
    if (stored.isEmpty()) return;
    const auto read = read_property_list(stored.toStdString(), clipboard_name);
    if (read && read.value().dictionary()) state_->paste(*read.value().dictionary());
}

void timeline_view::set_draws(bool draws) {
    draw_->setChecked(draws);
    canvas_->set_draws(draws);
}

void timeline_view::add_row() {
    names_->add_row();
}

void timeline_view::add_to_menu(QMenu& menu) {
    QMenu* stars = menu.addMenu(tr("Stars"));
    for (int count = 0; count <= star_row::most_stars; ++count) {
        const QString words = count == 0 ? tr("None") : QString(count, QChar(0x2605));
        connect(stars->addAction(words), &QAction::triggered, this, [this, count] {
            state_->make(plan_clip_stars(state_->timeline(), state_->selected(), count));
        });
    }
    QMenu* colours = add_colour_menu(menu, tr("Colour"), [this](const colour& shade) {
        state_->make(plan_clip_colour(state_->timeline(), state_->selected(), shade));
    });
    connect(colours->addAction(tr("As the Row")), &QAction::triggered, this,
            [this] { state_->make(plan_clip_colour(state_->timeline(), state_->selected(), std::nullopt)); });
    QMenu* rows = menu.addMenu(tr("Move to Row"));
    for (const timeline_row& row : state_->rows()) {
        connect(rows->addAction(row.name), &QAction::triggered, this, [this, uuid = row.uuid] {
            state_->make(plan_to_row(state_->timeline(), state_->selected(), uuid));
        });
    }
}

}  // namespace vistels
