// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// A timeline may be shown by several views, each with its own filter and selection. Those of the main one are
// also the marks of the clips (filtered in, selected), which a save of the selected clips alone goes by.
enum class view_kind { main, further };

}  // namespace vistels
