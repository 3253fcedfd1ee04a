// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>

#include "document/file_content_mark.h"
#include "document/recorded_form.h"
#include "util/file_system.h"
#include "util/recovery.h"

namespace vistels {

// What another file of a document tells of the contents that its main file held.
struct saved_contents {
    bool can_be_told = true;  // the volume could read it
    bool is_known = false;
    file_content_mark last;
    file_content_mark before;
};

// recover_folder for a folder in which a document may lie. A copy of the file of the form is put back only
// when its content is the one saved last or before, or one that the journal continues: any other would bring
// an older state back. Where neither tells, its age decides. `saved` is called when there is such a copy.
recovery recover_document_folder(const std::string& folder, const recorded_form& form,
                                 const std::function<saved_contents()>& saved,
                                 file_system& files = machine_files());

}  // namespace vistels
