// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures presses of keys in the window, offscreen, at 1600x1000, with a long timeline:
//   bench_shell_presses [--short] [--links] [--clips N] [--buttons N]
// Keys go down and up at random places of the event, standing still and playing. Each is timed from the key
// event to the moment at which its edit is on record and told to all, for a release without the time that
// tells it from a repeat, and to the moment at which timeline and code window are painted with it; by the
// wall clock. Then the same for a button that puts fifty others down and up, while twenty show what formulas
// say of all clips; with --links that alone. Exits with 1 when a target is missed.

#include <QApplication>
#include <QKeyEvent>
#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "app/event/button_outputs.h"
#include "app/event/event_player.h"
#include "app/event/open_event.h"
#include "app/start/start_up.h"
#include "app/vaults/content_keeper.h"
#include "logger/press_engine.h"
#include "shell/event/event_session.h"
#include "shell/kit/theme.h"
#include "shell/panes/timeline/timeline_canvas.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "support/button_rows.h"
#include "support/measure.h"
#include "support/small_movies.h"
#include "support/temporary_folder.h"
#include "util/job_list.h"
#include "util/uuid.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_Files.h"

namespace {

using namespace vistels;
using bench::median;
using bench::stop_with;

constexpr double most_to_record = 0.002;  // seconds, of the 95th percentile
constexpr double most_to_paint = 0.016;
constexpr double repeat_seconds = 0.012;  // what a release waits to be told from a repeat
constexpr int event_milliseconds = 6'000'000;
constexpr quint32 first_native_code = 8;
constexpr std::size_t linked_buttons = 50;
constexpr std::size_t formula_buttons = 20;
constexpr std::size_t kinds = 4;  // three of four buttons make clips, the rest are qualifiers

double percentile(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

bool tell(const char* what, const std::vector<double>& seconds, double most) {
    const double found = percentile(seconds, 0.95);
    std::printf("%-34s median %7.2f ms, 95th percentile %7.2f ms, longest %7.2f ms (%zu)%s\n", what,
                median(seconds) * 1e3, found * 1e3, percentile(seconds, 1) * 1e3, seconds.size(),
                found <= most ? "" : "  MISSED");
    std::fflush(stdout);
    return found <= most;
}

std::vector<button_record> buttons_of(std::size_t count) {
    constexpr std::size_t columns = 10;  // all in sight
    std::vector<button_record> all;
    for (std::size_t n = 0; n < count; ++n) {
        markup_Button_Item button;
        button.set_uuid(new_uuid());
        button.set_name("Button " + std::to_string(n));
        button.set_category("Category " + std::to_string(n % 7));
        button.set_type(n % kinds == kinds - 1 ? button_type::qualifier : button_type::clip);
        button.set_secs_in(5);
        button.set_secs_out(3);
        logger_item_display_info display;
        display.logger_rect = {4.0 + 43.0 * static_cast<double>(n % columns),
                               4.0 + 22.0 * static_cast<double>(n / columns), 40, 19};
        display.show_keys = true;
        display.binding.emplace();
        display.binding->key_code = static_cast<std::uint16_t>(n + 1);
        button.set_display(std::move(display));
        all.emplace_back(std::move(button));
    }
    return all;
}

// The first one is linked to those after it, so that they follow it down and up; of all every so many'th has
// a formula.
std::vector<button_record> linked(std::vector<button_record> all) {
    const char* const types[] = {"count", "duration", "percentage", "first time"};
    const std::size_t every = std::max<std::size_t>(1, all.size() / formula_buttons);
    std::vector<markup_Button_Action_Link_ITEM> links;
    for (const char* code : {"ON_DOWN_SET_DOWN", "ON_UP_SET_UP"}) {
        for (std::size_t n = 1; n <= std::min(linked_buttons, all.size() - 1); ++n)
            links.push_back({code, std::nullopt, all[n]->uuid(), all[n]->name(), all[n]->category(), {}});
    }
    for (std::size_t n = 0; n < all.size(); ++n) {
        all[n] = changed_button(all[n], [&](markup_Button_Item& button) {
            if (n == 0) button.set_action_links(links);
            if (n % every != 0) return;
            const std::string row = "[RN]\"Button " + std::to_string(n + n % kinds / (kinds - 1)) + "\"";
            button.set_formula({n % (2 * every) == 0 ? row : row + "|[QN]\"Button 3\"",
                                "",
                                types[n / every % 4],
                                "",
                                false,
                                {}});
        });
    }
    return all;
}

void fill(const std::string& folder, const std::vector<button_record>& buttons, std::size_t clips) {
    qt_run_loop loop;
    auto opened = timeline_document::open(folder, loop);
    if (!opened) stop_with(opened.message());
    timeline_document& document = *opened.value();
    timeline_edit edit{"fill", "", {}};
    std::mt19937_64 random(3);
    const std::vector<shared_text> rows = bench::add_rows(buttons, edit);
    for (std::size_t n = 0; n < clips; ++n) {
        sxy_CLIP clip;
        clip.set_id(new_uuid());
        const double start = static_cast<double>(random() % event_milliseconds) / 1e3;
        clip.set_secs_start(start);
        clip.set_secs_end(start + 8);
        edit.operations.emplace_back(operation::insert_clip{rows[n % rows.size()], clip});
    }
    if (auto applied = document.apply(std::move(edit)); !applied) stop_with(applied.message());
    if (auto saved = document.save_now(); !saved) stop_with(saved.message());
}

// Sees what is painted.
class paint_watch : public QObject {
  public:
    paint_watch() { qApp->installEventFilter(this); }
    bool timeline = false;
    bool code_window = false;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::Paint) return false;
        if (watched->objectName() == QLatin1String("timeline_canvas")) timeline = true;
        if (watched->objectName().startsWith(QLatin1String("code_button."))) code_window = true;
        return false;
    }
};

