// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/collection_edit.h"

#include <algorithm>
#include <map>
#include <utility>

#include "util/file_system.h"
#include "video/collection_failures.h"

namespace vistels {

namespace {

constexpr const char* parts_key = "drone_array";
constexpr const char* file_key = "file";  // of a part in an edit; part records themselves have none

// Of the collection record: not changed by edits.
constexpr const char* passing_keys[] = {
    "array video group items",
    "date updated",
    "seconds updated",
    "movie time",
    "volume",
    "video type state",
    "UUID video group",
    "UUID of linked timeline archive",
    "largest vistel number",
};

property_dictionary values_of(const video_collection_ROOT& collection) {
    auto values = write_collection(collection, 0);
    for (const char* key : passing_keys) values.remove(key);
    return values;
}

property_dictionary own_values_of(const single_Vistel_CTR& vistel) {
    auto values = write_vistel_record(vistel);
    values.remove(parts_key);
    return values;
}

property_array parts_of(const single_Vistel_CTR& vistel) {
    const auto parts = vistel.parts();
    property_array stored = write_movie_parts(parts);
    for (std::size_t index = 0; index < stored.size(); ++index) {
        if (parts.parts[index].path.empty()) continue;
        property_dictionary one = *stored[index].dictionary();
        one.set(file_key, path_name(parts.parts[index].path));
        stored[index] = std::move(one);
    }
    return stored;
}

movie_Part_DRONE_Offsets_Root parts_from(const property_array& stored, const std::string& data_folder) {
    auto parts = read_movie_parts(stored);
    for (auto& part : parts.parts) {
        const std::string file = part.kept.text_or_empty(file_key);
        part.kept.remove(file_key);
        if (!file.empty()) part.path = path_join(data_folder, file);
    }
    return parts;
}

value_change change_between(const property_dictionary& before, const property_dictionary& after) {
    value_change change;
    for (const auto& entry : after) {
        const auto* was = before.find(entry.key);
        if (!was || !(*was == entry.value)) change.set.add(entry.key, entry.value);
    }
    for (const auto& entry : before) {
        if (!after.contains(entry.key)) change.unset.emplace_back(entry.key);
    }
    return change;
}

bool is_empty(const value_change& change) {
    return change.set.empty() && change.unset.empty();
}

property_dictionary changed(property_dictionary values, const value_change& change) {
    for (const auto& entry : change.set) values.set(entry.key, entry.value);
    for (const auto& key : change.unset) {
        if (key.text()) values.remove(*key.text());
    }
    return values;
}

using vistel_pointer = std::shared_ptr<single_Vistel_CTR>;

// A vistel and how an edit names it: by its UUID, and by which one it is where a damaged record holds several
// with one UUID, or with none.
struct named_vistel {
    std::string name;
    vistel_pointer vistel;
};

// Gives vistels their names, one after another.
class vistel_namer {
  public:
    std::string name_next(const std::string& uuid) {
        const std::size_t number = ++counts_[uuid];
        return number == 1 ? uuid : uuid + "\n" + std::to_string(number);
    }

