// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/demo_event.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include "app/vaults/vault_failures.h"
#include "app/vaults/vaults.h"
#include "demo/code_plan.h"
#include "demo/demo_failures.h"
#include "demo/film_camera.h"
#include "demo/filming.h"
#include "demo/game_coding.h"
#include "demo/simulation.h"
#include "document/writer_lock.h"
#include "logger/logger_Dict_funcs.h"
#include "logger/logger_settings.h"
#include "timeline/files/sxy_Save_Load.h"
#include "timeline/files/timeline_form.h"
#include "util/file_failures.h"
#include "util/file_system.h"
#include "util/uuid.h"
#include "video/vault_lock.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_LOAD.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

namespace {

namespace fs = std::filesystem;

constexpr const char* event_name = "Harbour – Northgate";
constexpr const char* collections_folder_name = "Video Groups";
constexpr const char* unfinished_mark = ".filming ";
constexpr int most_cameras = 16;
constexpr int least_seconds = 2;
constexpr int most_seconds = 7200;
constexpr double after_seconds = 2;  // of the game beyond what is filmed, for cameras that look ahead
constexpr int longest_gap_frames = 2 * demo::film_frame_rate;

// A hidden folder that is taken away with all it holds.
class passing_folder {
  public:
    explicit passing_folder(std::string path) : path_(std::move(path)) {}
    ~passing_folder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    passing_folder(const passing_folder&) = delete;
    passing_folder& operator=(const passing_folder&) = delete;
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

// What a program that died while it made the event has left in the vault; nobody holds it.
void remove_unfinished(const std::string& vault) {
    for (const auto& name : names_in_folder(vault)) {
        if (!name.starts_with(unfinished_mark)) continue;
        const std::string folder = path_join(vault, name);
        std::error_code ignored;
        if (const auto lock = writer_lock::take(folder, timeline_form)) fs::remove_all(folder, ignored);
    }
}

result<void> check(const demo_options& options) {
    if (options.cameras < 1 || options.cameras > most_cameras) return demo_has_too_many_cameras(most_cameras);
    if (options.seconds < least_seconds || options.seconds > most_seconds)
        return demo_has_another_length(least_seconds, most_seconds);
    return {};
}

result<void> move_folder(const std::string& from, const std::string& to) {
    if (const int fault = machine_files().rename(from, to))
        return file_could_not_be_made(to, system_failure(fault));
    (void)machine_files().sync_folder(path_folder(to));
    return {};
}

// The name itself, or with a number when a folder has it already.
std::string free_name(const std::string& folder, const std::string& name) {
    std::string chosen = name;
    for (int number = 2; file_exists(path_join(folder, chosen)); ++number)
        chosen = name + " " + std::to_string(number);
    return chosen;
}

// Makes the event in a folder of its own; nothing outside it is touched.
class event_maker {
  public:
    event_maker(std::string folder, std::string name, const demo_options& options)
        : folder_(std::move(folder)), name_(std::move(name)), options_(options) {
        for (int camera = 0; camera < options.cameras; ++camera)
            largest_offset_ = std::max(largest_offset_, demo::film_offset_at(camera));
    }

    std::string collection_folder() const { return path_join(folder_, "collection"); }
    std::string vistels_folder() const { return path_join(folder_, vistels_folder_name); }

    result<void> make(job& work) {
        const demo::game_record game = demo::simulate_game(options_.seed, options_.seconds + after_seconds);
        if (auto made = make_vistels(); !made) return made;
        if (auto filmed = demo::film_game(game, orders_, work); !filmed) return filmed;
        if (auto saved = save_records(game); !saved) return saved;
        if (work.is_cancelled()) return demo_was_cancelled();
        return {};
    }

  private:
    int frames() const { return options_.seconds * demo::film_frame_rate; }

    // Two movies with a gap between them for one camera: it changed its battery.
    std::vector<demo::film_part> parts_of(int camera, const std::string& folder) const {
        const std::string first = path_join(folder, part_name(1, ".mp4"));
        if (camera != std::min(2, options_.cameras - 1)) return {{first, 0, frames()}};
        const int gap = std::min(longest_gap_frames, frames() / 4);
        const int until = (frames() - gap) * 11 / 20;
        const int again = until + gap;
        return {{first, 0, until}, {path_join(folder, part_name(2, ".mp4")), again, frames() - again}};
    }

    result<void> make_vistels() {
        std::vector<std::shared_ptr<single_Vistel_CTR>> vistels;
        const std::vector<rectangle> places = grid_layout(static_cast<std::size_t>(options_.cameras));
        for (int camera = 0; camera < options_.cameras; ++camera) {
            auto vistel = std::make_shared<single_Vistel_CTR>();
            vistel->set_uuid(new_uuid());
            vistel->set_name(std::string(demo::film_camera_at(camera).name));
            vistel->set_number(camera + 1);
            vistel->set_vistel_number_displayed(camera + 1);
            vistel->set_saved_view_order(camera + 1);
            vistel->set_proportion_rect(places[static_cast<std::size_t>(camera)]);
            vistel->set_manual_start_offset(demo::film_offset_at(camera));
            vistel->set_data_folder(path_join(vistels_folder(), vistel->uuid()));
            if (auto made = make_folders(vistel->data_folder()); !made) return made;
            demo::film_order order{camera, demo::film_offset_at(camera) - largest_offset_,
                                   parts_of(camera, vistel->data_folder())};
            vistel->set_parts(records_of(order.parts));
            orders_.push_back(std::move(order));
            vistels.push_back(std::move(vistel));
        }
        collection_.set_vistels(std::move(vistels));
        return {};
    }

