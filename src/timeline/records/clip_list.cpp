// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/clip_list.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cassert>
#include <numeric>

namespace vistels {

namespace {

constexpr std::size_t leaf_capacity = 64;
constexpr std::size_t branch_capacity = 32;
// Lists read from files leave a little room, so that the first edits do not split every chunk they meet.
constexpr std::size_t leaf_fill = 60;
constexpr std::size_t branch_fill = 28;

// Makes room at `index` of an array of which `count` items are in use.
template <class Array>
void shift_up(Array& items, std::size_t index, std::size_t count) {
    const auto first = items.begin();
    std::move_backward(first + static_cast<std::ptrdiff_t>(index), first + static_cast<std::ptrdiff_t>(count),
                       first + static_cast<std::ptrdiff_t>(count + 1));
}

template <class Array>
void shift_down(Array& items, std::size_t index, std::size_t count) {
    const auto first = items.begin();
    std::move(first + static_cast<std::ptrdiff_t>(index + 1), first + static_cast<std::ptrdiff_t>(count),
              first + static_cast<std::ptrdiff_t>(index));
    items[count - 1] = {};
}

// Moves the items from `from_index` up to `count` to another array, from `to_index` on.
template <class Array>
void move_items(Array& from, std::size_t from_index, std::size_t count, Array& to, std::size_t to_index) {
    for (std::size_t at = from_index; at < count; ++at) to[to_index++] = std::exchange(from[at], {});
}

}  // namespace

struct clip_list::node {
    explicit node(std::uint16_t height) : level(height) {}
    std::atomic<std::uint32_t> uses = 1;
    const std::uint16_t level;  // 0: a leaf
    std::uint16_t count = 0;    // clips of a leaf, children of a branch
};

// Where a clip stands or would stand. The clip is looked at only where starts are equal.
struct clip_list::key {
    double start = 0;
    const sxy_CLIP* clip = nullptr;

    bool operator<(const key& other) const {
        if (start != other.start) return start < other.start;
        return clip != other.clip && clip_before(*clip, *other.clip);
    }
};

struct clip_list::leaf : node {
    leaf() : node(0) {}
    leaf(const leaf& other) : node(0), starts(other.starts), ends(other.ends), clips(other.clips) {
        count = other.count;
    }
    leaf& operator=(const leaf&) = delete;

    key key_at(std::size_t index) const { return {starts[index], clips[index].get()}; }

    // The first that is not before `place`.
    std::size_t lower_bound(const key& place) const {
        const auto* first = starts.data();
        auto at = static_cast<std::size_t>(std::lower_bound(first, first + count, place.start) - first);
        while (at < count && key_at(at) < place) ++at;
        return at;
    }

    double last_end() const { return *std::max_element(ends.begin(), ends.begin() + count); }

    std::array<double, leaf_capacity> starts{};
    std::array<double, leaf_capacity> ends{};
    std::array<clip_pointer, leaf_capacity> clips;
};

struct clip_list::branch : node {
    explicit branch(std::uint16_t height) : node(height) {}
    branch(const branch& other)
        : node(other.level),
          sizes(other.sizes),
          firsts(other.firsts),
          last_ends(other.last_ends),
          children(other.children) {
        count = other.count;
    }
    branch& operator=(const branch&) = delete;

    // The last child that starts before `place`, or the first: where `place` stands or would stand. When it
    // is behind the last clip of that child it is the first of the next.
    std::size_t child_for(const key& place) const {
        const auto* first = firsts.data();
        const auto* found = std::lower_bound(first, first + count, place);
        return found == first ? 0 : static_cast<std::size_t>(found - first) - 1;
    }
    // The child that holds the clip at `index`, which becomes the index within it.
    std::size_t child_with(std::size_t& index) const {
        std::size_t child = 0;
        while (child + 1U < count && index >= sizes[child]) index -= sizes[child++];
        return child;
    }
    std::size_t clips_before(std::size_t child) const {
        return std::accumulate(sizes.begin(), sizes.begin() + static_cast<std::ptrdiff_t>(child),
                               std::size_t{0});
    }
    // Takes note of what has become of a child.
    void refresh(std::size_t child) {
        const node* below = children[child].get();
        if (below->level == 0) {
            sizes[child] = below->count;
            firsts[child] = static_cast<const leaf*>(below)->key_at(0);
            last_ends[child] = static_cast<const leaf*>(below)->last_end();
        } else {
            const auto* lower = static_cast<const branch*>(below);
            sizes[child] = static_cast<std::uint32_t>(lower->clips_before(lower->count));
            firsts[child] = lower->firsts[0];
            last_ends[child] =
                *std::max_element(lower->last_ends.begin(), lower->last_ends.begin() + lower->count);
        }
    }
    void add_child(std::size_t at, node_pointer child) {
        shift_up(sizes, at, count);
        shift_up(firsts, at, count);
        shift_up(last_ends, at, count);
        shift_up(children, at, count);
        children[at] = std::move(child);
        ++count;
        refresh(at);
    }
    void remove_child(std::size_t at) {
        shift_down(sizes, at, count);
        shift_down(firsts, at, count);
        shift_down(last_ends, at, count);
        shift_down(children, at, count);
        --count;
    }

