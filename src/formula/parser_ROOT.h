// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "formula/normalise.h"
#include "formula/token_ITEM.h"

namespace vistels {

// Places in a list that stand in a row: `first` up to `last` (not included).
class place_range {
  public:
    class iterator {
      public:
        using iterator_category = std::input_iterator_tag;
        using value_type = std::size_t;
        using difference_type = std::ptrdiff_t;
        using pointer = const std::size_t*;
        using reference = std::size_t;

        iterator() = default;
        explicit iterator(std::size_t place) : place_(place) {}
        std::size_t operator*() const { return place_; }
        iterator& operator++() {
            ++place_;
            return *this;
        }
        iterator operator++(int) { return iterator(place_++); }
        bool operator==(const iterator&) const = default;

      private:
        std::size_t place_ = 0;
    };

    place_range() = default;
    place_range(std::size_t first, std::size_t last) : first_(first), last_(last) {}

    iterator begin() const { return iterator(first_); }
    iterator end() const { return iterator(last_); }
    std::size_t size() const { return last_ - first_; }
    bool empty() const { return first_ == last_; }
    std::size_t operator[](std::size_t index) const { return first_ + index; }
    std::size_t front() const { return first_; }
    std::size_t back() const { return last_ - 1; }

  private:
    std::size_t first_ = 0;
    std::size_t last_ = 0;
};

// One bracket group of a formula, or one token outside groups (a leaf). A group that is never closed reaches
// to the end of the text; a right bracket without a left one is a leaf.
struct node_Item {
    int nodel_level_idx0 = -1;  // depth: -1 for the top node, 0 for its children ...
    // The children in text order, as places in the flat list of nodes, where they stand in a row.
    place_range sub_Nodes;
    std::size_t parent_Node = no_parent;  // a place in the flat list
    // The tokens of the node: places first up to last (not included) in the token list. A leaf has one, a
    // group those strictly inside its brackets, the top node all.
    std::size_t first_token = 0;
    std::size_t last_token = 0;
    bool is_leaf = false;
    int result_of_NODE_EVALUATIONS = 0;  // 0 not evaluated, 1 true, -1 false

    static constexpr std::size_t no_parent = static_cast<std::size_t>(-1);
};

// The codes of which words of a formula make use.
struct identifier_types_used {
    bool QUALIFIER_NAME = false;
    bool QUALIFIER_CATEGORY = false;
    bool ATTRIBUTE_NAME = false;
    bool ATTRIBUTE_CATEGORY = false;
    bool NOTE = false;
};

// One formula in parsed form. Never fails: what is wrong is marked, and the rest is read. Any text ends in
// time and memory linear in its length. For one thread at a time; a copy is independent.
class parser_ROOT {
  public:
    // As a filter: a plain search text is written out as a formula, and the bracket tree is built.
    static parser_ROOT for_filter(std::string_view text);
    // As typed, to be shown: no plain search, no tree; a line separator stays the character it is.
    static parser_ROOT for_display(std::string_view text);

    // The text after normalisation.
    const std::string& filter_search_string() const { return filter_search_string_; }
    // How many characters of the normalised text were put in front of the typed one (0 or 1); beyond that a
    // display text has the typed one's code points at the typed places.
    std::size_t characters_put_in_front() const { return put_in_front_; }
    const std::vector<token_ITEM>& ray_token_ITEMs() const { return ray_token_ITEMs_; }
    std::vector<token_ITEM>& ray_token_ITEMs() { return ray_token_ITEMs_; }
    bool parser_Error() const { return !problems_.empty(); }
    // All problems as one failure, and its English words, separated by ", ".
    failure parser_Errors() const;
    std::string parser_Errors_String() const { return parser_Errors().message(); }
    const std::vector<formula_problem>& problems() const { return problems_; }
    const identifier_types_used& identifier_Type_used() const { return used_; }

    // All nodes, the top node first: level by level, each level in text order, so that the nodes of one level
    // and the children of one node each stand in a row. Empty for a display text.
    const std::vector<node_Item>& ray_FLAT_copy_of_all_Node_items() const { return nodes_; }
    std::vector<node_Item>& ray_FLAT_copy_of_all_Node_items() { return nodes_; }
    int lowest_node_level() const { return lowest_node_level_; }  // the greatest level; -1 without nodes

  private:
    explicit parser_ROOT(normalised_formula normalised);

    void note_codes_in_use();
    void build_tree();

    std::string filter_search_string_;
    std::size_t put_in_front_ = 0;
    std::vector<token_ITEM> ray_token_ITEMs_;
    std::vector<formula_problem> problems_;
    identifier_types_used used_;
    std::vector<node_Item> nodes_;
    int lowest_node_level_ = -1;
};

}  // namespace vistels
