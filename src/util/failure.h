// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace vistels {

class failure;

// One kind of failure: a code that no other kind has and that stays, and the English words for the user, with
// %1 to %9 where the arguments go. The words are the key of their translation.
struct failure_kind {
    const char* code;
    const char* words;
};

// What an argument is. A text, such as a name or a number, is shown as it is; a term is one of the program's
// own, with a translation of its own; a path may be shown by its last name; a cause is another failure.
enum class failure_argument_form { text, term, path, cause };
inline constexpr auto a_text = failure_argument_form::text;
inline constexpr auto a_term = failure_argument_form::term;
inline constexpr auto a_path = failure_argument_form::path;
inline constexpr auto a_cause = failure_argument_form::cause;

// How paths are shown: as they are, or by what stands behind their last slash.
enum class shown_paths { whole, names };

// Why something could not be done: a kind and its arguments. A cheap handle to contents that never change; an
// empty one, as it is made without arguments, is no failure. Made by calling a kind (failure_of, below). Any
// thread.
class failure {
  public:
    struct argument;

    failure() = default;

    explicit operator bool() const { return contents_ != nullptr; }
    // "" without a failure.
    std::string_view code() const { return kind() ? kind()->code : std::string_view(); }
    bool is(const failure_kind& kind) const { return code() == kind.code; }
    const std::vector<argument>& arguments() const;
    // The first cause among them; no failure when there is none.
    failure cause() const;
    // The English words with the arguments in their places; "" without a failure.
    const std::string& message() const;
    // The same in other words: those that `translate` gives for a kind's words, or for a term.
    std::string worded(const std::function<std::string(const char* words)>& translate,
                       shown_paths paths = shown_paths::whole) const;

    // Equal in kind and arguments.
    bool operator==(const failure& other) const;

  private:
    template <failure_argument_form... forms>
    friend struct failure_of;
    struct contents;

    failure(const failure_kind& kind, std::vector<argument> arguments);
    const failure_kind* kind() const;

    std::shared_ptr<const contents> contents_;
};

struct failure::argument {
    failure_argument_form form = a_text;
    std::string text;  // of all but a cause
    failure cause;
    bool operator==(const argument&) const = default;
};

// A kind that knows its arguments, each kind a constant in the header of the folder that fails so:
//
//     inline constexpr failure_of<a_path, a_cause> file_not_saved{"file not saved", "\"%1\" not saved: %2."};
//     ...
//     return file_not_saved(path, volume_is_full());
//
// The number of arguments, what may be one, and that the words have a place for each are checked when it is
// compiled.
template <failure_argument_form... forms>
struct failure_of : failure_kind {
    consteval failure_of(const char* stable_code, const char* english_words)
        : failure_kind{stable_code, english_words} {
        bool is_used[10] = {};
        for (const char* at = words; *at != 0; ++at) {
            if (*at == '%' && at[1] >= '1' && at[1] <= '9') is_used[at[1] - '0'] = true;
        }
        for (std::size_t number = 1; number < std::size(is_used); ++number) {
            if (is_used[number] != (number <= sizeof...(forms))) throw "words and arguments do not match";
        }
    }

    template <class... values>
    failure operator()(values&&... given) const {
        static_assert(sizeof...(values) == sizeof...(forms), "another number of arguments");
        return failure(*this, {argument_of<forms>(std::forward<values>(given))...});
    }

  private:
    template <failure_argument_form form, class value>
    static failure::argument argument_of(value&& given) {
        using plain = std::remove_cvref_t<value>;
        if constexpr (form == a_cause) {
            return {form, {}, failure(std::forward<value>(given))};
        } else if constexpr (std::is_arithmetic_v<plain> && !std::is_same_v<plain, char>) {
            return {form, std::to_string(given), {}};
        } else {
            return {form, std::string(std::forward<value>(given)), {}};
        }
    }
};

}  // namespace vistels
