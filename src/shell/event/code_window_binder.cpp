// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/code_window_binder.h"

#include <QImageReader>
#include <chrono>
#include <utility>

#include "app/event/open_event.h"
#include "logger/logger_Dict_funcs.h"
#include "logger/logger_settings.h"
#include "logger/press_engine.h"
#include "shell/event/event_notices.h"
#include "shell/event/event_session.h"
#include "shell/event/pane_tick.h"
#include "shell/event/read_only_guard.h"
#include "shell/kit/theme.h"
#include "shell/panes/code_window/code_window_canvas.h"
#include "shell/panes/code_window/code_window_view.h"
#include "util/file_system.h"
#include "util/run_loop.h"
#include "util/wait_watch.h"

namespace vistels {

namespace {

// A picture is kept no larger than a screen of twice the resolution shows it on its button.
constexpr double picture_scale = 2;
constexpr std::chrono::seconds scroll_kept_after(1);

QImage read_picture(const std::string& path, const rectangle& place) {
    const wait_note note("open", path);
    QImageReader reader(QString::fromStdString(path));
    const QSizeF most = QSizeF(place.width, place.height) * picture_scale;
    const QSizeF whole = reader.size();
    if (whole.width() > most.width() && whole.height() > most.height())
        reader.setScaledSize(whole.scaled(most, Qt::KeepAspectRatioByExpanding).toSize());
    return reader.read();
}

// Waits for the volume. A picture that cannot be read is as none.
std::map<std::string, QImage> read_pictures(const std::string& folder,
                                            const std::vector<button_record>& buttons) {
    std::map<std::string, QImage> pictures;
    for (const button_record& button : buttons) {
        const logger_item_display_info display = button->display();
        const std::string path = display.real_picture ? button_picture_path(*button, folder) : std::string();
        if (path.empty()) continue;
        QImage picture = read_picture(path, display.logger_rect);
        if (!picture.isNull()) pictures[button->uuid()] = std::move(picture);
    }
    return pictures;
}

// What of the buttons their pictures go by.
std::vector<std::string> picture_ids(const std::vector<button_record>& buttons) {
    std::vector<std::string> ids;
    for (const button_record& button : buttons) {
        if (!button->display().real_picture) continue;
        ids.push_back(button->uuid());
        ids.push_back(button->picture_id());
    }
    return ids;
}

}  // namespace

code_window_binder::code_window_binder(code_window_view& view, event_session& session)
    : view_(view), session_(session) {
    of_view_.push_back(view_.seek_asked.connect([this](double seconds) { session_.player().seek(seconds); }));
    of_view_.push_back(view_.scrolled.connect([this](const QPointF& place) {
        scrolled_to_ = place;
        keeps_scroll_.start();
    }));
    keeps_scroll_.setSingleShot(true);
    keeps_scroll_.setInterval(scroll_kept_after);
    QObject::connect(&keeps_scroll_, &QTimer::timeout, &keeps_scroll_, [this] { keep_scroll(); });
}

code_window_binder::~code_window_binder() {
    if (!queue_) return;
    const expected_waits closing("a code window goes, and what reads its pictures ends");
    queue_->forget_waiting();
    queue_.reset();
}

pane* code_window_binder::shown_in() {
    return &view_;
}

void code_window_binder::let_go() {
    view_.release_mouse();
    keep_scroll();
}

void code_window_binder::show(open_event* event) {
    keep_scroll();
    tick_.reset();
    of_event_.clear();
    guard_.drop();
    event_ = event;
    if (!event) {
        view_.set_source(nullptr);
        view_.set_ground({});
        return view_.set_pictures({});
    }
    of_event_.push_back(event->timeline().access_changed.connect([this] { show_buttons(); }));
    of_event_.push_back(event->logger().buttons_changed.connect([this] { read_look(); }));
    show_buttons();
    pictures_read_.clear();
    read_look();
    const logger_settings& settings = event->code_window_file().window().settings;
    view_.scroll_to({settings.scroller_offset_x, settings.scroller_offset_y});
    view_.set_name(session_.name());
    tick_ = std::make_unique<pane_tick>(*event, session_.player(), [this] { view_.tick(); });
}

// Where the code window was left is part of it, not an edit.
void code_window_binder::keep_scroll() {
    keeps_scroll_.stop();
    const auto place = std::exchange(scrolled_to_, std::nullopt);
    if (!event_ || !place || event_->timeline().is_read_only()) return;
    logger_settings settings = event_->code_window_file().window().settings;
    settings.scroller_offset_x = place->x();
    settings.scroller_offset_y = place->y();
    event_->code_window_file().set_settings(std::move(settings));
}

void code_window_binder::show_buttons() {
    auto buttons = source_of(event_->logger(), event_->timeline(), event_->playback(), &event_->outputs());
    if (event_->timeline().is_read_only()) {
        buttons = refusing(std::move(buttons), [&notices = session_.notices()](const QString& button) {
            notices.refuse_press(button);
        });
    }
    view_.set_source(std::move(buttons));
}

void code_window_binder::read_look() {
    const auto& ground = event_->code_window_file().window().settings.background_colour;
    view_.set_ground(ground ? std::optional(to_qt(*ground)) : std::nullopt);
    const auto& buttons = event_->logger().buttons();
    std::vector<std::string> ids = picture_ids(buttons);
    if (ids == pictures_read_) return;
    pictures_read_ = std::move(ids);
    if (!queue_) queue_ = std::make_unique<serial_queue>("code window");
    queue_->forget_waiting();
    auto arrive = guard_.guarded(
        [this](const std::map<std::string, QImage>& pictures) { view_.set_pictures(pictures); });
    queue_->post([&loop = session_.loop(), arrive = std::move(arrive),
                  folder = event_->code_window_file().folder(), buttons] {
        loop.post([arrive, pictures = read_pictures(folder, buttons)]() mutable { arrive(pictures); });
    });
}

}  // namespace vistels
