#include "config/nesting.h"

#include <algorithm>

namespace vorn {

namespace {

bool beginsWith(std::string_view text, std::string_view word) {
    return text.substr(0, word.size()) == word;
}

/// The length of `text` up to and with `end`; all of it where `end` does not occur.
std::size_t lengthUpTo(std::string_view text, std::string_view end) {
    const std::size_t found = text.find(end);
    return found == std::string_view::npos ? text.size() : found + end.size();
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
    return text.size();
}

/// The length of a start tag, whose attribute values may hold ">".
std::size_t startTagLength(std::string_view text) {
    char quote = '\0';
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (quote != '\0') {
            quote = text[i] == quote ? '\0' : quote;
        } else if (text[i] == '"' || text[i] == '\'') {
            quote = text[i];
        } else if (text[i] == '>') {
            return i + 1;
        }
    }
    return text.size();
}

}  // namespace

std::optional<std::size_t> lineNestedBeyond(std::string_view text, std::size_t levels) {
    std::size_t depth = 0;
    std::size_t at = 0;
    while ((at = text.find('<', at)) < text.size()) {
        const std::string_view rest = text.substr(at);
        if (beginsWith(rest, "<?")) {
            at += lengthUpTo(rest, "?>");
        } else if (beginsWith(rest, "<!--")) {
            at += lengthUpTo(rest, "-->");
        } else if (beginsWith(rest, "<![CDATA[")) {
            at += lengthUpTo(rest, "]]>");
        } else if (beginsWith(rest, "<!DOCTYPE")) {
            at += doctypeLength(rest);
        } else if (beginsWith(rest, "<!")) {
            at += lengthUpTo(rest, ">");
        } else if (beginsWith(rest, "</")) {
            depth -= depth > 0 ? 1 : 0;
            at += lengthUpTo(rest, ">");
        } else {
            const std::size_t length = startTagLength(rest);
            if (depth > levels) {
                return 1 + static_cast<std::size_t>(std::count(
                               text.begin(), text.begin() + static_cast<long>(at), '\n'));
            }
            depth += length >= 2 && rest[length - 2] == '/' ? 0 : 1;
            at += length;
        }
    }
    return std::nullopt;
}

}  // namespace vorn
