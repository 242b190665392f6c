#include "config/nesting.h"

#include <algorithm>

namespace vorn {

namespace {

bool beginsWith(std::string_view text, std::string_view word) {
    return text.substr(0, word.size()) == word;
}

constexpr std::size_t nowhere = std::string_view::npos;
constexpr std::string_view blanks = " \t\n\r";

/// The length of markup that begins with `begin` characters, up to and with `end`; nowhere where
/// `end` does not occur after them.
std::size_t lengthUpTo(std::string_view text, std::size_t begin, std::string_view end) {
    const std::size_t found = text.find(end, begin);
    return found == nowhere ? nowhere : found + end.size();
}

/// The length of a document type declaration, which may hold markup in brackets.
std::size_t doctypeLength(std::string_view text) {
    std::size_t brackets = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '[') {
            ++brackets;
        } else if (text[i] == ']' && brackets > 0) {
            --brackets;
        } else if (text[i] == '>' && brackets == 0) {
            return i + 1;
        }
    }
    return nowhere;
}

/// The length of an end tag.
std::size_t endTagLength(std::string_view text) {
    std::size_t at = text.find_first_of(" \t\n\r/>?", 2);
    at = at == nowhere ? at : text.find_first_not_of(blanks, at);
    return at != nowhere && text[at] == '>' ? at + 1 : nowhere;
}

/// The length of a start tag. Names may hold quotes, and values may hold ">".
std::size_t startTagLength(std::string_view text) {
    std::size_t at = text.find_first_of(" \t\n\r/>?", 1);
    if (at == 1) {
        return nowhere;
    }
    while (at != nowhere && (at = text.find_first_not_of(blanks, at)) != nowhere) {
        if (text[at] == '>') {
            return at + 1;
        }
        if (text[at] == '/') {
            return text.substr(at + 1, 1) == ">" ? at + 2 : nowhere;
        }
        const std::size_t nameEnd = text.find_first_of(" \t\n\r/<>=?!", at);
        const std::size_t equals =
            nameEnd == nowhere ? nowhere : text.find_first_not_of(blanks, nameEnd);
        if (nameEnd == at || equals == nowhere || text[equals] != '=') {
            return nowhere;
        }
        const std::size_t quote = text.find_first_not_of(blanks, equals + 1);
        if (quote == nowhere || (text[quote] != '"' && text[quote] != '\'')) {
            return nowhere;
        }
        const std::size_t end = text.find(text[quote], quote + 1);
        at = end == nowhere ? nowhere : end + 1;
    }
    return nowhere;
}

/// The length of the markup that `text` begins with, as the parser goes through it; nowhere where
/// the parser gives it up.
std::size_t markupLength(std::string_view text) {
    if (beginsWith(text, "<?")) {
        return lengthUpTo(text, 2, "?>");
    }
    if (beginsWith(text, "<!--")) {
        return lengthUpTo(text, 4, "-->");
    }
    if (beginsWith(text, "<![CDATA[")) {
        return lengthUpTo(text, 9, "]]>");
    }
    if (beginsWith(text, "<!DOCTYPE") && text.substr(9, 1).find_first_of(blanks) == 0) {
        return doctypeLength(text);
    }
    if (beginsWith(text, "<!")) {
        return lengthUpTo(text, 2, ">");
    }
    return beginsWith(text, "</") ? endTagLength(text) : startTagLength(text);
}

}  // namespace

std::optional<std::size_t> lineNestedBeyond(std::string_view text, std::size_t levels) {
    std::size_t depth = 0;
    std::size_t at = 0;
    while ((at = text.find('<', at)) != nowhere) {
        const std::string_view markup = text.substr(at);
        const bool starts = markup.size() > 1 && std::string_view("/!?").find(markup[1]) == nowhere;
        if (starts && depth > levels) {
            return 1 + static_cast<std::size_t>(
                           std::count(text.begin(), text.begin() + static_cast<long>(at), '\n'));
        }
        const std::size_t length = markupLength(markup);
        if (length == nowhere) {
            break;
        }
        if (beginsWith(markup, "</")) {
            depth -= depth > 0 ? 1 : 0;
        } else if (starts && markup[length - 2] != '/') {
            ++depth;
        }
        at += length;
    }
    return std::nullopt;
}

}  // namespace vorn
