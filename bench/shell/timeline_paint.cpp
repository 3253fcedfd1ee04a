// SPDX-License-Identifier: GPL-3.0-or-later
// How long the timeline takes to paint 100,000 clips in 50 rows, 1900 pixels wide, at several scales; beside
// it a painter that draws every visible clip as a rounded rectangle. And what a filter adds to it: verdicts
// on all clips brought onto the rows, and a clip that is coded while one is on. Milliseconds.
#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <random>

#include "app/event/clip_view.h"
#include "shell/kit/theme.h"
#include "shell/panes/timeline/timeline_canvas.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_state.h"
#include "shell/program/qt_run_loop.h"
#include "support/measure.h"
#include "util/uuid.h"

using namespace vistels;

namespace {

constexpr int row_count = 50;
int clips_in_row = 2000;
constexpr int width = 1900;
std::size_t rounds = 60;

class bench_transport final : public transport {
  public:
    double collection_time() const override { return seconds_; }
    double collection_time_at(double) const override { return seconds_; }
    bool is_playing() const override { return false; }
    double rate() const override { return 1; }
    void play() override {}
    void pause() override {}
    void set_rate(double) override {}
    void seek(double seconds) override { seconds_ = seconds; }

  private:
    double seconds_ = 3000;
};

sxy_ROW make_row(int number, std::mt19937& random) {
    sxy_ROW row;
    row.set_name("Row " + std::to_string(number));
    row.set_uuid(shared_text(new_uuid()));
    row.set_col(from_qt(theme::current().item_colour(static_cast<std::size_t>(number))));
    std::uniform_real_distribution<double> gap(0.2, 2.4);
    std::uniform_real_distribution<double> length(0.5, 4);
    std::uniform_int_distribution<std::size_t> player(0, 10);
    double at = gap(random);
    std::vector<clip_pointer> clips;
    for (int index = 0; index < clips_in_row; ++index) {
        auto clip = std::make_shared<sxy_CLIP>();
        clip->set_id(new_uuid());
        clip->set_secs_start(at);
        clip->set_secs_end(at + length(random));
        clip->set_stars(index % 7 == 0 ? 3 : 0);
        if (index % 9 == 0) clip->set_col(from_qt(theme::current().item_colour(player(random))));
        qual_ITEM qualifier;
        qualifier.set_name(shared_text("Player " + std::to_string(player(random))));
        clip->set_qualifiers({qualifier});
        at = clip->secs_end() + gap(random);
        clips.push_back(std::move(clip));
    }
    row.clips().assign(std::move(clips));
    return row;
}

struct spread {
    double median = 0;
    double p95 = 0;
    double wall_median = 0;
};

double thread_seconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Milliseconds of the thread's processor time, which other programs on the machine do not disturb, and of the
// clock on the wall.
spread measure(const std::function<void()>& work, const std::function<void()>& before_each = {}) {
    const steady_clock clock;
    std::vector<double> taken;
    std::vector<double> wall;
    for (std::size_t round = 0; round < rounds; ++round) {
        if (before_each) before_each();
        const double wall_before = clock.seconds();
        const double before = thread_seconds();
        work();
        taken.push_back((thread_seconds() - before) * 1000);
        wall.push_back((clock.seconds() - wall_before) * 1000);
    }
    std::sort(taken.begin(), taken.end());
    std::sort(wall.begin(), wall.end());
    return {taken[rounds / 2], taken[rounds * 95 / 100], wall[rounds / 2]};
}

// The peer: as a first version of such a view would do it.
void paint_every_clip(QPainter& painter, const timeline_document& document, const timeline_scale& scale) {
    painter.setRenderHint(QPainter::Antialiasing);
    const theme& look = theme::current();
    int y = timeline_sizes.ruler_height;
    for (const row_pointer& row : document.timeline().rows()) {
        const QColor given = to_qt(*row->col());
        for (const clip_pointer& clip : row->clips()) {
            const double left = scale.x_of(clip->secs_start());
            const double right = scale.x_of(clip->secs_end());
            if (right < 0 || left > width) continue;
            const auto colour = clip->col();
            const QColor fill = colour ? to_qt(*colour) : given;
            painter.setPen(look.clip_edge(fill));
            painter.setBrush(fill);
            painter.drawRoundedRect(QRectF(left, y + 3, right - left, 24), 3, 3);
        }
        y += timeline_sizes.row_height;
    }
}

void print(const char* what, const spread& taken) {
    std::printf("%s %.2f, p95 %.2f\n", what, taken.median, taken.p95);
}

// A clip comes, is drawn, and goes again.
spread code_a_clip(timeline_document& document, timeline_canvas& canvas, QImage& image) {
    const shared_text row = document.timeline().rows()[7]->uuid();
    return measure([&] {
        sxy_CLIP clip;
        clip.set_id(new_uuid());
        clip.set_secs_start(2010);
        clip.set_secs_end(2014);
        if (!document.apply({"Shot", "", {operation::insert_clip{row, clip}}})) std::abort();
        canvas.render(&image);
    });
}

// Selected clips, all in view, are dragged along and between rows: each move of the pointer with the paint
// after it.
void print_dragging(timeline_state& state, timeline_canvas& canvas, QImage& image) {
    constexpr std::size_t dragged = 1000;
    state.set_scale({2000, 0.3});
    std::vector<std::string> clips;
    const std::size_t of_each_row = std::max<std::size_t>(1, dragged / state.rows().size());
    for (const timeline_row& row : state.rows()) {
        const std::size_t beyond = row.shown.first_starting(2100);
        const std::size_t first = beyond < row.shown.size() ? beyond : 0;
        for (std::size_t at = first; at < std::min(first + of_each_row, row.shown.size()); ++at)
            clips.push_back(clip_of(row, row.shown[at].index)->id());
    }
    state.select(clips);
    const timeline_row& middle = state.rows()[state.rows().size() / 2];
    const track_clip& held = middle.selected[0];
    state.scroll_to(held.start - 100);
    const QPointF from(state.scale().x_of((held.start + held.end) / 2),
                       timeline_sizes.ruler_height + middle.top + timeline_sizes.row_least_height / 2.0);
    const auto send = [&](QEvent::Type type, const QPointF& at, Qt::MouseButton button) {
        QMouseEvent event(type, at, canvas.mapToGlobal(at), button, Qt::LeftButton, {});
        QApplication::sendEvent(&canvas, &event);
    };
    send(QEvent::MouseButtonPress, from, Qt::LeftButton);
    int step = 0;
    const spread taken = measure([&] {
        ++step;
        send(QEvent::MouseMove, from + QPointF(step % 200 + 5, step % 3 * timeline_sizes.row_height),
             Qt::NoButton);
        canvas.render(&image);
    });
    std::printf("%zu selected clips dragged: %.2f, p95 %.2f, wall median %.2f\n", clips.size(), taken.median,
                taken.p95, taken.wall_median);
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, {});
    QApplication::sendEvent(&canvas, &escape);
    state.select({});
}

