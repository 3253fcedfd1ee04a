// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/filter_entry.h"

#include <utility>

#include "app/settings/formula_colours.h"
#include "app/settings/search_patterns.h"
#include "shell/filter/filter_display.h"
#include "shell/kit/failure_words.h"
#include "util/wait_watch.h"

namespace vistels {

namespace {

// A half-written word is not called wrong while its writer goes on.
constexpr int message_pause_milliseconds = 600;

// Blanks alone are no filter: nobody means to see nothing by them.
std::string judged_text(const QString& text) {
    return text.trimmed().isEmpty() ? std::string() : text.toStdString();
}

}  // namespace

filter_entry::filter_entry(home_places places, run_loop& loop, QObject* parent)
    : QObject(parent), places_(std::move(places)), loop_(loop) {
    pause_.setSingleShot(true);
    pause_.setInterval(message_pause_milliseconds);
    connect(&pause_, &QTimer::timeout, this, &filter_entry::find_message);
    refresh_colours();
}

filter_entry::~filter_entry() {
    const expected_waits closing("a filter's field goes, and what counts names for it ends");
    queue_->forget_waiting();
    queue_.reset();
}

void filter_entry::set_source(clip_filtering* filtering, timeline_document* document) {
    changed_.disconnect();
    filtering_ = filtering;
    document_ = document;
    edited_.disconnect();
    standing_ = {};
    guard_.drop();
    is_counting_ = false;
    texts_ = std::make_shared<formula_texts>();
    are_texts_old_ = true;
    if (document_) edited_ = document_->changed.connect([this](const change_set&) { are_texts_old_ = true; });
    if (filtering_) changed_ = filtering_->changed.connect([this](bool) { follow_standing(); });
    set_text(filtering_ ? QString::fromStdString(filtering_->standing().typed) : QString());
    follow_standing();
    Q_EMIT source_changed();
}

void filter_entry::set_text(const QString& text) {
    if (text == text_) return;
    text_ = text;
    Q_EMIT text_changed();
}

void filter_entry::judge(const QString& text, bool at_once) {
    set_text(text);
    if (filtering_) {
        is_judging_ = true;
        at_once ? filtering_->apply(judged_text(text)) : filtering_->type(judged_text(text));
        is_judging_ = false;
    }
    show_message(at_once);
}

void filter_entry::type(const QString& text) {
    judge(text, false);
}

bool filter_entry::apply(const QString& text) {
    judge(text, true);
    if (!display_filter(text).problems.isEmpty()) return false;
    if (has_source() && !text.trimmed().isEmpty()) {
        const auto kept = remember_search_pattern(places_, text.toStdString());
        if (!kept)
            Q_EMIT failed(tr("The filter is applied, but not kept in the list"), words_of(kept.error()));
        Q_EMIT patterns_changed();
    }
    return true;
}

void filter_entry::name_pattern(const QString& pattern, const QString& name) {
    tell_list(name_search_pattern(places_, pattern.toStdString(), name.trimmed().toStdString()));
}

void filter_entry::remove_pattern(const QString& pattern) {
    tell_list(remove_search_pattern(places_, pattern.toStdString()));
}

void filter_entry::tell_list(const result<void>& done) {
    if (!done) Q_EMIT failed(tr("The list of filters was not changed"), words_of(done.error()));
    Q_EMIT patterns_changed();
}

void filter_entry::clear() {
    judge({}, true);
}

void filter_entry::follow_standing() {
    if (filtering_) {
        standing_ = filtering_->standing();
        // Another has set or cleared the filter.
        if (!is_judging_ && standing_.typed != judged_text(text_)) {
            set_text(QString::fromStdString(standing_.typed));
            show_message(true);
        }
    }
    Q_EMIT standing_changed();
    if (!message_.isEmpty()) find_message();  // it says how many pass
}

void filter_entry::show_message(bool at_once) {
    pause_.stop();
    const bool is_wrong = has_source() && !display_filter(text_).problems.isEmpty();
    if (!is_wrong || at_once || !message_.isEmpty()) return find_message();
    pause_.start();
}

void filter_entry::find_message() {
    QString message;
    if (const QString problems = display_filter(text_).problems; has_source() && !problems.isEmpty()) {
        message = is_on() ? tr("%1. Filter unchanged: still %2 of %3.")
                                .arg(problems)
                                .arg(standing_.passing)
                                .arg(standing_.total)
                          : tr("%1. Every clip is still shown.").arg(problems);
    }
    if (message == message_) return;
    message_ = message;
    Q_EMIT message_changed();
}

void filter_entry::refresh_texts() {
    if (!document_ || !are_texts_old_ || is_counting_) return;
    are_texts_old_ = false;
    is_counting_ = true;
    auto arrive = guard_.guarded([this](const std::shared_ptr<const formula_texts>& counted) {
        is_counting_ = false;
        texts_ = counted;
        Q_EMIT texts_changed();
    });
    queue_->post([&loop = loop_, revision = document_->snapshot(), arrive]() mutable {
        const auto counted = std::make_shared<const formula_texts>(revision);
        revision = {};
        loop.post([arrive, counted]() mutable { arrive(counted); });
    });
}

void filter_entry::refresh_colours() {
    const filter_colours read(load_formula_colours(places_));
    if (read == colours_) return;
    colours_ = read;
    Q_EMIT colours_changed();
}

}  // namespace vistels