struct times {
    std::vector<double> to_record;
    std::vector<double> to_paint;
};

class pressed_window {
  public:
    pressed_window(const home_places& places, const std::string& folder, std::vector<button_record> buttons)
        : buttons_(std::move(buttons)), content_(places, loop_), window_(places, loop_, content_, jobs_) {
        window_.resize(1600, 1000);
        window_.show();
        window_.activateWindow();
        window_.opener().open_folder(folder);
        go_on_until([&] { return !window_.opener().is_at_work() && window_.isActiveWindow(); });
        if (!window_.session().is_open()) stop_with("The event cannot be opened");
        window_.session().player().set_muted(true);
        event().playback().set_least_range(0, event_milliseconds / 1e3);
        event().logger().set_buttons(buttons_, 0);
        fired_ = event().logger().fired.connect([this](const button_fired& one) {
            if (!one.recorded) stop_with("A press was not recorded");
            recorded_ = now();
        });
        go_on_for(1);
    }
    ~pressed_window() { window_.close(); }

    bool measure(bool plays, std::size_t presses) {
        times down, up, stamp;
        if (plays) event().playback().play();
        for (std::size_t n = 0; n < presses; ++n) {
            event().playback().seek(static_cast<double>(random_() % event_milliseconds) / 1e3);
            go_on_for(0.1);
            const std::size_t clip = in_sight(n);
            const std::size_t qualifier = clip + kinds - 1 - clip % kinds;
            send(QEvent::KeyPress, clip, down);
            go_on_for(0.02);
            send(QEvent::KeyPress, qualifier, stamp);
            go_on_for(0.02);
            tell_key(QEvent::KeyRelease, qualifier);
            go_on_for(0.02);
            send(QEvent::KeyRelease, clip, up);
        }
        event().playback().pause();
        std::printf("%s\n", plays ? "playing" : "standing still");
        bool all_met = tell("press of a clip button: on record", down.to_record, most_to_record);
        all_met = tell("  painted", down.to_paint, most_to_paint) && all_met;
        all_met = tell("press of a qualifier: on record", stamp.to_record, most_to_record) && all_met;
        all_met = tell("  painted", stamp.to_paint, most_to_paint) && all_met;
        all_met = tell("release, less 12 ms: on record", up.to_record, most_to_record) && all_met;
        all_met = tell("  painted", up.to_paint, most_to_paint) && all_met;
        return all_met;
    }

    bool measure_links(bool plays, std::size_t presses) {
        times down, up;
        const auto all = linked(buttons_);
        event().logger().set_buttons(all, 0);
        event().outputs().set_buttons(all);
        go_on_for(1);
        if (plays) event().playback().play();
        for (std::size_t n = 0; n < presses; ++n) {
            event().playback().seek(static_cast<double>(random_() % event_milliseconds) / 1e3);
            go_on_for(0.1);
            send(QEvent::KeyPress, 0, down);
            go_on_for(0.05);
            if (event().logger().down_buttons().size() <= linked_buttons)
                stop_with("Links were not followed");
            send(QEvent::KeyRelease, 0, up);
        }
        event().playback().pause();
        std::printf("%zu links, %zu formulas; %s\n", linked_buttons, formula_buttons,
                    plays ? "playing" : "standing still");
        bool all_met = tell("press: on record", down.to_record, most_to_paint);
        all_met = tell("  painted", down.to_paint, most_to_paint) && all_met;
        all_met = tell("release, less 12 ms: on record", up.to_record, most_to_paint) && all_met;
        return tell("  painted", up.to_paint, most_to_paint) && all_met;
    }

