// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "timeline/clip_attribute_ITEM.h"
#include "util/colour_text.h"
#include "util/property_value.h"
#include "util/record.h"
#include "util/shared_text.h"

namespace vistels {

// One qualifier on a clip: a label stamped at a moment. Values are set before the qualifier is put on a clip
// and do not change afterwards (an edit puts a changed copy in its place); the filter's mark may.
class qual_ITEM : record {
  public:
    std::string uuid() const { return read(_uuid); }
    void set_uuid(std::string uuid) { write(_uuid, std::move(uuid)); }
    shared_text name() const { return read(_name); }
    void set_name(shared_text name) { write(_name, std::move(name)); }
    shared_text category() const { return read(_cat); }
    void set_category(shared_text category) { write(_cat, std::move(category)); }
    double time() const { return read(_qual_time); }  // seconds on the collection's clock
    void set_time(double seconds) { write(_qual_time, seconds); }
    std::string real_local_time() const { return read(ql_REAL_LOCAL_TIME); }  // wall clock, "14:05:09"
    void set_real_local_time(std::string time) { write(ql_REAL_LOCAL_TIME, std::move(time)); }
    std::optional<colour> col() const { return read(_col); }
    void set_col(std::optional<colour> colour) { write(_col, colour); }
    std::vector<clip_attribute_ITEM> attributes() const { return read(ql_ATTRIBUTES); }
    void set_attributes(std::vector<clip_attribute_ITEM> all) { write(ql_ATTRIBUTES, std::move(all)); }

    // Stored values that have no field of their own, by their stored key: "alt_time", "count down",
    // "recepient", "action", "value", "actor", "alias", "focus_vistel", "zoom_rect", "x", "y".
    property_dictionary kept() const { return read(kept_); }
    void set_kept(property_dictionary kept) { write(kept_, std::move(kept)); }

    // The filter's mark: this qualifier made its clip pass.
    bool filtered_in() const { return read(filtered_IN); }
    void set_filtered_in(bool passes) const { write(filtered_IN, passes); }

    // Equal in everything that is stored.
    bool operator==(const qual_ITEM& other) const;

  private:
    std::string _uuid;
    shared_text _name;
    shared_text _cat;
    double _qual_time = 0;
    std::string ql_REAL_LOCAL_TIME;
    std::optional<colour> _col;
    std::vector<clip_attribute_ITEM> ql_ATTRIBUTES;
    property_dictionary kept_;
    mutable bool filtered_IN = false;
};

// Reading is lenient: a missing or wrongly typed value keeps the default, older spellings count.
qual_ITEM read_qual_item(const property_dictionary& stored);
// The keys in their stored order; values that are not set are left out. The time has 8 decimals.
property_dictionary write_qual_item(const qual_ITEM& qualifier);

// A clip's qualifiers in stamping order.
using qual_ROOT = std::vector<qual_ITEM>;

}  // namespace vistels
