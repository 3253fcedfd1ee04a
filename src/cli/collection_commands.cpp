// SPDX-License-Identifier: GPL-3.0-or-later
#include <memory>

#include "app/event/offset_changes.h"
#include "app/event/padding_changes.h"
#include "app/settings/user_name.h"
#include "cli/collection_edit_commands.h"
#include "cli/collection_playback.h"
#include "cli/command_failures.h"
#include "cli/commands.h"
#include "cli/headless_changes.h"
#include "util/file_system.h"
#include "video/vault_lock.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Offsets.h"
#include "video/video_coll_Pictures.h"

namespace vistels {

namespace {

property_array parts_of(const single_Vistel_CTR& vistel) {
    const auto parts = vistel.parts();
    const auto starts = parts.starts();
    property_array printed;
    for (std::size_t index = 0; index < starts.size(); ++index) {
        const auto& part = parts.parts[index];
        property_dictionary one;
        one.add("file", part.path.empty() ? property_value() : property_value(absolute_path(part.path)));
        one.add("gap_before", part.gap_before);
        one.add("part_duration", part.part_duration);
        one.add("start", starts[index]);
        printed.emplace_back(std::move(one));
    }
    return printed;
}

property_dictionary vistel_document(const single_Vistel_CTR& vistel,
                                    const std::vector<vistel_offset>& items) {
    property_dictionary one;
    one.add("uuid", vistel.uuid());
    one.add("number", vistel.number());
    one.add("name", vistel.name());
    one.add("offset", vistel.manual_start_offset().value_or(0));
    one.add("lead_clips", lead_for_clips(items, {vistel.number(), vistel.manual_start_offset()}));
    one.add("lead_composer", lead_for_composer(items, vistel.number()));
    one.add("duration", vistel.parts().duration());
    one.add("parts", parts_of(vistel));
    if (vistel.is_inserted_picture()) {
        const std::string path = picture_path(vistel);
        one.add("picture", path.empty() ? property_value() : property_value(absolute_path(path)));
    }
    if (!overlay_path(vistel).empty()) one.add("overlay", absolute_path(overlay_path(vistel)));
    if (const auto problem = vistel.problem()) one.add("problem", problem.message());
    return one;
}

property_dictionary document_of(const loaded_collection& loaded) {
    const auto& collection = loaded.collection;
    const auto items = offsets_of(collection);
    property_dictionary printed;
    printed.add("uuid", collection.uuid());
    printed.add("coll_id", collection.quick_number());
    printed.add("name", collection.name());
    printed.add("state", video_type_state_text(collection.state()));
    printed.add("movie_time", collection.movie_time());
    printed.add("largest_offset_clips", largest_offset_for_clips(items));
    printed.add("largest_offset_composer", largest_offset_for_composer(items));
    property_array vistels;
    for (const auto& vistel : collection.vistels()) vistels.emplace_back(vistel_document(*vistel, items));
    printed.add("vistels", std::move(vistels));
    property_array problems;
    for (const auto* all : {&loaded.messages, &loaded.alerts}) {
        for (const auto& found : *all) problems.emplace_back(found.message());
    }
    if (!problems.empty()) printed.add("problems", std::move(problems));
    return printed;
}

struct new_values {
    std::string folder, name;
    std::vector<std::string> movies;
    bool append = false;
};

result<command_outcome> make_new(const new_values& values, command_line& line) {
    const auto how = values.append ? movies_as::one_vistel : movies_as::vistel_each;
    const auto made = new_collection(values.folder, values.name, values.movies, how, line.command_job(),
                                     load_user_name(line.places()));
    if (!made) return made.error();
    return show_collection(values.folder, line.places());
}

result<std::shared_ptr<single_Vistel_CTR>> vistel_of(const video_collection_ROOT& collection,
                                                     const std::string& folder, const std::string& name) {
    auto vistel = collection.find_vistel(name);
    if (!vistel) return collection_has_no_such_vistel(folder, name);
    return vistel;
}

struct vistel_values {
    std::string folder, vistel;
    double first = 0;
    double second = 0;
};

result<command_outcome> set_offset(const vistel_values& values, const home_places& places) {
    headless_changes changes;
    if (auto opened = changes.open(values.folder, places); !opened) return opened.error();
    const auto vistel = vistel_of(changes.collection(), values.folder, values.vistel);
    if (!vistel) return vistel.error();
    if (auto made = changes.make(plan_offset(values.vistel, values.first)); !made) return made.error();
    return show_collection(values.folder, places);
}

struct padding_values {
    std::string folder;
    bool replace = false;
    bool restore = false;
    bool remove = false;
};

result<command_outcome> pad(const padding_values& values, command_line& line) {
    const auto lock = vault_lock::take_around(values.folder);
    if (!lock) return lock.error();
    headless_changes changes;
    if (auto opened = changes.open(values.folder, line.places()); !opened) return opened.error();
    const auto command = values.replace   ? padding_command::replace_with_padding
                         : values.restore ? padding_command::restore_offsets
                                          : padding_command::remove_offsets_and_padding;
    const auto planned = plan_padding(changes.collection(), command);
    if (!planned) return collection_was_not_changed(values.folder, planned.error());
    if (auto made = make_padding_files(planned.value().files, changes.blank_movie(), line.command_job());
        !made)
        return made.error();
    auto changed = changes.make(planned.value().change);
    remove_unused_padding_files(changes.collection());
    if (!changed) return changed.error();
    return show_collection(values.folder, line.places());
}

result<command_outcome> range(const vistel_values& values, const home_places& places) {
    const auto loaded = load_collection(values.folder, places.local_vistels());
    if (!loaded) return loaded.error();
    const auto& collection = loaded.value().collection;
    const auto vistel = vistel_of(collection, values.folder, values.vistel);
    if (!vistel) return vistel.error();
    const auto& chosen = *vistel.value();
    const double lead =
        lead_for_clips(offsets_of(collection), {chosen.number(), chosen.manual_start_offset()});
    const auto source = source_range_of(values.first, values.second, lead, chosen.parts().duration());
    property_dictionary printed;
    printed.add("from", source.from);
    printed.add("seconds", source.seconds);
    printed.add("from_600", source.from_600);
    printed.add("duration_600", source.duration_600);
    return command_outcome{std::move(printed)};
}

void register_new_and_show(CLI::App& collection, command_line& line) {
    const auto made = std::make_shared<new_values>();
    CLI::App* command = line.command(collection, "new", "make a collection of movies, or an empty one",
                                     [made, &line] { return make_new(*made, line); });
    command->add_option("FOLDER", made->folder, "folder to make")->required();
    command->add_option("--name", made->name, "the collection's name")->required();
    command->add_option("MOVIE", made->movies, "movie files, one vistel for each; none: an empty collection");
    command->add_flag("--append", made->append, "one vistel of all movies, one after another");

    const auto folder = std::make_shared<std::string>();
    command = line.command(collection, "show", "load a collection",
                           [folder, &line] { return show_collection(*folder, line.places()); });
    command->add_option("FOLDER", *folder, "the collection's folder")->required();
}

void register_changes_and_range(CLI::App& collection, command_line& line) {
    const auto offset = std::make_shared<vistel_values>();
    CLI::App* command = line.command(collection, "offset", "set a vistel's start offset",
                                     [offset, &line] { return set_offset(*offset, line.places()); });
    command->add_option("FOLDER", offset->folder, "the collection's folder")->required();
    command->add_option("VISTEL", offset->vistel, "UUID or number of the vistel")->required();
    add_number(command, "SECONDS", offset->first, "its start offset")->required();

    const auto padding = std::make_shared<padding_values>();
    command = line.command(collection, "padding", "replace offsets and gaps with blank movies, and back",
                           [padding, &line] { return pad(*padding, line); });
    command->add_option("FOLDER", padding->folder, "the collection's folder")->required();
    CLI::Option_group* how = command->add_option_group("how");
    how->add_flag("--replace", padding->replace, "blank movies take the place of offsets and gaps");
    how->add_flag("--restore", padding->restore, "remove blank movies, offsets and gaps come back");
    how->add_flag("--remove", padding->remove, "remove blank movies and offsets");
    how->require_option(1);

    const auto clip = std::make_shared<vistel_values>();
    command = line.command(collection, "range", "what a clip shows of a vistel's movie",
                           [clip, &line] { return range(*clip, line.places()); });
    command->add_option("FOLDER", clip->folder, "the collection's folder")->required();
    command->add_option("VISTEL", clip->vistel, "UUID or number of the vistel")->required();
    add_number(command, "START", clip->first, "start of the clip, collection time")->required();
    add_number(command, "END", clip->second, "its end")->required();
}

}  // namespace

result<command_outcome> show_collection(const std::string& folder, const home_places& places) {
    const auto loaded = load_collection(folder, places.local_vistels());
    if (!loaded) return loaded.error();
    return command_outcome{document_of(loaded.value())};
}

void register_collection_commands(CLI::App& program, command_line& line) {
    CLI::App* collection = line.group(program, "collection", "make, show and play collections");
    register_new_and_show(*collection, line);
    register_changes_and_range(*collection, line);
    register_collection_edits(*collection, line);
    register_collection_playback(*collection, line);
}

}  // namespace vistels