void print_filtering(clip_view& view, timeline_state& state, timeline_canvas& canvas, QImage& image) {
    timeline_document& document = view.document();
    state.set_scale({2000, 0.3});
    print("a clip coded and painted, no filter", code_a_clip(document, canvas, image));
    clip_filtering& filtering = view.filtering();
    const auto standing = filtering.changed.connect([&](bool) { state.set_is_filtered(filtering.is_on()); });
    const auto filter = [&](const char* text) {
        filtering.apply(text);
        while (filtering.standing().is_judging) QApplication::processEvents();
    };
    // Of each row some clips pass by one of these and not by the other.
    std::size_t round = 0;
    print(
        "verdicts on all clips onto the rows",
        measure([&] { state.take_verdicts(); }, [&] { filter(++round % 2 == 0 ? "Player 3" : "Player 4"); }));
    filter("Player 3");
    state.take_verdicts();
    std::printf("%zu of %zu pass\n", filtering.standing().passing, filtering.standing().total);
    print("the same when none is another", measure([&] { state.take_verdicts(); }));
    print("a clip coded and painted, filter on", code_a_clip(document, canvas, image));
    print("painted anew, filter on", measure([&] { canvas.render(&image); }));
}

}  // namespace

int main(int count, char** arguments) {
    if (bench::take_short(count, arguments)) {
        clips_in_row = 50;
        rounds = 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(count, arguments);
    use_theme(application, theme_choice::dark);
    const auto folder = std::filesystem::temp_directory_path() / ("timeline_paint_" + new_uuid());
    qt_run_loop loop;
    {
        // Written and read back: an edit of 100,000 clips is not what is measured here.
        sxy_DATA_root made;
        std::mt19937 random(7);
        for (int row = 0; row < row_count; ++row) made.insert_row(made.rows().size(), make_row(row, random));
        std::filesystem::create_directories(folder);
        if (const auto saved = save_timeline(made.snapshot(), folder.string(), machine_files()); !saved) {
            std::fprintf(stderr, "%s\n", saved.message().c_str());
            return 1;
        }
    }
    auto opened = timeline_document::open(folder.string(), loop);
    if (!opened) {
        std::fprintf(stderr, "%s\n", opened.message().c_str());
        return 1;
    }
    timeline_document& document = *opened.value();
    bench_transport playing;
    auto view = std::make_unique<clip_view>(document, loop);
    timeline_state state;
    state.set_timeline(view.get(), &playing);
    timeline_canvas canvas(state, nullptr);
    canvas.resize(width, timeline_sizes.ruler_height + state.rows().total_height());
    canvas.show();
    QApplication::processEvents();
    QImage image(canvas.size(), QImage::Format_RGB32);

    std::printf("%zu clips in %zu rows, %d x %d pixels, milliseconds\n", document.timeline().clip_count(),
                state.rows().size(), canvas.width(), canvas.height());
    std::printf("%14s %8s %8s %12s %12s %8s\n", "pixels/second", "median", "p95", "wall median", "every clip",
                "ratio");
    const double fit = state.reach().fit_seconds_per_pixel();
    for (const double seconds_per_pixel : {fit, 1.5, 0.6, 0.3, 0.1, 0.02}) {
        state.set_scale({2000, seconds_per_pixel});
        const spread ours = measure([&] { canvas.render(&image); });
        const spread peer = measure([&] {
            image.fill(theme::current().pane);
            QPainter painter(&image);
            paint_every_clip(painter, document, state.scale());
        });
        std::printf("%14.2f %8.2f %8.2f %12.2f %12.2f %8.2f\n", 1 / seconds_per_pixel, ours.median, ours.p95,
                    ours.wall_median, peer.median, peer.median / ours.median);
    }
    const spread all_rows = measure([&] { state.read_again(); });
    std::printf("reading all rows anew %.2f, p95 %.2f\n", all_rows.median, all_rows.p95);
    print_dragging(state, canvas, image);
    print_filtering(*view, state, canvas, image);
    state.set_timeline(nullptr, nullptr);
    view.reset();
    opened.value().reset();
    std::filesystem::remove_all(folder);
    return 0;
}
