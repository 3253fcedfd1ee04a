// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/history_window.h"

#include <QAbstractListModel>
#include <QListView>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <tuple>

#include "app/event/open_event.h"
#include "shell/event/event_session.h"
#include "shell/kit/controls.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"
#include "shell/window/window_metrics.h"

namespace vistels {

// Line 0 is the state before all steps.
class undo_steps_model final : public QAbstractListModel {
  public:
    using QAbstractListModel::QAbstractListModel;

    void set_steps(const undo_stack* stack) {
        beginResetModel();
        names_.clear();
        done_ = 0;
        is_cut_ = stack && stack->lacks_older_steps();
        if (stack) {
            done_ = static_cast<int>(stack->done().size());
            names_.reserve(done_ + static_cast<int>(stack->taken_back().size()));
            for (const auto& step : stack->done()) names_ << words_of_term(step.name);
            const auto& again = stack->taken_back();
            for (auto step = again.rbegin(); step != again.rend(); ++step)
                names_ << words_of_term(step->name);
        }
        is_open_ = stack != nullptr;
        shown_ = state_of(stack);
        endResetModel();
    }
    bool shows(const undo_stack* stack) const { return state_of(stack) == shown_; }
    int done() const { return done_; }

    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() || !is_open_ ? 0 : static_cast<int>(names_.size()) + 1;
    }
    QVariant data(const QModelIndex& index, int role) const override {
        const theme& look = theme::current();
        const bool is_done = index.row() <= done_;
        const bool is_now = index.row() == done_;
        switch (role) {
            case Qt::DisplayRole:
                return index.row() == 0 ? first_words() : names_[index.row() - 1];
            case Qt::AccessibleTextRole:
                return state_words(is_now, is_done).arg(data(index, Qt::DisplayRole).toString());
            case Qt::ForegroundRole:
                return is_done && index.row() > 0 ? look.text : look.muted;
            case Qt::FontRole:
                return theme::font(is_now ? type_step::title : type_step::body);
            case Qt::DecorationRole:
                return icon(is_now    ? QStringLiteral("chevron-right")
                            : is_done ? QStringLiteral("check")
                                      : QStringLiteral("redo"),
                            is_now ? look.accent : look.muted);
            case Qt::SizeHintRole:
                return QSize(0, look.metrics.list_line_height);
            default:
                return {};
        }
    }

  private:
    // Differs whenever the steps do.
    using state = std::tuple<std::size_t, std::size_t, const void*, const void*>;
    static state state_of(const undo_stack* stack) {
        if (!stack) return {};
        const auto* back = stack->next_undo();
        const auto* again = stack->next_redo();
        return {stack->done().size() + 1, stack->taken_back().size(), back ? back->parts.get() : nullptr,
                again ? again->parts.get() : nullptr};
    }
    QString first_words() const {
        if (is_cut_) return history_window::tr("Older steps are no longer kept");
        return names_.isEmpty() ? history_window::tr("Nothing was done yet")
                                : history_window::tr("As it was before these steps");
    }
    static QString state_words(bool is_now, bool is_done) {
        if (is_now) return history_window::tr("%1, as it is now");
        return is_done ? history_window::tr("%1, done") : history_window::tr("%1, taken back");
    }

    QStringList names_;
    state shown_;
    int done_ = 0;
    bool is_cut_ = false;
    bool is_open_ = false;
};

history_window::history_window(event_session& session, QWidget* parent)
    : QDialog(parent, Qt::Tool),
      session_(session),
      steps_(new undo_steps_model(this)),
      lines_(new QListView(this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("history"));
    setWindowTitle(tr("Undo History"));
    lines_->setObjectName(QStringLiteral("history.steps"));
    lines_->setAccessibleName(tr("Steps"));
    lines_->setModel(steps_);
    lines_->setUniformItemSizes(true);
    lines_->setFrameShape(QFrame::NoFrame);
    lines_->setIconSize({metrics.icon, metrics.icon});
    auto* hint = make_label(tr("A click on a step goes to the state after it."), type_step::secondary,
                            QStringLiteral("muted"), this);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(metrics.wide_padding, metrics.wide_padding, metrics.wide_padding,
                               metrics.wide_padding);
    column->setSpacing(metrics.padding);
    column->addWidget(hint);
    column->addWidget(lines_, 1);
    resize(window_sizes.history_width, window_sizes.history_height);
    connect(lines_, &QListView::clicked, this, [this](const QModelIndex& line) { ask(line.row()); });
    connect(lines_, &QListView::activated, this, [this](const QModelIndex& line) { ask(line.row()); });
    connect(&session, &event_session::facts_changed, this, &history_window::follow);
    connect(&session, &event_session::closed, this, &history_window::follow);
    follow();
}

void history_window::follow() {
    open_event* const event = session_.shown_event();
    const undo_stack* const stack = event ? &event->undo() : nullptr;
    if (steps_->shows(stack)) return;
    steps_->set_steps(stack);
    const QModelIndex now = steps_->index(steps_->done());
    lines_->setCurrentIndex(now);
    lines_->scrollTo(now);
}

void history_window::ask(int line) {
    if (line != steps_->done()) Q_EMIT asked(static_cast<std::size_t>(line));
}

}  // namespace vistels
