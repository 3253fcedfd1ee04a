// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels::testing {

// Built with a sanitizer that makes everything many times slower: what is repeated for its number is repeated
// less often.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool is_sanitized = true;
#else
inline constexpr bool is_sanitized = false;
#endif

}  // namespace vistels::testing
