// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/shared_text.h"

#include <array>
#include <mutex>
#include <unordered_map>

#include "util/checksum.h"

namespace vistels {

namespace {

struct text_key {
    std::uint64_t hash;
    std::string_view text;
    bool operator==(const text_key& other) const { return hash == other.hash && text == other.text; }
};

struct key_hash {
    std::size_t operator()(const text_key& key) const noexcept { return key.hash; }
};

}  // namespace

// Every text in use, in parts so that threads that read files do not wait for each other. Never destroyed,
// since texts in static objects may outlive any order of destruction.
class shared_text::pool {
  public:
    static pool& instance() {
        static pool& all = *new pool;
        return all;
    }

    pooled* take(std::string_view text) {
        const std::uint64_t hash = checksum(text);
        auto& mine = part_of(hash);
        const std::lock_guard lock(mine.mutex);
        const auto found = mine.texts.find({hash, text});
        if (found != mine.texts.end()) {
            if (use_again(*found->second)) return found->second;
            mine.texts.erase(found);  // its last user is on the way to delete it
        }
        auto* fresh = new pooled(text, hash);
        mine.texts.emplace(text_key{hash, fresh->text}, fresh);
        return fresh;
    }

    // Another thread may have put a new copy under the same key by now.
    void remove(pooled* unused) {
        auto& mine = part_of(unused->hash);
        {
            const std::lock_guard lock(mine.mutex);
            const auto found = mine.texts.find({unused->hash, unused->text});
            if (found != mine.texts.end() && found->second == unused) mine.texts.erase(found);
        }
        delete unused;
    }

  private:
    struct part {
        std::mutex mutex;
        std::unordered_map<text_key, pooled*, key_hash> texts;
    };
    static constexpr std::size_t part_count = 16;

    part& part_of(std::uint64_t hash) { return parts_[hash >> 60U]; }

    // What is no longer used by anybody stays so.
    static bool use_again(pooled& text) {
        auto uses = text.uses.load(std::memory_order_relaxed);
        while (uses != 0) {
            if (text.uses.compare_exchange_weak(uses, uses + 1, std::memory_order_relaxed)) return true;
        }
        return false;
    }

    std::array<part, part_count> parts_;
};

shared_text::shared_text(std::string_view text) {
    if (!text.empty()) kept_ = pool::instance().take(text);
}

const std::string& shared_text::empty_text() {
    static const std::string none;
    return none;
}

void shared_text::forget(pooled* unused) {
    pool::instance().remove(unused);
}

}  // namespace vistels