  private:
    std::map<std::string, std::size_t> counts_;
};

std::vector<named_vistel> named(const std::vector<vistel_pointer>& vistels, vistel_namer& namer) {
    std::vector<named_vistel> all;
    for (const auto& vistel : vistels) all.push_back({namer.name_next(vistel->uuid()), vistel});
    return all;
}

std::vector<std::string> names_of(const std::vector<named_vistel>& all) {
    std::vector<std::string> names;
    for (const auto& one : all) names.push_back(one.name);
    return names;
}

// Takes the first out of `all` of which `is_wanted` is true; one without a vistel when there is none.
template <class Wanted>
named_vistel take_first(std::vector<named_vistel>& all, Wanted is_wanted) {
    const auto found = std::find_if(all.begin(), all.end(), is_wanted);
    if (found == all.end()) return {};
    named_vistel taken = std::move(*found);
    all.erase(found);
    return taken;
}

named_vistel take_named(std::vector<named_vistel>& all, const std::string& name) {
    return take_first(all, [&](const auto& one) { return one.name == name; });
}

// The one that `vistel` was: of several with its UUID the one that was read from the same record.
named_vistel take_former(std::vector<named_vistel>& all, const single_Vistel_CTR& vistel) {
    const auto is_same = [&](const auto& one) { return one.vistel->uuid() == vistel.uuid(); };
    if (std::count_if(all.begin(), all.end(), is_same) < 2) return take_first(all, is_same);
    const auto record = vistel.stored_item();
    auto taken =
        take_first(all, [&](const auto& one) { return is_same(one) && one.vistel->stored_item() == record; });
    return taken.vistel ? taken : take_first(all, is_same);
}

vistel_change change_of_vistel(const std::string& name, const single_Vistel_CTR* before,
                               const single_Vistel_CTR& after) {
    vistel_change change;
    change.vistel = name;
    const property_dictionary nothing;
    change.item = change_between(before ? write_vistel_item(*before) : nothing, write_vistel_item(after));
    change.own = change_between(before ? own_values_of(*before) : nothing, own_values_of(after));
    auto parts = parts_of(after);
    if (!before || parts != parts_of(*before)) change.parts = std::move(parts);
    if (!before) change.data_folder = after.data_folder();
    return change;
}

// The vistel with the change made. What is not stored comes from `was`, or for a new one from the change.
single_Vistel_CTR changed_vistel(const single_Vistel_CTR* was, const vistel_change& change) {
    const property_dictionary nothing;
    single_Vistel_CTR made = read_vistel_item(changed(was ? write_vistel_item(*was) : nothing, change.item));
    const auto own = changed(was ? own_values_of(*was) : nothing, change.own);
    read_vistel_record(made, own);
    made.set_data_folder(was ? was->data_folder() : change.data_folder);
    made.set_parts(change.parts ? parts_from(*change.parts, made.data_folder())
                   : was        ? was->parts()
                                : movie_Part_DRONE_Offsets_Root());
    if (was) {
        made.set_problem(was->problem());
        // What is on disk: it tells what to save.
        made.set_stored_vistel(was->stored_vistel());
        made.set_parts_on_record(was->parts_on_record());
    }
    return made;
}

// Applies an edit to copies first: nothing is changed until all of it can be.
class edit_maker {
  public:
    edit_maker(const video_collection_ROOT& collection, edit_manner manner)
        : before_(named(collection.vistels(), namer_)), manner_(manner) {}

    result<void> change(const vistel_change& change) {
        auto all = before_;
        const auto was = take_named(all, change.vistel).vistel;
        const bool comes = !was && change.item.set.contains("UUID single video - g");
        if (!was && !comes) {
            if (manner_ == edit_manner::lenient) return {};
            return edited_vistel_is_gone(change.vistel);
        }
        auto made = std::make_shared<single_Vistel_CTR>(changed_vistel(was.get(), change));
        if (was) {
            changed_.emplace_back(was, std::move(made));
        } else {
            come_.push_back({change.vistel, std::move(made)});
        }
        return {};
    }

    result<void> arrange(const std::optional<std::vector<std::string>>& order) {
        after_.clear();
        for (const auto& one : before_) after_.push_back(one.vistel);
        if (!order) {
            if (come_.empty() || manner_ == edit_manner::lenient) return {};
            return vistel_has_no_place();
        }
        after_.clear();
        auto pool = before_;
        pool.insert(pool.end(), come_.begin(), come_.end());
        for (const auto& name : *order) {
            auto vistel = take_named(pool, name).vistel;
            if (!vistel && manner_ == edit_manner::strict) return edited_vistel_is_gone(name);
            // One of several with one UUID may have gone already.
            const std::string uuid = name.substr(0, name.find('\n'));
            if (!vistel) vistel = take_named(pool, uuid).vistel;
            if (vistel) after_.push_back(std::move(vistel));
        }
        return {};
    }

