// Text helpers that several floors share.
#pragma once

#include <cstdint>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace vorn {

/// `text` with the ASCII letters a to z in upper case, whatever the locale.
std::string upperCase(std::string_view text);

/// The values one after the other, each formatted as a fresh text stream formats it, whatever
/// the locale.
template <typename... Values>
std::string textOf(const Values&... values) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    (stream << ... << values);
    return stream.str();
}

/// The leading decimal number of `text` (an optional sign, digits, a fraction, an exponent, as
/// strtof and strtod read it); 0 when there is none, also for what these take as an infinity, as no
/// number or as hexadecimal.
float leadingFloat(const std::string& text);
double leadingDouble(const std::string& text);

/// A wall-clock reading, seconds since 1970-01-01 00:00:00 UTC, as "YYYY-MM-DD HH:MM:SS" of the
/// local time; empty when the system cannot break it down.
std::string localTimeText(std::int64_t wallSeconds);

/// The leading decimal integer of `text` as atoi reads it; 0 when there is none, the nearest int
/// when it is beyond one.
int leadingInteger(const std::string& text);

/// Likewise; the nearest 64-bit number when it does not fit.
std::int64_t leadingInteger64(const std::string& text);

/// `text` without any occurrence of the words, removed word by word in list order; an occurrence
/// that a removal brings together goes too.
std::string withoutWords(std::string_view text, const std::vector<std::string>& words);

/// The blank-separated words of `text`; adjacent blanks separate once.
std::vector<std::string_view> splitAtBlanks(std::string_view text);

/// A text prepared to be compared with others word by word after removing words from both, the same
/// words in the same order, case-sensitive. Keeps a reference to the removals.
class WordComparison {
public:
    WordComparison(std::string_view text, const std::vector<std::string>& removals);
    WordComparison(const WordComparison&) = delete;
    WordComparison& operator=(const WordComparison&) = delete;

    /// An empty text differs from every other; two texts of which nothing is left are the same.
    bool isSameAs(std::string_view other) const;

private:
    const std::vector<std::string>& removals_;
    bool empty_;
    std::string rest_;
    std::vector<std::string_view> words_;  // of rest_
};

/// Compares two texts word by word after removing `removals` from both: "SAME" when both have the
/// same words in the same order (case-sensitive), else "DIFFERENT". An empty text differs from
/// every other; two texts of which nothing is left are the same.
std::string compareText(std::string_view first, std::string_view second,
                        const std::vector<std::string>& removals);

}  // namespace vorn