    static movie_Part_DRONE_Offsets_Root records_of(const std::vector<demo::film_part>& parts) {
        movie_Part_DRONE_Offsets_Root records;
        int end = 0;
        for (const demo::film_part& part : parts) {
            const auto seconds = [](int count) { return static_cast<double>(count) / demo::film_frame_rate; };
            records.parts.push_back({seconds(part.first_frame - end), seconds(part.frames), part.path, {}});
            end = part.first_frame + part.frames;
        }
        return records;
    }

    result<void> save_records(const demo::game_record& game) {
        const std::string folder = collection_folder();
        if (auto made = make_folders(folder); !made) return made;
        collection_.set_uuid(new_uuid());
        collection_.set_quick_number(new_quick_number());
        collection_.set_name(name_);
        collection_.set_state(video_type_state::playback);
        collection_.set_displays_vistel_number(true);
        collection_.set_vistel_for_sound(collection_.vistels().front()->uuid());
        const timeline_snapshot timeline =
            demo::code_game(game, options_.seconds, collection_.quick_number());
        collection_.set_linked_timeline(timeline.uuid);
        timeline_header header;
        header.uuid = timeline.uuid;
        header.linked_collection = collection_.uuid();
        header.name = name_;
        header.duration = options_.seconds;
        if (auto saved = save_timeline(timeline, folder); !saved) return saved;
        if (auto saved = save_timeline_header(header, folder); !saved) return saved;
        const std::string logger = path_join(folder, logger_folder_name);
        if (auto saved = save_button_dict(demo::demo_code_window(), logger); !saved) return saved;
        logger_settings settings;
        settings.linked_timeline_uuid = timeline.uuid;
        if (auto saved = save_logger_settings(settings, logger); !saved) return saved;
        return save_collection(collection_, folder);
    }

    const std::string folder_;
    const std::string name_;
    const demo_options options_;
    double largest_offset_ = 0;  // never below 0, as for clips
    std::vector<demo::film_order> orders_;
    video_collection_ROOT collection_;
};

// Puts the vistels in place and then the collection, which makes them known.
result<void> put_in_place(const event_maker& made, const std::string& vault, const std::string& collection) {
    const auto lock = vault_lock::take(vault);
    if (!lock) return lock.error();
    const std::string vistels = path_join(vault, vistels_folder_name);
    std::vector<std::string> moved;
    result<void> outcome = make_folders(vistels);
    for (const std::string& name : names_in_folder(made.vistels_folder())) {
        if (!outcome) break;
        moved.push_back(path_join(vistels, name));
        outcome = move_folder(path_join(made.vistels_folder(), name), moved.back());
    }
    if (outcome) outcome = move_folder(made.collection_folder(), collection);
    std::error_code ignored;
    if (!outcome)
        for (const std::string& folder : moved) fs::remove_all(folder, ignored);
    return outcome;
}

}  // namespace

result<demo_paths> make_demo_collection(const std::string& vault_folder, const demo_options& options,
                                        job& work) {
    if (auto checked = check(options); !checked) return checked.error();
    const std::string collections = path_join(vault_folder, collections_folder_name);
    const bool had_collections = is_folder(collections);
    remove_unfinished(vault_folder);
    const passing_folder hidden(path_join(vault_folder, unfinished_mark + new_uuid()));
    if (auto made = make_folders(hidden.path()); !made) return made.error();
    const auto lock = writer_lock::take(hidden.path(), timeline_form);
    if (!lock) return lock.error();
    event_maker maker(hidden.path(), free_name(collections, event_name), options);
    if (auto made = maker.make(work); !made) return made.error();
    if (auto made = make_folders(collections); !made) return made.error();
    demo_paths paths;
    paths.vault = vault_folder;
    paths.collection = path_join(collections, free_name(collections, event_name));
    paths.timeline = paths.collection;
    paths.logger = path_join(paths.collection, logger_folder_name);
    if (auto put = put_in_place(maker, vault_folder, paths.collection); !put) {
        std::error_code ignored;
        if (!had_collections) fs::remove(collections, ignored);
        return put.error();
    }
    return paths;
}

result<demo_paths> make_demo_event(const std::string& parent_folder, const demo_options& options, job& work) {
    if (auto checked = check(options); !checked) return checked.error();
    if (options.vault_name.empty() || options.vault_name.find('/') != std::string::npos)
        return demo_vault_has_no_name(options.vault_name);
    std::error_code ignored;
    const std::string parent = fs::absolute(parent_folder, ignored).lexically_normal().string();
    const std::string vault = path_join(parent, options.vault_name + vault_ending);
    if (file_exists(vault)) return vault_exists(options.vault_name, vault);
    const bool had_parent = is_folder(parent);
    result<demo_paths> outcome = failure();
    {
        const passing_folder hidden(path_join(parent, ".making " + new_uuid() + vault_ending));
        if (auto made = make_folders(hidden.path()); !made) return made.error();
        outcome = make_demo_collection(hidden.path(), options, work);
        if (outcome) {
            if (auto put = move_folder(hidden.path(), vault); !put) outcome = put.error();
        }
        if (outcome) {
            demo_paths& paths = outcome.value();
            for (std::string* path : {&paths.vault, &paths.collection, &paths.timeline, &paths.logger})
                *path = vault + path->substr(hidden.path().size());
        }
    }
    if (!outcome && !had_parent) fs::remove(parent, ignored);
    return outcome;
}

}  // namespace vistels
