#include "report/text.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <limits>

namespace vorn {

namespace {

/// Removes the word from the text. Character by character, so that a word that a removal brings
/// together is seen too, in one pass however often the word occurs.
void removeWord(std::string& text, std::string_view word) {
    std::size_t kept = text.find(word);
    if (word.empty() || kept == std::string::npos) {
        return;
    }
    for (std::size_t next = kept; next < text.size(); ++next) {
        text[kept++] = text[next];
        if (kept >= word.size() &&
            std::string_view(text).substr(kept - word.size(), word.size()) == word) {
            kept -= word.size();
        }
    }
    text.resize(kept);
}

/// Whether decimal digits, and neither a word such as "nan" nor "0x", whose leading number is 0,
/// are the first thing after blanks and a sign.
bool beginsWithNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        text.remove_prefix(1);
    }
    const bool hexadecimal =
        text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    return !text.empty() && !hexadecimal &&
           std::string_view("0123456789.").find(text.front()) != std::string_view::npos;
}

}  // namespace

std::string upperCase(std::string_view text) {
    std::string upper(text);
    for (char& character : upper) {
        if (character >= 'a' && character <= 'z') {
            character = static_cast<char>(character - 'a' + 'A');
        }
    }
    return upper;
}

float leadingFloat(const std::string& text) {
    return beginsWithNumber(text) ? std::strtof(text.c_str(), nullptr) : 0.0F;
}

double leadingDouble(const std::string& text) {
    return beginsWithNumber(text) ? std::strtod(text.c_str(), nullptr) : 0.0;
}

std::string localTimeText(std::int64_t wallSeconds) {
    const auto now = static_cast<std::time_t>(wallSeconds);
    std::array<char, 32> text{};
    const std::tm* broken = std::localtime(&now);
    if (broken != nullptr) {
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", broken);
    }
    return text.data();
}

int leadingInteger(const std::string& text) {
    return static_cast<int>(std::clamp<std::int64_t>(
        leadingInteger64(text), std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::int64_t leadingInteger64(const std::string& text) {
    return std::strtoll(text.c_str(), nullptr, 10);
}

std::string withoutWords(std::string_view text, const std::vector<std::string>& words) {
    std::string rest(text);
    for (const std::string& word : words) {
        removeWord(rest, word);
    }
    return rest;
}

std::vector<std::string_view> splitAtBlanks(std::string_view text) {
    std::vector<std::string_view> words;
    std::size_t start = text.find_first_not_of(' ');
    while (start != std::string_view::npos) {
        const std::size_t end = text.find(' ', start);
        words.push_back(text.substr(start, end - start));
        start = text.find_first_not_of(' ', end);
    }
    return words;
}

WordComparison::WordComparison(std::string_view text, const std::vector<std::string>& removals)
    : removals_(removals),
      empty_(text.empty()),
      rest_(withoutWords(text, removals)),
      words_(splitAtBlanks(rest_)) {}

bool WordComparison::isSameAs(std::string_view other) const {
    if (empty_ || other.empty()) {
        return false;
    }
    const std::string otherRest = withoutWords(other, removals_);
    return splitAtBlanks(otherRest) == words_;
}

std::string compareText(std::string_view first, std::string_view second,
                        const std::vector<std::string>& removals) {
    return WordComparison(first, removals).isSameAs(second) ? "SAME" : "DIFFERENT";
}

}  // namespace vorn
