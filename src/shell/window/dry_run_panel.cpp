// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/dry_run_panel.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <memory>
#include <utility>

#include "app/event/press_log.h"

namespace vistels {

namespace {

// Lines of the script and of what it sets off that are seen at once.
constexpr int script_lines = 8;
constexpr int outcome_lines = 12;
constexpr int columns = 80;

QPlainTextEdit* add_text(QVBoxLayout& to, const QString& name, const QString& words, int lines,
                         QWidget* parent) {
    auto* label = new QLabel(words, parent);
    auto* text = new QPlainTextEdit(parent);
    text->setObjectName(name);
    text->setAccessibleName(QString(words).remove('&'));
    text->setTabChangesFocus(true);
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    text->setMinimumHeight(lines * text->fontMetrics().lineSpacing());
    label->setBuddy(text);
    to.addWidget(label);
    to.addWidget(text, lines);
    return text;
}

}  // namespace

dry_run_panel::dry_run_panel(std::function<dry_run()> wanted, const std::string& script,
                             const QStringList& problems, std::string folder, run_loop& loop,
                             serial_queue& queue, QWidget* parent)
    : panel(QStringLiteral("dry_run"), tr("Dry Run"),
            tr("Try out what presses set off, on a copy of the timeline. Nothing is saved."), parent),
      wanted_(std::move(wanted)),
      folder_(std::move(folder)),
      loop_(loop),
      queue_(queue) {
    if (!problems.isEmpty()) {
        auto* told = new QLabel(problems.join('\n'), this);
        told->setObjectName(QStringLiteral("dry_run.problems"));
        told->setWordWrap(true);
        content().addWidget(told);
    }
    script_ =
        add_text(content(), QStringLiteral("dry_run.script"),
                 tr("&Presses, a line each: seconds, button, “down” or “up”; or “tab”"), script_lines, this);
    script_->setPlainText(QString::fromStdString(script));
    outcome_ =
        add_text(content(), QStringLiteral("dry_run.outcome"), tr("What they set &off"), outcome_lines, this);
    outcome_->setReadOnly(true);
    auto* close = add_button(QStringLiteral("close"), tr("Close"), {});
    run_ = add_button(QStringLiteral("run"), tr("Run"), QStringLiteral("first"));
    run_->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    connect(run_, &QPushButton::clicked, this, &dry_run_panel::run);
    resize(columns * fontMetrics().averageCharWidth(), sizeHint().height());
    script_->setFocus();
}

void dry_run_panel::run() {
    dry_run wanted = wanted_();
    auto steps = read_press_lines(script_->toPlainText().toStdString(), wanted.buttons);
    if (!steps) return outcome_->setPlainText(QString::fromStdString(steps.error().message()));
    wanted.steps = std::move(steps).value();
    run_->setEnabled(false);
    outcome_->setPlainText(tr("Running…"));
    auto show = guard_.guarded([this](const dry_run_outcome& outcome) { show_outcome(outcome); });
    queue_.post([&loop = loop_, wanted = std::move(wanted), folder = folder_, show]() {
        auto outcome = std::make_shared<dry_run_outcome>(run_dry(wanted, folder));
        loop.post([show, outcome]() mutable { show(*outcome); });
    });
}

void dry_run_panel::show_outcome(const dry_run_outcome& outcome) {
    run_->setEnabled(true);
    if (!outcome) return outcome_->setPlainText(QString::fromStdString(outcome.error().message()));
    QStringList lines;
    for (const auto& one : outcome.value()) lines.append(QString::fromStdString(fired_text(one)));
    outcome_->setPlainText(lines.isEmpty() ? tr("Nothing.") : lines.join('\n'));
}

}  // namespace vistels
