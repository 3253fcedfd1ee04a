// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/filter/filter_display.h"

#include <QCoreApplication>
#include <algorithm>

#include "app/settings/formula_colours.h"
#include "formula/parser_ROOT.h"
#include "shell/kit/failure_words.h"

namespace vistels {

namespace {

bool is_quote(QChar one) {
    return one == QLatin1Char('"') || one == QChar(0x201C) || one == QChar(0x201D);
}

// Places in code points, as the parser counts them, as places in a text of UTF-16.
class places {
  public:
    places(const QString& text, std::size_t put_in_front) : put_in_front_(put_in_front) {
        starts_.reserve(static_cast<std::size_t>(text.size()) + 1);
        for (int at = 0; at < text.size(); ++at) {
            starts_.push_back(at);
            const bool is_pair =
                text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
            if (is_pair) ++at;
        }
        starts_.push_back(static_cast<int>(text.size()));
    }

    filter_display::span operator()(const text_span& place) const {
        const int start = at(place.start);
        return {start, at(place.start + place.length) - start};
    }

  private:
    int at(std::size_t code_point) const {
        const std::size_t typed = code_point < put_in_front_ ? 0 : code_point - put_in_front_;
        return starts_[std::min(typed, starts_.size() - 1)];
    }

    std::size_t put_in_front_;
    std::vector<int> starts_;
};

bool is_known(const std::string& code) {
    const auto& all = formula_codes();
    return std::any_of(all.begin(), all.end(), [&](const formula_code& one) { return code == one.code; });
}

void add_word(filter_display& made, const QString& text, const token_ITEM& token, const places& place_of) {
    filter_display::word word;
    word.place = place_of(token.place);
    word.text = word.place.length < 2 ? word.place
                                      : filter_display::span{word.place.start + 1, word.place.length - 2};
    // The last one decides, but a wrong one anywhere spoils the word.
    const auto& codes = token.ray_word_IDENTIFIERS;
    if (!codes.empty() && std::all_of(codes.begin(), codes.end(), is_known)) word.code = codes.back();
    if (token.identifiers_place.length > 0) {
        const auto group = place_of(token.identifiers_place);
        const QString between = text.mid(group.end(), word.place.start - group.end());
        if (between.trimmed().isEmpty() && group.start < word.place.start) {
            word.place = {group.start, word.place.end() - group.start};
        }
    }
    made.words.push_back(std::move(word));
}

void find_joints(filter_display& made, const QString& text) {
    auto word = made.words.begin();
    for (int at = 0; at < text.size(); ++at) {
        while (word != made.words.end() && at >= word->place.end()) ++word;
        if (word != made.words.end() && at >= word->place.start) {
            at = word->place.end() - 1;
        } else if (text[at] == QLatin1Char(' ')) {
            made.joints.push_back({at, 1});
        }
    }
}

}  // namespace

filter_display display_filter(const QString& text) {
    filter_display made;
    const bool is_plain = std::none_of(text.begin(), text.end(), [](QChar one) {
        return is_quote(one) || one == QLatin1Char('(') || one == QLatin1Char(')');
    });
    const std::string typed = text.toStdString();
    if (!text.trimmed().isEmpty()) {
        made.problems = words_of(parser_ROOT::for_filter(typed).parser_Errors());
    }
    if (is_plain) return made;
    const parser_ROOT parsed = parser_ROOT::for_display(typed);
    const places place_of(text, parsed.characters_put_in_front());
    for (const token_ITEM& token : parsed.ray_token_ITEMs()) {
        if (token.type == token_type::WORDS) add_word(made, text, token, place_of);
    }
    for (const formula_problem& problem : parsed.problems()) {
        for (const text_span& place : problem.places) made.wrong.push_back(place_of(place));
    }
    find_joints(made, text);
    return made;
}

int utf16_place(const QString& text, std::size_t code_point) {
    return places(text, 0)({code_point, 0}).start;
}

QString one_line(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    for (QChar& one : text) {
        const bool ends_line = one == QLatin1Char('\n') || one == QLatin1Char('\r') ||
                               one == QChar::LineSeparator || one == QChar::ParagraphSeparator;
        if (ends_line) one = QLatin1Char(' ');
    }
    return text;
}

QString code_meaning(const std::string& code) {
    for (const formula_code& one : formula_codes()) {
        if (code == one.code) return QCoreApplication::translate("filter", one.meaning);
    }
    return {};
}

}  // namespace vistels
