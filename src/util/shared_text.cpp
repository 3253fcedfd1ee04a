// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/shared_text.h"

#include <mutex>
#include <unordered_map>

namespace vistels {

namespace {

// Every text in use. Never destroyed, since texts in static objects may outlive any order of destruction.
struct text_pool {
    std::mutex mutex;
    std::unordered_map<std::string_view, std::weak_ptr<const std::string>> texts;

    static text_pool& instance() {
        static text_pool& pool = *new text_pool;
        return pool;
    }

    // The last user of a text is gone. Another thread may have put a new copy under the same key by then.
    void forget(const std::string* text) {
        {
            const std::lock_guard lock(mutex);
            const auto found = texts.find(*text);
            if (found != texts.end() && found->first.data() == text->data()) texts.erase(found);
        }
        delete text;
    }
};

}  // namespace

shared_text::shared_text(std::string_view text) {
    if (text.empty()) return;
    auto& pool = text_pool::instance();
    const std::lock_guard lock(pool.mutex);
    const auto found = pool.texts.find(text);
    if (found != pool.texts.end()) {
        text_ = found->second.lock();
        if (text_) return;
        pool.texts.erase(found);
    }
    const auto* kept = new std::string(text);
    text_.reset(kept, [](const std::string* gone) { text_pool::instance().forget(gone); });
    pool.texts.emplace(*text_, text_);
}

const std::string& shared_text::str() const {
    static const std::string none;
    return text_ ? *text_ : none;
}

}  // namespace vistels
