// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/collection_edit_commands.h"

#include <functional>
#include <memory>

#include "app/event/close_vistel.h"
#include "app/event/part_changes.h"
#include "app/event/vistel_changes.h"
#include "app/settings/settings.h"
#include "app/settings/user_name.h"
#include "cli/command_failures.h"
#include "cli/headless_changes.h"
#include "document/writer_lock.h"
#include "timeline/files/timeline_form.h"
#include "util/clock.h"
#include "util/file_system.h"
#include "util/safe_write.h"
#include "util/text_forms.h"
#include "video/vault_lock.h"
#include "video/video_coll_Duplicate_funcs.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Pictures.h"

namespace vistels {

namespace {

struct edit_values {
    std::string folder, vistel, to, user;
    std::vector<std::string> files;
    std::int64_t place = 0;
    bool append = false;
    bool locally = false;
    bool confirmed = false;
    bool remove = false;
};

std::string user_of(const edit_values& values, const home_places& places) {
    return values.user.empty() ? load_user_name(places) : values.user;
}

using planner = std::function<result<collection_change>(headless_changes&)>;

// Makes the change that is planned and saves, with the timeline in step, while no other program has the event
// open. What is loaded of it then is printed. A change that was not made drops what it brought.
result<command_outcome> change(const edit_values& values, command_line& line, const planner& plan,
                               const std::function<void()>& drop = {}) {
    headless_changes changes;
    if (auto opened = changes.open(values.folder, line.places()); !opened) return opened.error();
    const auto planned = plan(changes);
    if (!planned) return planned.error();
    if (auto made = changes.make(planned.value()); !made) {
        if (drop && !changes.is_made()) drop();
        return made.error();
    }
    return show_collection(values.folder, line.places());
}

result<std::shared_ptr<single_Vistel_CTR>> vistel_of(const headless_changes& changes,
                                                     const edit_values& values) {
    auto vistel = changes.collection().find_vistel(values.vistel);
    if (vistel) return vistel;
    return collection_has_no_such_vistel(values.folder, values.vistel);
}

// The same for a change of one vistel.
using vistel_planner = std::function<result<collection_change>(headless_changes&, const single_Vistel_CTR&)>;

result<command_outcome> change_vistel(const edit_values& values, command_line& line,
                                      const vistel_planner& plan, const std::function<void()>& drop = {}) {
    const auto plan_it = [&](headless_changes& changes) -> result<collection_change> {
        const auto vistel = vistel_of(changes, values);
        if (!vistel) return vistel.error();
        return plan(changes, *vistel.value());
    };
    return change(values, line, plan_it, drop);
}

// Where new vistels go: as the option says, else as the setting does.
new_vistels made_with(const edit_values& values, const home_places& places) {
    const bool next_to = load_local_video_data(places).in_collection_folder;
    const std::string folder =
        values.locally ? places.local_vistels() : new_vistels_folder(values.folder, next_to);
    return {folder, user_of(values, places), values.locally};
}

result<std::vector<std::string>> movies_of(const edit_values& values) {
    std::vector<std::string> movies;
    for (const auto& file : values.files) {
        auto found = movies_of_item(file);
        if (!found) return found.error();
        movies.insert(movies.end(), found.value().begin(), found.value().end());
    }
    return movies;
}

// The movies become further parts of a vistel.
result<command_outcome> append(edit_values values, command_line& line,
                               const std::vector<std::string>& movies) {
    values.vistel = values.to;
    part_list brought;
    const auto bring = [&](auto&, const auto& vistel) -> result<collection_change> {
        auto made = bring_parts(vistel, movies, line.command_job());
        if (!made) return made.error();
        brought = std::move(made).value();
        return plan_more_parts(vistel.uuid(), brought);
    };
    return change_vistel(values, line, bring, [&] { discard(brought); });
}

result<command_outcome> add(const edit_values& values, command_line& line) {
    const auto movies = movies_of(values);
    if (!movies) return movies.error();
    if (!values.to.empty()) return append(values, line, movies.value());
    vistel_list brought;
    const auto bring = [&](headless_changes& changes) -> result<collection_change> {
        const auto how = values.append ? movies_as::one_vistel : movies_as::vistel_each;
        auto made = make_vistels(made_with(values, line.places()), movies.value(), how, line.command_job());
        if (!made) return made.error();
        brought = std::move(made).value();
        return plan_new_vistels(brought, changes.timeline());
    };
    return change(values, line, bring, [&] { discard(brought); });
}

result<command_outcome> remove(const edit_values& values, command_line& line) {
    const auto lock = vault_lock::take_around(values.folder);
    if (!lock) return lock.error();
    return change_vistel(values, line, [](auto&, const auto& vistel) { return plan_removal(vistel.uuid()); });
}

result<command_outcome> move(const edit_values& values, command_line& line) {
    const auto lock = vault_lock::take_around(values.folder);
    if (!lock) return lock.error();
    return change_vistel(values, line, [&](auto&, const auto& vistel) {
        return plan_place(vistel.uuid(), static_cast<std::size_t>(values.place - 1));
    });
}

result<command_outcome> duplicate(const edit_values& values, command_line& line) {
    vistel_list brought;
    const auto clone = [&](headless_changes& changes, const auto& vistel) -> result<collection_change> {
        auto made = duplicate_vistel(vistel, made_with(values, line.places()), line.command_job());
        if (!made) return made.error();
        brought = {std::move(made).value()};
        return plan_new_vistels(brought, changes.timeline());
    };
    return change_vistel(values, line, clone, [&] { discard(brought); });
}

result<command_outcome> close_for_good(const edit_values& values, command_line& line) {
    headless_changes changes;
    if (auto opened = changes.open(values.folder, line.places()); !opened) return opened.error();
    if (const auto vistel = vistel_of(changes, values); !vistel) return vistel.error();
    const auto take_out = [&](const collection_change& removal) { return changes.make(removal); };
    const auto closed = close_vistel_for_good(
        changes.collection(),
        {values.vistel, user_of(values, line.places()), values.confirmed, line.places().trash}, take_out);
    if (!closed) return closed.error();
    if (closed.value().problem) return movie_data_stayed(closed.value().problem);
    return show_collection(values.folder, line.places());
}

result<command_outcome> deinterlace(const edit_values& values, command_line& line) {
    part_list brought;
    const auto replace = [&](auto&, const auto& vistel) -> result<collection_change> {
        auto made = deinterlaced_parts(vistel, line.command_job());
        if (!made) return made.error();
        brought = std::move(made).value();
        return plan_other_movies(vistel.uuid(), vistel.parts().parts, brought);
    };
    return change_vistel(values, line, replace, [&] { discard(brought); });
}

result<command_outcome> overlay(const edit_values& values, command_line& line) {
    return change_vistel(values, line, [&](auto&, const auto& vistel) -> result<collection_change> {
        if (values.remove || values.files.empty()) return plan_overlay(vistel.uuid(), std::nullopt);
        auto brought = bring_overlay(vistel, values.files.front(), line.command_job());
        if (!brought) return brought.error();
        return plan_overlay(vistel.uuid(), std::move(brought).value());
    });
}

result<command_outcome> copy(const edit_values& values, command_line& line) {
    const auto loaded = load_collection(values.folder, line.places().local_vistels());
    if (!loaded) return loaded.error();
    const auto vistel = loaded.value().collection.find_vistel(values.vistel);
    if (!vistel) {
        return collection_has_no_such_vistel(values.folder, values.vistel);
    }
    const std::string to = values.to.empty() ? line.places().desktop : values.to;
    if (auto made = values.to.empty() ? make_folders(to) : result<void>(); !made) return made.error();
    const auto copies = copy_vistel_movie(*vistel, to, line.command_job());
    if (!copies) return copies.error();
    property_dictionary printed;
    printed.add("files", property_array(copies.value().begin(), copies.value().end()));
    return command_outcome{std::move(printed)};
}

result<command_outcome> tidy(const edit_values& values, command_line& line) {
    const auto lock = writer_lock::take(values.folder, timeline_form);
    if (!lock) return lock.error();
    const auto loaded = load_collection(values.folder, line.places().local_vistels());
    if (!loaded) return loaded.error();
    const auto moved = trash_unused_movies(loaded.value().collection, line.places().trash);
    if (!moved) return moved.error();
    property_array paths;
    for (const auto& one : moved.value()) paths.emplace_back(one.path);
    property_dictionary printed;
    printed.add("trashed", std::move(paths));
    return command_outcome{std::move(printed)};
}

// The records alone, as they would be saved; what did not change keeps its date.
result<command_outcome> resave(const edit_values& values, const home_places& places) {
    const auto loaded = load_collection(values.folder, places.local_vistels());
    if (!loaded) return loaded.error();
    const auto& collection = loaded.value().collection;
    const auto lock = vault_lock::take_around(values.to);
    if (!lock) return lock.error();
    const double date = collection.stored().number("seconds updated").value_or(seconds_since_1970());
    if (auto made = make_folders(values.to); !made) return made.error();
    auto saved = safe_write(path_join(values.to, collection_file_name), write_collection(collection, date));
    if (!saved) return saved.error();
    std::int64_t vistels = 0;
    for (const auto& vistel : collection.vistels()) {
        if (vistel->data_folder().empty()) continue;
        const std::string folder =
            path_join(path_join(values.to, vistels_folder_name), path_name(vistel->data_folder()));
        if (auto made = make_folders(folder); !made) return made.error();
        saved = safe_write(path_join(folder, vistel_file_name), write_vistel_record(*vistel));
        if (!saved) return saved.error();
        ++vistels;
    }
    property_dictionary printed;
    printed.add("vistels", vistels);
    return command_outcome{std::move(printed)};
}

using edit_command = result<command_outcome> (*)(const edit_values&, command_line&);

// A command that has the collection's folder, and with `vistel` one of its vistels.
CLI::App* add_command(CLI::App& collection, command_line& line, const std::shared_ptr<edit_values>& values,
                      const char* name, const char* description, edit_command run, bool vistel) {
    CLI::App* command =
        line.command(collection, name, description, [values, run, &line] { return run(*values, line); });
    command->add_option("FOLDER", values->folder, "the collection's folder")->required();
    if (vistel) command->add_option("VISTEL", values->vistel, "UUID or number of the vistel")->required();
    return command;
}

void add_user(CLI::App* command, edit_values& values) {
    command->add_option("--user", values.user, "the user's name (else that of the system)");
}

void register_files(CLI::App& collection, command_line& line, const std::shared_ptr<edit_values>& values) {
    CLI::App* command =
        add_command(collection, line, values, "add", "add vistels of movies and pictures", add, false);
    command->add_option("MOVIE", values->files, "movie or picture files, or folders of movies")->required();
    command->add_flag("--append", values->append, "one new vistel of all movies, one after another");
    command->add_option("--to", values->to, "append the movies to this vistel (UUID or number)");
    command->add_flag("--locally", values->locally, "keep the data on this machine only");
    add_user(command, *values);

    command = add_command(collection, line, values, "duplicate", "clone a vistel", duplicate, true);
    command->add_flag("--locally", values->locally, "keep the clone's data on this machine only");
    add_user(command, *values);

    add_command(collection, line, values, "deinterlace", "deinterlace a vistel's movies", deinterlace, true);
    command = add_command(collection, line, values, "overlay", "draw a picture over a vistel", overlay, true);
    command->add_option("PICTURE", values->files, "PNG or JPEG file")->expected(0, 1);
    command->add_flag("--remove", values->remove, "remove the overlay");
    command =
        add_command(collection, line, values, "copy", "copy a vistel's movie to the desktop", copy, true);
    command->add_option("--to", values->to, "folder in the place of the desktop");
}

}  // namespace

void register_collection_edits(CLI::App& collection, command_line& line) {
    const auto values = std::make_shared<edit_values>();
    register_files(collection, line, values);
    add_command(collection, line, values, "remove", "remove a vistel; its data stays", remove, true);
    CLI::App* command =
        add_command(collection, line, values, "move", "move a vistel in the order", move, true);
    command->add_option("PLACE", values->place, "its new place, from 1")
        ->required()
        ->check([](const std::string& text) {
            const auto place = integer_from_text(text);
            return place && *place > 0 ? std::string() : "\"" + text + "\" is no place: they count from 1";
        });
    command = add_command(collection, line, values, "close", "close a vistel for good: its data to the trash",
                          close_for_good, true);
    command->add_flag("--confirmed", values->confirmed, "also when somebody else made it");
    add_user(command, *values);
    add_command(collection, line, values, "tidy", "unused movies of the vistels to the trash", tidy, false);

    command = line.command(collection, "resave", "load a collection and save its records",
                           [values, &line] { return resave(*values, line.places()); });
    command->add_option("FOLDER", values->folder, "the collection's folder")->required();
    command->add_option("--to", values->to, "folder to save to")->required();
}

}  // namespace vistels