  private:
    open_event& event() { return *window_.session().shown_event(); }
    double now() const { return loop_.time().seconds(); }

    // One of the first clip buttons, whose rows are in sight.
    std::size_t in_sight(std::size_t n) const {
        constexpr std::size_t rows = 6;
        return n % rows / (kinds - 1) * kinds + n % (kinds - 1);
    }

    // The key of a button goes down or up.
    void tell_key(QEvent::Type type, std::size_t button) {
        const quint32 code = first_native_code + static_cast<quint32>(button) + 1;
        QKeyEvent key(type, Qt::Key_unknown, {}, code, 0, 0);
        key.setTimestamp(static_cast<quint64>(now() * 1000));
        QApplication::sendEvent(&window_, &key);
    }

    // And everything is painted that changes by it.
    void send(QEvent::Type type, std::size_t button, times& into) {
        paint_watch painted;
        recorded_.reset();
        const double begun = now();
        tell_key(type, button);
        const auto is_done = [&] { return recorded_ && painted.timeline && painted.code_window; };
        const auto ends = loop_.start_timer(10, false, [] { stop_with("Nothing is painted"); });
        while (!is_done()) {
            // What is painted before it is on record shows an earlier state.
            if (!recorded_) painted.timeline = painted.code_window = false;
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        loop_.stop_timer(ends);
        const double wait = type == QEvent::KeyRelease ? repeat_seconds : 0;
        into.to_record.push_back(*recorded_ - begun - wait);
        into.to_paint.push_back(now() - begun - wait);
    }

    template <class Done>
    void go_on_until(const Done& done) {
        const auto wakes = loop_.start_timer(0.01, true, [] {});
        while (!done()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        loop_.stop_timer(wakes);
    }
    void go_on_for(double seconds) {
        const double until = now() + seconds;
        go_on_until([&] { return now() >= until; });
    }

    std::vector<button_record> buttons_;
    qt_run_loop loop_;
    job_list jobs_{loop_};
    content_keeper content_;
    main_window window_;
    std::optional<double> recorded_;
    connection fired_;
    std::mt19937_64 random_{5};
};

}  // namespace

int main(int count, char** arguments) {
    const bool is_short = bench::take_short(count, arguments);
    std::size_t clips = is_short ? 2'000 : 100'000;
    std::size_t buttons = 200;
    const bool is_links_alone = count > 1 && std::string(arguments[1]) == "--links";
    if (is_links_alone) ++arguments, --count;
    for (int n = 1; n + 1 < count; n += 2) {
        (std::string(arguments[n]) == "--buttons" ? buttons : clips) = std::stoul(arguments[n + 1]);
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(count, arguments);
    use_theme(application, theme_choice::dark);
    const testing::temporary_folder folder;
    const home_places places{folder / "Home Vault.VVault", folder / "Home Folder.VVault"};
    if (!start_up(places, 1, 0)) stop_with("The home folder cannot be made");
    const std::string collection = new_collection_folder(places.home_vault, "Harbour");
    const std::string movie = folder / "stand.mp4";
    if (!testing::write_small_movie(movie, 4)) stop_with("The movie cannot be written");
    job work;
    if (auto made = new_collection(collection, "Harbour", {movie}, movies_as::vistel_each, work); !made)
        stop_with(made.message());
    auto all = buttons_of(buttons);
    fill(collection, all, clips);
    std::printf("%zu clips, %zu buttons\n", clips, buttons);
    pressed_window shown(places, collection, std::move(all));
    const std::size_t presses = is_short ? 3 : 200;
    bool all_met = is_links_alone || shown.measure(false, presses);
    all_met = (is_links_alone || shown.measure(true, presses)) && all_met;
    all_met = shown.measure_links(false, presses / 2 + 1) && all_met;
    all_met = shown.measure_links(true, presses / 2 + 1) && all_met;
    return is_short || all_met ? 0 : 1;
}
