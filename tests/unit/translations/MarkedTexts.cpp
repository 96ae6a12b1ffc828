#include "unit/translations/Catalogue.h"

#include <regex>

namespace kelo::test {

std::vector<std::string> markedTexts(std::string_view code) {
    static const std::regex call(R"re(\b(?:un)?translated(?:Count)?\()re");
    static const std::regex literal(R"re(\s*"((?:[^"\\\n]|\\.)*)")re");
    std::vector<std::string> texts;
    using Matches = std::regex_iterator<std::string_view::const_iterator>;
    for (Matches match(code.begin(), code.end(), call); match != Matches(); ++match) {
        std::string text;
        auto at = (*match)[0].second;
        std::match_results<std::string_view::const_iterator> piece;
        while (std::regex_search(at, code.end(), piece, literal,
                                 std::regex_constants::match_continuous)) {
            text += piece.str(1);
            at = piece[0].second;
        }
        if (!text.empty())
            texts.push_back(text);
    }
    return texts;
}

} // namespace kelo::test
