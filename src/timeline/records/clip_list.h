// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

#include "timeline/records/sxy_CLIP.h"

namespace vistels {

// The clips of one row in the row's order (see clip_before), whose times are finite. A tree of chunks: every
// change, search and look at a position takes logarithmic time. Copying one takes constant time, since copies
// share their chunks; changing one copies only the chunks between it and the change that others share. Copies
// may be used on different threads at once.
//
// The times of each clip stand beside it, and the last end of all clips in a chunk beside that, so that a
// search does not look at the clips it passes: a clip that is in a list keeps its times and its UUID.
class clip_list {
  public:
    class iterator;

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    // Refers into the list until it is changed. So does what an iterator refers to.
    const clip_pointer& operator[](std::size_t index) const;
    iterator begin() const;
    iterator end() const;

    // The clips from `index` on that lie beside each other: at least one, not beyond the end. Until the list
    // is changed.
    std::span<const clip_pointer> run_from(std::size_t index) const;

    // Where `clip`, or a copy of it with the same times and UUID, stands; size() when it does not.
    std::size_t position(const sxy_CLIP& clip) const;
    // The same as a pointer into the list; null when it does not stand here.
    const clip_pointer* find(const sxy_CLIP& clip) const;
    // The first clip that starts at or after `seconds`, or size().
    std::size_t first_starting_at(double seconds) const;
    // The first clip from `index` on that ends at or after `seconds`, or size(). However long a clip is, it
    // costs no look at those that it passes over.
    std::size_t first_ending_at(double seconds, std::size_t index = 0) const;

    // Returns where it was put.
    std::size_t insert(clip_pointer clip);
    void remove(std::size_t index);
    // Puts `clip` in the place of the one at `index`, or where its times say. Returns where it is.
    std::size_t replace(std::size_t index, clip_pointer clip);
    // Puts all clips in order at once, for a list read from a file.
    void assign(std::vector<clip_pointer> clips);

  private:
    struct node;
    struct leaf;
    struct branch;
    struct key;
    struct chunk {  // of a leaf
        const clip_pointer* clips = nullptr;
        std::size_t first = 0;  // the index of clips[0]
        std::size_t count = 0;
    };

    // Shares a node; whoever holds the only pointer to one may change it.
    class node_pointer {
      public:
        node_pointer() = default;
        explicit node_pointer(node* owned) : node_(owned) {}
        node_pointer(const node_pointer& other);
        node_pointer(node_pointer&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
        node_pointer& operator=(node_pointer other) noexcept {
            std::swap(node_, other.node_);
            return *this;
        }
        ~node_pointer() {
            if (node_) release(node_);
        }
        node* get() const { return node_; }
        node* operator->() const { return node_; }
        explicit operator bool() const { return node_ != nullptr; }

      private:
        static void release(node* shared);
        node* node_ = nullptr;
    };

    chunk chunk_with(std::size_t index) const;
    static void make_own(node_pointer& shared);
    static node_pointer insert_below(node_pointer& root, const key& place, clip_pointer& clip,
                                     std::size_t& index);
    static node_pointer insert_in_leaf(leaf& own, const key& place, clip_pointer& clip, std::size_t& index);
    static void remove_below(node_pointer& root, std::size_t index);
    static void merge_child(branch& own, std::size_t child);
    static std::vector<node_pointer> leaves_of(std::vector<clip_pointer> clips,
                                               const std::vector<double>& starts);
    static std::size_t first_below(const node& root, double seconds, std::size_t index);
    static std::vector<node_pointer> branches_of(std::vector<node_pointer> children);

    node_pointer root_;  // null: empty
    std::size_t size_ = 0;
};

// Walks a list in order; stepping within a chunk costs no search.
class clip_list::iterator {
  public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = clip_pointer;
    using difference_type = std::ptrdiff_t;
    using pointer = const clip_pointer*;
    using reference = const clip_pointer&;

    iterator() = default;
    iterator(const clip_list& list, std::size_t index) : list_(&list), index_(index) {}

    reference operator*() const {
        if (index_ - here_.first >= here_.count) here_ = list_->chunk_with(index_);
        return here_.clips[index_ - here_.first];
    }
    pointer operator->() const { return &**this; }
    reference operator[](difference_type steps) const { return *(*this + steps); }

    iterator& operator+=(difference_type steps) {
        index_ += static_cast<std::size_t>(steps);
        return *this;
    }
    iterator& operator-=(difference_type steps) { return *this += -steps; }
    iterator& operator++() { return *this += 1; }
    iterator& operator--() { return *this -= 1; }
    iterator operator++(int) { return std::exchange(*this, *this + 1); }
    iterator operator--(int) { return std::exchange(*this, *this - 1); }
    friend iterator operator+(iterator at, difference_type steps) { return at += steps; }
    friend iterator operator+(difference_type steps, iterator at) { return at += steps; }
    friend iterator operator-(iterator at, difference_type steps) { return at -= steps; }
    friend difference_type operator-(const iterator& a, const iterator& b) {
        return static_cast<difference_type>(a.index_) - static_cast<difference_type>(b.index_);
    }
    friend bool operator==(const iterator& a, const iterator& b) { return a.index_ == b.index_; }
    friend auto operator<=>(const iterator& a, const iterator& b) { return a.index_ <=> b.index_; }

  private:
    const clip_list* list_ = nullptr;
    std::size_t index_ = 0;
    mutable chunk here_;  // where the last clip looked at stands
};

inline clip_list::iterator clip_list::begin() const {
    return {*this, 0};
}

inline clip_list::iterator clip_list::end() const {
    return {*this, size_};
}

}  // namespace vistels
