// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/adding_panel.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/kit/controls.h"
#include "shell/kit/theme.h"
#include "util/file_system.h"

namespace vistels {

adding_panel::adding_panel(const QStringList& movies, const QString& vistel,
                           std::vector<adding_choice> choices, QWidget* parent)
    : QDialog(parent) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("add_movies"));
    setWindowTitle(tr("Add Movies"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.group_gap, metrics.group_gap, metrics.group_gap, metrics.group_gap);
    column->setSpacing(metrics.grid);
    const QString what =
        movies.size() == 1
            ? QStringLiteral("“%1”").arg(QString::fromStdString(path_name(movies.front().toStdString())))
            : tr("%1 files").arg(movies.size());
    const QString title = vistel.isEmpty() ? tr("Add %1 to the collection").arg(what)
                                           : tr("Add %1, dropped on “%2”").arg(what, vistel);
    auto* headline = make_label(title, type_step::headline, {}, this);
    headline->setWordWrap(true);
    column->addWidget(headline);
    for (const auto& one : choices) {
        column->addSpacing(metrics.padding);
        auto* button = make_push_button(tr(one.title),
                                        &one == &choices.front() ? QStringLiteral("first") : QString(), this);
        button->setObjectName(QStringLiteral("add_movies.%1").arg(static_cast<int>(one.how)));
        button->setToolTip(tr(one.explanation));
        button->setAccessibleDescription(tr(one.explanation));
        connect(button, &QPushButton::clicked, this, [this, how = one.how] {
            accept();
            Q_EMIT chosen(how);
        });
        column->addWidget(button);
        if (qstrcmp(one.title, one.explanation) == 0) continue;
        auto* explanation =
            make_label(tr(one.explanation), type_step::secondary, QStringLiteral("muted"), this);
        explanation->setWordWrap(true);
        column->addWidget(explanation);
    }
    column->addSpacing(metrics.wide_padding);
    auto* cancel = make_push_button(tr("Cancel"), {}, this);
    cancel->setObjectName(QStringLiteral("add_movies.cancel"));
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    column->addWidget(cancel, 0, Qt::AlignRight);
    setFixedWidth(metrics.filter_width);
}

}  // namespace vistels