    void put_in_place(video_collection_ROOT& collection) {
        for (auto& [vistel, made] : changed_) *vistel = *made;
        collection.set_vistels(std::move(after_));
    }

  private:
    vistel_namer namer_;
    const std::vector<named_vistel> before_;
    const edit_manner manner_;
    std::vector<std::pair<vistel_pointer, vistel_pointer>> changed_;
    std::vector<named_vistel> come_;
    std::vector<vistel_pointer> after_;
};

// What is no vistel and not passing, as values of the record.
void change_values(video_collection_ROOT& collection, const value_change& change) {
    if (is_empty(change)) return;
    auto record = write_collection(collection, 0);
    record.remove("array video group items");
    auto made = read_collection(changed(std::move(record), change));
    made.set_vistels(collection.vistels());
    // As it was read, so that it is written only when it changed.
    auto stored = made.stored();
    const auto as_read = collection.stored();
    for (const char* key : passing_keys) {
        const auto* was = as_read.find(key);
        was ? stored.set(key, *was) : stored.remove(key);
    }
    // Items that are no vistels.
    if (const auto* items = as_read.find("array video group items"))
        stored.set("array video group items", *items);
    made.set_stored(std::move(stored));
    collection = made;
}

property_dictionary write_change(const value_change& change) {
    property_dictionary stored;
    if (!change.set.empty()) stored.add("set", change.set);
    if (!change.unset.empty()) stored.add("unset", change.unset);
    return stored;
}

value_change read_change(const property_dictionary& stored, const char* key) {
    value_change change;
    const auto* found = stored.dictionary(key);
    if (!found) return change;
    if (const auto* set = found->dictionary("set")) change.set = *set;
    if (const auto* unset = found->array("unset")) change.unset = *unset;
    return change;
}

class collection_change_value final : public document_change {
  public:
    explicit collection_change_value(collection_edit edit) : edit_(std::move(edit)) {}
    const collection_edit& edit() const { return edit_; }
    property_dictionary stored() const override { return write_collection_edit(edit_); }

