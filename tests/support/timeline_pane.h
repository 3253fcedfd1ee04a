// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QWheelEvent>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/event/clip_view.h"
#include "shell/kit/theme.h"
#include "shell/panes/timeline/timeline_canvas.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_state.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/program/qt_run_loop.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/transport.h"

namespace vistels::testing {

// A clock that stands where it was put.
class standing_transport final : public transport {
  public:
    double collection_time() const override { return seconds; }
    double collection_time_at(double) const override { return seconds; }
    bool is_playing() const override { return playing; }
    double rate() const override { return 1; }
    void play() override { playing = true; }
    void pause() override { playing = false; }
    void set_rate(double) override {}
    void seek(double to) override {
        seconds = to;
        ++seeks;
    }
    void scrub(double to) override {
        seconds = to;
        ++scrubs;
    }

    double seconds = 0;
    int seeks = 0;
    int scrubs = 0;
    bool playing = false;
};

// A pane 1140 wide: a thousand pixels of clips. Rows "a" and "b"; a second is ten pixels from second 0 on.
class timeline_pane : public ::testing::Test {
  protected:
    void SetUp() override {
        use_theme(*qApp, theme_choice::dark);
        auto opened = timeline_document::open(folder_ / "timeline", loop_);
        ASSERT_TRUE(opened) << opened.message();
        document_ = std::move(opened.value());
        timeline_edit made{"made", "", {}};
        made.operations.push_back(operation::insert_row{0, row_of("a", "Attack")});
        made.operations.push_back(operation::insert_row{1, row_of("b", "Shot")});
        sxy_CLIP noted = clip_of("a1", 10, 20);
        noted.set_qualifiers({qualifier_of("q", "Marek")});
        made.operations.push_back(operation::insert_clip{shared_text("a"), noted});
        made.operations.push_back(operation::insert_clip{shared_text("a"), clip_of("a2", 30, 40)});
        made.operations.push_back(operation::insert_clip{shared_text("a"), clip_of("a3", 50, 60)});
        made.operations.push_back(operation::insert_clip{shared_text("b"), clip_of("b1", 25, 35)});
        ASSERT_TRUE(document_->apply(made));
        view_.resize(1140, 400);
        shown_ = std::make_unique<clip_view>(*document_, loop_);
        view_.set_timeline(shown_.get(), &transport_);
        view_.set_reach(0, 600);
        view_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view_));
        view_.state().set_scale({0, 0.1});
        canvas_ = view_.findChild<timeline_canvas*>(QStringLiteral("timeline_canvas"));
        ASSERT_EQ(canvas_->width(), 1000);
    }
    void TearDown() override { view_.set_timeline(nullptr, nullptr); }

    QPoint at(double seconds, int row) const {
        const int y = timeline_sizes.ruler_height + view_rows()[static_cast<std::size_t>(row)].top + 12;
        return {static_cast<int>(std::lround(view_state().scale().x_of(seconds))), y};
    }
    timeline_state& view_state() const { return const_cast<timeline_view&>(view_).state(); }
    const timeline_rows& view_rows() const { return view_state().rows(); }
    void click(double seconds, int row, Qt::KeyboardModifiers keys = {}) {
        QTest::mouseClick(canvas_, Qt::LeftButton, keys, at(seconds, row));
    }
    void drag(QPoint from, QPoint to, Qt::KeyboardModifiers keys = {}) {
        QTest::mousePress(canvas_, Qt::LeftButton, keys, from);
        QMouseEvent moved(QEvent::MouseMove, to, canvas_->mapToGlobal(to), Qt::NoButton, Qt::LeftButton,
                          keys);
        QApplication::sendEvent(canvas_, &moved);
        QTest::mouseRelease(canvas_, Qt::LeftButton, keys, to);
    }
    void turn_wheel(QPoint where, QPoint angle, Qt::KeyboardModifiers keys) {
        QWheelEvent event(where, canvas_->mapToGlobal(where), {}, angle, Qt::NoButton, keys,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(canvas_, &event);
    }
    std::vector<std::string> selected() const { return view_state().selected(); }
    std::optional<clip_place> find(const char* clip) const { return document_->timeline().find_clip(clip); }

    temporary_folder folder_;
    qt_run_loop loop_;
    std::unique_ptr<timeline_document> document_;
    std::unique_ptr<clip_view> shown_;
    standing_transport transport_;
    timeline_view view_;
    timeline_canvas* canvas_ = nullptr;
};

}  // namespace vistels::testing
