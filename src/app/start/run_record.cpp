// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start/run_record.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "util/clock.h"
#include "util/file_system.h"

namespace vistels {

namespace {

constexpr const char* loaded_key = "loaded at";
constexpr const char* ended_key = "terminated correctly at";

// The lock's descriptor; negative while another program holds it. Where nothing can be locked or written this
// program counts as alone: it is then the only one that can be known of.
int lock_state(const home_places& places) {
    constexpr mode_t readable_by_all = 0644;
    const std::string path = path_join(path_join(places.state_folder, "System"), "running.lock");
    int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, readable_by_all);
    if (descriptor < 0) descriptor = ::open(places.state_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0 && ::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

}  // namespace

std::optional<double> stored_time(const property_dictionary& stored, const char* key) {
    const auto* value = stored.find(key);
    if (!value) return std::nullopt;
    const auto seconds = value->date() ? std::optional(value->date()->seconds) : value->number();
    return seconds && std::isfinite(*seconds) ? seconds : std::nullopt;
}

run_record::run_record(const home_places& places) : places_(places), lock_(lock_state(places)) {}

run_record::~run_record() {
    if (lock_ >= 0) ::close(lock_);
}

run_record::last_run run_record::begin(result<void>& written) {
    const auto before = read_settings(places_, correctly_terminated_file);
    last_run last;
    last.uuid_last_focus = before.text_or_empty(last_focus_key);
    if (!is_alone()) return last;
    last.loaded_at = stored_time(before, loaded_key);
    const auto ended = stored_time(before, ended_key);
    last.ended_well = !last.loaded_at || (ended && *ended >= *last.loaded_at);
    // After the end of the run before also by a clock that was set back, so that this run is seen to be
    // begun.
    double now = seconds_since_1970();
    if (ended && now <= *ended) now = std::nextafter(*ended, INFINITY);
    property_dictionary stored;
    stored.add(loaded_key, now);
    written = write_settings(places_, correctly_terminated_file, stored);
    return last;
}

result<void> run_record::end() {
    if (!is_alone()) return {};
    const auto loaded = stored_time(read_settings(places_, correctly_terminated_file), loaded_key);
    property_dictionary stored;
    stored.add(ended_key, std::max(seconds_since_1970(), loaded.value_or(0)));
    return write_settings(places_, correctly_terminated_file, stored);
}

}  // namespace vistels
