// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/sxy_CLIP.h"

#include <atomic>

namespace vistels {

namespace {

constexpr std::string_view no_style = "CLIP_STYLE__NONE";

}  // namespace

sxy_CLIP& sxy_CLIP::operator=(sxy_CLIP&& other) noexcept {
    if (this == &other) return *this;
    const record_guard guard(lk);
    static_cast<clip_fields&>(*this) = std::move(static_cast<clip_fields&>(other));
    return *this;
}

clip_fields sxy_CLIP::fields() const {
    const record_guard guard(lk);
    return *this;
}

bool sxy_CLIP::has_id(std::string_view uuid) const {
    const record_guard guard(lk);
    return _id == uuid;
}

std::shared_ptr<const qual_ROOT> sxy_CLIP::qualifiers() const {
    static const auto none = std::make_shared<const qual_ROOT>();
    const record_guard guard(lk);
    return qual_Root ? qual_Root : none;
}

void sxy_CLIP::set_qualifiers(qual_ROOT all) {
    using kept = std::shared_ptr<const qual_ROOT>;
    write(qual_Root, all.empty() ? kept() : kept(std::make_shared<const qual_ROOT>(std::move(all))));
}

void sxy_CLIP::set_frame_style(const shared_text& style) {
    set_part(&clip_rare_fields::frame_Style_k11, style == no_style ? shared_text() : style);
}

std::string sxy_CLIP::note_text() const {
    const auto all = note();
    return all ? all->text() : std::string();
}

std::uint32_t sxy_CLIP::new_number() const {
    static std::atomic<std::uint32_t> last = 0;
    const record_guard guard(lk);
    const std::atomic_ref<std::uint32_t> number(temp_quick_uuid);
    if (number.load(std::memory_order_relaxed) == 0) number.store(++last, std::memory_order_relaxed);
    return number.load(std::memory_order_relaxed);
}

void sxy_CLIP::order_times() {
    const record_guard guard(lk);
    if (clip_fields::secs_end < clip_fields::secs_start) {
        std::swap(clip_fields::secs_start, clip_fields::secs_end);
    }
}

bool clip_before(const sxy_CLIP& a, const sxy_CLIP& b) {
    if (a.secs_start() != b.secs_start()) return a.secs_start() < b.secs_start();
    if (a.secs_end() != b.secs_end()) return a.secs_end() < b.secs_end();
    return a.short_id() < b.short_id();
}

std::optional<std::string> clip_type_text(clip_type type) {
    switch (type) {
        case clip_type::normal:
            return std::nullopt;
        case clip_type::picture:
            return "pic";
        case clip_type::movie:
            return "movie";
        default:
            return "unknown";
    }
}

clip_type clip_type_from_text(std::string_view text) {
    if (text == "pic") return clip_type::picture;
    if (text == "movie") return clip_type::movie;
    return text == "normal" ? clip_type::normal : clip_type::unknown;
}

}  // namespace vistels
