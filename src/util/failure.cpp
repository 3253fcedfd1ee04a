// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/failure.h"

#include "util/file_system.h"

namespace vistels {

namespace {

using argument_words = std::function<std::string(const failure::argument& argument)>;

std::string filled(std::string_view words, const std::vector<failure::argument>& arguments,
                   const argument_words& words_of_argument) {
    std::string text;
    for (std::size_t at = 0; at < words.size(); ++at) {
        const bool is_place = words[at] == '%' && at + 1 < words.size();
        const std::size_t number =
            is_place ? static_cast<std::size_t>(words[at + 1] - '1') : arguments.size();
        if (number < arguments.size()) {
            text += words_of_argument(arguments[number]);
            ++at;
        } else {
            text += words[at];
        }
    }
    return text;
}

}  // namespace

struct failure::contents {
    const failure_kind* kind;
    std::vector<argument> arguments;
    std::string message;
};

failure::failure(const failure_kind& kind, std::vector<argument> arguments) {
    std::string message = filled(kind.words, arguments, [](const argument& one) {
        return one.form == a_cause ? one.cause.message() : one.text;
    });
    contents_ = std::make_shared<const contents>(contents{&kind, std::move(arguments), std::move(message)});
}

const failure_kind* failure::kind() const {
    return contents_ ? contents_->kind : nullptr;
}

const std::vector<failure::argument>& failure::arguments() const {
    static const std::vector<argument> none;
    return contents_ ? contents_->arguments : none;
}

failure failure::cause() const {
    for (const auto& one : arguments()) {
        if (one.form == a_cause) return one.cause;
    }
    return {};
}

const std::string& failure::message() const {
    static const std::string none;
    return contents_ ? contents_->message : none;
}

std::string failure::worded(const std::function<std::string(const char* words)>& translate,
                            shown_paths paths) const {
    if (!contents_) return {};
    return filled(translate(contents_->kind->words), contents_->arguments, [&](const argument& one) {
        switch (one.form) {
            case a_cause:
                return one.cause.worded(translate, paths);
            case a_term:
                return translate(one.text.c_str());
            case a_path:
                return paths == shown_paths::names ? path_name(one.text) : one.text;
            case a_text:
                break;
        }
        return one.text;
    });
}

bool failure::operator==(const failure& other) const {
    return contents_ == other.contents_ || (code() == other.code() && arguments() == other.arguments());
}

}  // namespace vistels