    std::array<std::uint32_t, branch_capacity> sizes{};  // clips below each child
    std::array<key, branch_capacity> firsts;             // the first clip below each child
    std::array<double, branch_capacity> last_ends{};     // of all clips below each child
    std::array<node_pointer, branch_capacity> children;
};

clip_list::node_pointer::node_pointer(const node_pointer& other) : node_(other.node_) {
    if (node_) node_->uses.fetch_add(1, std::memory_order_relaxed);
}

void clip_list::node_pointer::release(node* shared) {
    if (shared->uses.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    if (shared->level == 0) {
        delete static_cast<leaf*>(shared);
    } else {
        delete static_cast<branch*>(shared);
    }
}

// Others that held the node may have let go of it on their threads: what they read there must have been read
// before it is changed here.
void clip_list::make_own(node_pointer& shared) {
    if (shared->uses.load(std::memory_order_acquire) == 1) return;
    if (shared->level == 0) {
        shared = node_pointer(new leaf(*static_cast<const leaf*>(shared.get())));
    } else {
        shared = node_pointer(new branch(*static_cast<const branch*>(shared.get())));
    }
}

clip_list::chunk clip_list::chunk_with(std::size_t index) const {
    assert(index < size_);
    const node* at = root_.get();
    std::size_t within = index;
    while (at->level != 0) {
        const auto* above = static_cast<const branch*>(at);
        at = above->children[above->child_with(within)].get();
    }
    return {static_cast<const leaf*>(at)->clips.data(), index - within, at->count};
}

const clip_pointer& clip_list::operator[](std::size_t index) const {
    const chunk found = chunk_with(index);
    return found.clips[index - found.first];
}

std::span<const clip_pointer> clip_list::run_from(std::size_t index) const {
    const chunk found = chunk_with(index);
    return {found.clips + (index - found.first), found.count - (index - found.first)};
}

const clip_pointer* clip_list::find(const sxy_CLIP& clip) const {
    if (!root_) return nullptr;
    const key place{clip.secs_start(), &clip};
    const node* at = root_.get();
    while (at->level != 0) {
        // A clip that is the first of a child is before nothing of it: there it must not be looked for in the
        // child before.
        const auto* above = static_cast<const branch*>(at);
        const auto* first = above->firsts.data();
        const auto* found = std::upper_bound(first, first + above->count, place);
        at = above->children[found == first ? 0 : static_cast<std::size_t>(found - first) - 1].get();
    }
    const auto* here = static_cast<const leaf*>(at);
    const std::size_t index = here->lower_bound(place);
    if (index == here->count) return nullptr;
    const auto& found = here->clips[index];
    return found.get() == &clip || found->short_id() == clip.short_id() ? &found : nullptr;
}

std::size_t clip_list::position(const sxy_CLIP& clip) const {
    if (!root_) return 0;
    const key place{clip.secs_start(), &clip};
    const node* at = root_.get();
    std::size_t before = 0;
    while (at->level != 0) {
        const auto* above = static_cast<const branch*>(at);
        const std::size_t child = above->child_for(place);
        before += above->clips_before(child);
        at = above->children[child].get();
    }
    const std::size_t index = before + static_cast<const leaf*>(at)->lower_bound(place);
    if (index == size_) return size_;
    const auto& found = (*this)[index];
    return found.get() == &clip || found->short_id() == clip.short_id() ? index : size_;
}

std::size_t clip_list::first_starting_at(double seconds) const {
    if (!root_) return 0;
    const node* at = root_.get();
    std::size_t before = 0;
    while (at->level != 0) {
        const auto* above = static_cast<const branch*>(at);
        const auto* first = above->firsts.data();
        const auto* found =
            std::lower_bound(first, first + above->count, seconds,
                             [](const key& child, double wanted) { return child.start < wanted; });
        const std::size_t child = found == first ? 0 : static_cast<std::size_t>(found - first) - 1;
        before += above->clips_before(child);
        at = above->children[child].get();
    }
    const auto* starts = static_cast<const leaf*>(at)->starts.data();
    return before + static_cast<std::size_t>(std::lower_bound(starts, starts + at->count, seconds) - starts);
}

// As a place among the clips below `root`, or their number.
std::size_t clip_list::first_below(const node& root, double seconds, std::size_t index) {
    if (root.level == 0) {
        const auto& here = static_cast<const leaf&>(root);
        while (index < here.count && here.ends[index] < seconds) ++index;
        return std::min<std::size_t>(index, here.count);
    }
    const auto& above = static_cast<const branch&>(root);
    std::size_t before = 0;
    for (std::size_t child = 0; child < above.count; ++child) {
        const std::size_t size = above.sizes[child];
        if (index < before + size && above.last_ends[child] >= seconds) {
            const std::size_t from = index > before ? index - before : 0;
            const std::size_t found = first_below(*above.children[child].get(), seconds, from);
            if (found < size) return before + found;
        }
        before += size;
    }
    return before;
}

std::size_t clip_list::first_ending_at(double seconds, std::size_t index) const {
    return root_ ? first_below(*root_.get(), seconds, index) : 0;
}

// Returns what a split puts behind the leaf. A full leaf to which a clip is appended is left full, since
// clips mostly come in order.
clip_list::node_pointer clip_list::insert_in_leaf(leaf& own, const key& place, clip_pointer& clip,
                                                  std::size_t& index) {
    leaf* into = &own;
    std::size_t at = own.lower_bound(place);
    index += at;
    node_pointer behind;
    if (own.count == leaf_capacity) {
        auto* right = new leaf;
        behind = node_pointer(right);
        const std::size_t kept = at == leaf_capacity ? leaf_capacity : leaf_capacity / 2;
        move_items(own.starts, kept, own.count, right->starts, 0);
        move_items(own.ends, kept, own.count, right->ends, 0);
        move_items(own.clips, kept, own.count, right->clips, 0);
        right->count = static_cast<std::uint16_t>(own.count - kept);
        own.count = static_cast<std::uint16_t>(kept);
        if (at >= kept) {
            into = right;
            at -= kept;
        }
    }
    shift_up(into->starts, at, into->count);
    shift_up(into->ends, at, into->count);
    shift_up(into->clips, at, into->count);
    into->starts[at] = place.start;
    into->ends[at] = clip->secs_end();
    into->clips[at] = std::move(clip);
    ++into->count;
    return behind;
}

clip_list::node_pointer clip_list::insert_below(node_pointer& root, const key& place, clip_pointer& clip,
                                                std::size_t& index) {
    make_own(root);
    if (root->level == 0) return insert_in_leaf(*static_cast<leaf*>(root.get()), place, clip, index);
    auto& own = *static_cast<branch*>(root.get());
    std::size_t child = own.child_for(place);
    index += own.clips_before(child);
    node_pointer added = insert_below(own.children[child], place, clip, index);
    own.refresh(child);
    if (!added) return {};
    node_pointer behind;
    branch* into = &own;
    if (own.count == branch_capacity) {
        auto* right = new branch(own.level);
        behind = node_pointer(right);
        const std::size_t kept = child + 1 == branch_capacity ? branch_capacity - 1 : branch_capacity / 2;
        move_items(own.sizes, kept, own.count, right->sizes, 0);
        move_items(own.firsts, kept, own.count, right->firsts, 0);
        move_items(own.last_ends, kept, own.count, right->last_ends, 0);
        move_items(own.children, kept, own.count, right->children, 0);
        right->count = static_cast<std::uint16_t>(own.count - kept);
        own.count = static_cast<std::uint16_t>(kept);
        if (child >= kept) {
            into = right;
            child -= kept;
        }
    }
    into->add_child(child + 1, std::move(added));
    return behind;
}

std::size_t clip_list::insert(clip_pointer clip) {
    const key place{clip->secs_start(), clip.get()};
    if (!root_) root_ = node_pointer(new leaf);
    std::size_t index = 0;
    if (node_pointer behind = insert_below(root_, place, clip, index)) {
        auto* above = new branch(static_cast<std::uint16_t>(root_->level + 1));
        node_pointer root(above);
        above->add_child(0, std::move(root_));
        above->add_child(1, std::move(behind));
        root_ = std::move(root);
    }
    ++size_;
    return index;
}

// A child that has become small is joined to its neighbour, unless both together would soon be split again.
void clip_list::merge_child(branch& own, std::size_t child) {
    const bool of_leaves = own.level == 1;
    const std::size_t capacity = of_leaves ? leaf_capacity : branch_capacity;
    if (own.children[child]->count >= capacity / 4 || own.count == 1) return;
    const std::size_t left = child == 0 ? 0 : child - 1;
    const std::size_t together = std::size_t{own.children[left]->count} + own.children[left + 1]->count;
    if (together > capacity * 3 / 4) return;
    make_own(own.children[left]);
    make_own(own.children[left + 1]);
    const auto join = [together](auto& a, auto& b, auto... parts) {
        (move_items(b.*parts, 0, b.count, a.*parts, a.count), ...);
        a.count = static_cast<std::uint16_t>(together);
    };
    node* into = own.children[left].get();
    node* from = own.children[left + 1].get();
    if (of_leaves) {
        join(static_cast<leaf&>(*into), static_cast<leaf&>(*from), &leaf::starts, &leaf::ends, &leaf::clips);
    } else {
        join(static_cast<branch&>(*into), static_cast<branch&>(*from), &branch::sizes, &branch::firsts,
             &branch::last_ends, &branch::children);
    }
    own.remove_child(left + 1);
    own.refresh(left);
}

void clip_list::remove_below(node_pointer& root, std::size_t index) {
    make_own(root);
    if (root->level == 0) {
        auto& own = *static_cast<leaf*>(root.get());
        shift_down(own.starts, index, own.count);
        shift_down(own.ends, index, own.count);
        shift_down(own.clips, index, own.count);
        --own.count;
        return;
    }
    auto& own = *static_cast<branch*>(root.get());
    const std::size_t child = own.child_with(index);
    remove_below(own.children[child], index);
    if (own.children[child]->count == 0) {
        own.remove_child(child);
        return;
    }
    own.refresh(child);
    merge_child(own, child);
}

void clip_list::remove(std::size_t index) {
    assert(index < size_);
    remove_below(root_, index);
    --size_;
    while (root_ && root_->level != 0 && root_->count == 1) {
        root_ = node_pointer(static_cast<branch*>(root_.get())->children[0]);
    }
    if (size_ == 0) root_ = {};
}

std::size_t clip_list::replace(std::size_t index, clip_pointer clip) {
    const sxy_CLIP& earlier = *(*this)[index];
    const double start = clip->secs_start();
    if (start != earlier.secs_start() || clip->secs_end() != earlier.secs_end() ||
        clip->id() != earlier.id()) {
        remove(index);
        return insert(std::move(clip));
    }
    // The same place: the keys above that name the earlier clip must name this one.
    node_pointer* at = &root_;
    std::size_t within = index;
    while (true) {
        make_own(*at);
        if ((*at)->level == 0) break;
        auto& own = *static_cast<branch*>(at->get());
        const std::size_t child = own.child_with(within);
        if (own.firsts[child].clip == &earlier) own.firsts[child].clip = clip.get();
        at = &own.children[child];
    }
    static_cast<leaf*>(at->get())->clips[within] = std::move(clip);
    return index;
}

std::vector<clip_list::node_pointer> clip_list::leaves_of(std::vector<clip_pointer> clips,
                                                          const std::vector<double>& starts) {
    std::vector<node_pointer> leaves;
    const std::size_t parts = (clips.size() + leaf_fill - 1) / leaf_fill;
    leaves.reserve(parts);
    std::size_t from = 0;
    for (std::size_t part = 1; part <= parts; ++part) {
        auto* one = new leaf;
        leaves.emplace_back(one);
        for (const std::size_t to = clips.size() * part / parts; from < to; ++from) {
            one->starts[one->count] = starts[from];
            one->ends[one->count] = clips[from]->secs_end();
            one->clips[one->count++] = std::move(clips[from]);
        }
    }
    return leaves;
}

std::vector<clip_list::node_pointer> clip_list::branches_of(std::vector<node_pointer> children) {
    std::vector<node_pointer> branches;
    const std::size_t parts = (children.size() + branch_fill - 1) / branch_fill;
    const auto level = static_cast<std::uint16_t>(children.front()->level + 1);
    std::size_t from = 0;
    for (std::size_t part = 1; part <= parts; ++part) {
        auto* one = new branch(level);
        branches.emplace_back(one);
        for (const std::size_t to = children.size() * part / parts; from < to; ++from) {
            one->add_child(one->count, std::move(children[from]));
        }
    }
    return branches;
}

void clip_list::assign(std::vector<clip_pointer> clips) {
    std::vector<double> starts;
    starts.reserve(clips.size());
    bool in_order = true;
    for (const auto& clip : clips) {
        const double start = clip->secs_start();
        if (!starts.empty() && !(starts.back() < start) && clip_before(*clip, *clips[starts.size() - 1])) {
            in_order = false;
        }
        starts.push_back(start);
    }
    if (!in_order) {
        std::vector<std::size_t> order(clips.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            return key{starts[a], clips[a].get()} < key{starts[b], clips[b].get()};
        });
        std::vector<clip_pointer> sorted;
        sorted.reserve(clips.size());
        for (const std::size_t index : order) sorted.push_back(std::move(clips[index]));
        clips = std::move(sorted);
        std::sort(starts.begin(), starts.end());
    }
    size_ = clips.size();
    root_ = {};
    if (clips.empty()) return;
    auto nodes = leaves_of(std::move(clips), starts);
    while (nodes.size() > 1) nodes = branches_of(std::move(nodes));
    root_ = std::move(nodes.front());
}

}  // namespace vistels
