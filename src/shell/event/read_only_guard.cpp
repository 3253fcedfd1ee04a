// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/read_only_guard.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStyle>
#include <QTimer>
#include <QToolButton>

#include "shell/event/writer_watch.h"
#include "shell/kit/controls.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/icons.h"
#include "shell/kit/theme.h"

namespace vistels {

namespace {

class refusing_source final : public code_window_source {
  public:
    refusing_source(std::unique_ptr<code_window_source> source, std::function<void(const QString&)> refused)
        : source_(std::move(source)), refused_(std::move(refused)) {
        observed_.push_back(source_->buttons_changed.connect([this] { buttons_changed.emit(); }));
        observed_.push_back(source_->states_changed.connect([this] { states_changed.emit(); }));
        observed_.push_back(
            source_->state_changed.connect([this](const std::string& one) { state_changed.emit(one); }));
        observed_.push_back(source_->links_changed.connect([this] { links_changed.emit(); }));
        observed_.push_back(
            source_->link_fired.connect([this](const std::string& from, const std::string& to,
                                               const link_kind& kind) { link_fired.emit(from, to, kind); }));
        observed_.push_back(
            source_->center_wanted.connect([this](const std::string& one) { center_wanted.emit(one); }));
    }

    std::vector<code_button> buttons() const override { return source_->buttons(); }
    code_button_state state(const std::string& button) const override {
        code_button_state state = source_->state(button);
        state.is_blocked = true;
        return state;
    }
    void press(const std::string& button, double, const QPointF&, bool) override {
        for (const auto& one : source_->buttons()) {
            if (one.uuid == button) return refused_(one.name);
        }
    }
    void release(const std::string&, double) override {}
    double collection_time() const override { return source_->collection_time(); }
    clip_list clips_of(const std::string& button) const override { return source_->clips_of(button); }
    std::vector<bound_button> bound_buttons() const override { return source_->bound_buttons(); }
    bool has_links() const override { return source_->has_links(); }
    std::vector<code_link> links() const override { return source_->links(); }
    QStringList link_words(const std::string& button) const override { return source_->link_words(button); }
    QStringList link_problems() const override { return source_->link_problems(); }

  private:
    std::unique_ptr<code_window_source> source_;
    std::function<void(const QString&)> refused_;
    std::vector<connection> observed_;
};

}  // namespace

std::unique_ptr<code_window_source> refusing(std::unique_ptr<code_window_source> source,
                                             std::function<void(const QString&)> refused) {
    return std::make_unique<refusing_source>(std::move(source), std::move(refused));
}

read_only_mark::read_only_mark(QWidget* parent)
    : QWidget(parent),
      icon_(new QWidget(this)),
      words_(make_label({}, type_step::secondary, QStringLiteral("warning"), this)),
      again_(new QToolButton(this)) {
    const theme_metrics& metrics = theme::current().metrics;
    setObjectName(QStringLiteral("read_only"));
    words_->setObjectName(QStringLiteral("read_only.words"));
    again_->setObjectName(QStringLiteral("read_only.again"));
    again_->setToolTip(tr("Open the timeline again, to change it"));
    again_->setText(tr("Try Again"));
    again_->setProperty("kind", QStringLiteral("raised"));
    again_->setFocusPolicy(Qt::TabFocus);
    again_->setFixedSize(QFontMetrics(theme::font(type_step::body)).horizontalAdvance(again_->text()) +
                             2 * metrics.wide_padding,
                         metrics.icon_button);
    icon_->setFixedSize(metrics.icon, metrics.icon);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(metrics.padding, metrics.focus_ring, metrics.grid, metrics.focus_ring);
    row->setSpacing(metrics.padding);
    row->addWidget(icon_);
    row->addWidget(words_);
    row->addWidget(again_);
    connect(again_, &QToolButton::clicked, this, &read_only_mark::try_again_asked);
    hide();
}

void read_only_mark::show_access(const writer_watch& access) {
    setVisible(access.is_read_only());
    if (!access.is_read_only()) return;
    access.is_free() ? show_free() : show_reason(words_of(access.reason()));
}

void read_only_mark::show_reason(const QString& reason) {
    free_ = false;
    words_->setText(tr("Read only"));
    show_tone(QStringLiteral("warning"));
    setToolTip(reason);
    setAccessibleName(tr("Read only: %1").arg(reason));
    update();
}

void read_only_mark::show_free() {
    free_ = true;
    words_->setText(tr("Free again"));
    show_tone(QStringLiteral("good"));
    setToolTip(tr("The other program has closed the timeline. Try again to change it here."));
    setAccessibleName(toolTip());
    update();
}

void read_only_mark::show_tone(const QString& tone) {
    words_->setProperty("tone", tone);
    words_->style()->polish(words_);
}

QString read_only_mark::words() const {
    return words_->text();
}

void read_only_mark::flash() {
    flashes_ = true;
    update();
    QTimer::singleShot(theme::current().motion.vistel_ring, this, [this] {
        flashes_ = false;
        update();
    });
}

void read_only_mark::paintEvent(QPaintEvent*) {
    const theme& look = theme::current();
    QPainter painter(this);
    if (flashes_) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(look.warning, look.metrics.focus_ring));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), look.metrics.radius_control,
                                look.metrics.radius_control);
    }
    painter.drawPixmap(icon_->pos(),
                       icon_pixmap(free_ ? QStringLiteral("check") : QStringLiteral("lock"),
                                   free_ ? look.good : look.warning, look.metrics.icon, devicePixelRatioF()));
}

}  // namespace vistels