  private:
    collection_edit edit_;
};

// Which values a change touches, without regard to whether it sets them or takes them away.
std::vector<std::string> keys_of(const value_change& change) {
    std::vector<std::string> keys;
    for (const auto& entry : change.set) keys.emplace_back(entry.key);
    for (const auto& key : change.unset) keys.push_back(key.text() ? *key.text() : std::string());
    std::sort(keys.begin(), keys.end());
    return keys;
}

}  // namespace

bool collection_edit::empty() const {
    return is_empty(values) && vistels.empty() && !order;
}

video_collection_ROOT detached_copy(const video_collection_ROOT& collection) {
    video_collection_ROOT copy = collection;
    auto vistels = copy.vistels();
    for (auto& vistel : vistels) vistel = std::make_shared<single_Vistel_CTR>(*vistel);
    copy.set_vistels(std::move(vistels));
    return copy;
}

collection_edit difference(const video_collection_ROOT& before, const video_collection_ROOT& after) {
    collection_edit edit;
    edit.values = change_between(values_of(before), values_of(after));
    vistel_namer namer;
    auto earlier = named(before.vistels(), namer);
    const auto order_before = names_of(earlier);
    std::vector<std::string> order;
    for (const auto& vistel : after.vistels()) {
        const auto was = take_former(earlier, *vistel);
        order.push_back(was.vistel ? was.name : namer.name_next(vistel->uuid()));
        auto change = change_of_vistel(order.back(), was.vistel.get(), *vistel);
        if (!was.vistel || !is_empty(change.item) || !is_empty(change.own) || change.parts) {
            edit.vistels.push_back(std::move(change));
        }
    }
    if (order != order_before) edit.order = std::move(order);
    return edit;
}

result<void> apply_collection_edit(video_collection_ROOT& collection, const collection_edit& edit,
                                   edit_manner manner) {
    edit_maker maker(collection, manner);
    for (const auto& change : edit.vistels) {
        if (auto made = maker.change(change); !made) return made;
    }
    if (auto arranged = maker.arrange(edit.order); !arranged) return arranged;
    maker.put_in_place(collection);
    change_values(collection, edit.values);
    return {};
}

property_dictionary write_collection_edit(const collection_edit& edit) {
    property_dictionary stored;
    if (!is_empty(edit.values)) stored.add("values", write_change(edit.values));
    property_array vistels;
    for (const auto& change : edit.vistels) {
        property_dictionary one;
        one.add("vistel", change.vistel);
        if (!is_empty(change.item)) one.add("item", write_change(change.item));
        if (!is_empty(change.own)) one.add("own", write_change(change.own));
        if (change.parts) one.add("parts", *change.parts);
        if (!change.data_folder.empty()) one.add("data folder", change.data_folder);
        vistels.emplace_back(std::move(one));
    }
    if (!vistels.empty()) stored.add("vistels", std::move(vistels));
    if (edit.order) stored.add("order", property_array(edit.order->begin(), edit.order->end()));
    return stored;
}

collection_edit read_collection_edit(const property_dictionary& stored) {
    collection_edit edit;
    edit.values = read_change(stored, "values");
    if (const auto* vistels = stored.array("vistels")) {
        for (const auto& value : *vistels) {
            const auto* one = value.dictionary();
            if (!one) continue;
            vistel_change change;
            change.vistel = one->text_or_empty("vistel");
            change.item = read_change(*one, "item");
            change.own = read_change(*one, "own");
            if (const auto* parts = one->array("parts")) change.parts = *parts;
            change.data_folder = one->text_or_empty("data folder");
            edit.vistels.push_back(std::move(change));
        }
    }
    if (const auto* order = stored.array("order")) {
        edit.order.emplace();
        for (const auto& uuid : *order) {
            if (uuid.text()) edit.order->push_back(*uuid.text());
        }
    }
    return edit;
}

document_part collection_part(const video_collection_ROOT& collection, collection_edit edit,
                              collection_edit back) {
    return {{document_kind::collection, collection.uuid()},
            std::make_shared<const collection_change_value>(std::move(edit)),
            std::make_shared<const collection_change_value>(std::move(back))};
}

collection_edit collection_edit_in(const document_change& change) {
    if (const auto* own = dynamic_cast<const collection_change_value*>(&change)) return own->edit();
    return read_collection_edit(change.stored());
}

std::vector<document_part> parts_of_collection(const std::vector<document_part>& parts,
                                               const video_collection_ROOT& collection) {
    std::vector<document_part> own;
    for (const auto& part : parts) {
        const std::string& named = part.document.uuid;
        const bool is_named = named.empty() || collection.uuid().empty() || named == collection.uuid();
        if (part.document.kind == document_kind::collection && is_named) own.push_back(part);
    }
    return own;
}

bool changes_movie_parts(const collection_edit& edit) {
    return std::any_of(edit.vistels.begin(), edit.vistels.end(),
                       [](const vistel_change& change) { return change.parts.has_value(); });
}

bool sets_the_same(const collection_edit& a, const collection_edit& b) {
    if (a.order || b.order || keys_of(a.values) != keys_of(b.values)) return false;
    return std::equal(a.vistels.begin(), a.vistels.end(), b.vistels.begin(), b.vistels.end(),
                      [](const vistel_change& x, const vistel_change& y) {
                          return x.vistel == y.vistel && keys_of(x.item) == keys_of(y.item) &&
                                 keys_of(x.own) == keys_of(y.own) && !x.parts == !y.parts;
                      });
}

}  // namespace vistels
