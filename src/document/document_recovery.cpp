// SPDX-License-Identifier: GPL-3.0-or-later
#include "document/document_recovery.h"

#include "document/change_journal.h"

namespace vistels {

recovery recover_document_folder(const std::string& folder, const recorded_form& form,
                                 const std::function<saved_contents()>& saved, file_system& files) {
    const auto judge_copy = [&](const std::string& bytes) {
        const auto known = saved();
        if (!known.can_be_told) return held_content::cannot_be_told_now;
        const auto mark = content_mark_of(bytes);
        if (mark == known.last || mark == known.before) return held_content::yes;
        const auto journal = read_journal(folder, form, mark, files);
        if (!journal) return held_content::cannot_be_told_now;
        if (journal.value().fits) return held_content::yes;
        return known.is_known ? held_content::no : held_content::not_known;
    };
    return recover_folder(folder, files, [&](const std::string& name, const std::string& bytes) {
        return name == form.file_name ? judge_copy(bytes) : held_content::not_known;
    });
}

}  // namespace vistels
