// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>

#include "app/event/clip_filtering.h"
#include "app/settings/places.h"
#include "formula/formula_completion.h"
#include "shell/filter/filter_colours.h"
#include "util/posted_work_guard.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

// The filter of the event that a window shows, as its fields see it: they all show one text, which is judged
// while it is typed. Remembers what was applied. Harmless while there is no event. Main thread.
class filter_entry : public QObject {
    Q_OBJECT
  public:
    // The loop must outlive it.
    filter_entry(home_places places, run_loop& loop, QObject* parent = nullptr);
    ~filter_entry() override;

    // Null for none; both must outlive their use here.
    void set_source(clip_filtering* filtering, timeline_document* document);
    bool has_source() const { return filtering_ != nullptr; }
    timeline_document* document() const { return document_; }
    const home_places& places() const { return places_; }

    // As it stands in the fields.
    const QString& text() const { return text_; }
    void type(const QString& text);
    // Judges at once and remembers the text. False: something is wrong with it, and nothing changed.
    bool apply(const QString& text);
    // Every clip passes again.
    void clear();

    // Counts are 0 without an event.
    const filter_standing& standing() const { return standing_; }
    bool is_on() const { return !standing_.text.empty(); }
    // What is wrong with the text and what the filter still shows. It comes when the typing pauses and goes
    // when all is well. Empty: nothing.
    const QString& message() const { return message_; }
    const filter_colours& colours() const { return colours_; }
    // Reads the colours anew.
    void refresh_colours();
    // The names and categories in use, as they were counted last.
    const formula_texts& texts() const { return *texts_; }
    // Counts them on a thread of its own if the timeline changed since; told by texts_changed().
    void refresh_texts();

    // Of the list of remembered filters.
    void name_pattern(const QString& pattern, const QString& name);
    void remove_pattern(const QString& pattern);

  Q_SIGNALS:
    void patterns_changed();
    void text_changed();
    void standing_changed();
    void message_changed();
    void colours_changed();
    void source_changed();
    void texts_changed();
    // Something could not be done; both are fit for the user.
    void failed(const QString& headline, const QString& message);

  private:
    void tell_list(const result<void>& done);
    void set_text(const QString& text);
    void judge(const QString& text, bool at_once);
    void follow_standing();
    void show_message(bool at_once);
    void find_message();

    const home_places places_;
    run_loop& loop_;
    clip_filtering* filtering_ = nullptr;
    timeline_document* document_ = nullptr;
    filter_standing standing_;
    QString text_;
    QString message_;
    bool is_judging_ = false;  // what the filter tells now comes of this text
    QTimer pause_;             // until something wrong is told
    filter_colours colours_;
    connection changed_;
    connection edited_;
    std::shared_ptr<const formula_texts> texts_ = std::make_shared<formula_texts>();
    bool are_texts_old_ = true;
    bool is_counting_ = false;
    posted_work_guard guard_;  // of the counting under way
    std::unique_ptr<serial_queue> queue_ = std::make_unique<serial_queue>("filter texts");
};

}  // namespace vistels
