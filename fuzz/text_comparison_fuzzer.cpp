// Any two texts, with a tab between them: compared as a plain reading of the rule compares them,
// both ways round.
#include <cmath>

#include "config/configuration.h"
#include "fuzzer.h"
#include "report/text.h"
#include "tests/cpu/cpu_frequency_test.h"

namespace {

std::string withoutRemovals(std::string text) {
    for (const std::string& word : vorn::brandRemovals()) {
        for (std::size_t at = 0; (at = text.find(word)) != std::string::npos;) {
            text.erase(at, word.size());
        }
    }
    return text;
}

std::string wordsOf(const std::string& text) {
    std::string words;
    for (const std::string_view word : vorn::splitAtBlanks(text)) {
        words.append(word).append(" ");
    }
    return words;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = vorn::inputText(data, size);
    const std::size_t end = text.find('\t');
    const std::string first(text.substr(0, end));
    const std::string second(end == std::string_view::npos ? "" : text.substr(end + 1));
    const auto compared = [](const std::string& a, const std::string& b) {
        return vorn::compareText(a, b, vorn::brandRemovals()) == "SAME";
    };
    const bool same = !first.empty() && !second.empty() &&
                      wordsOf(withoutRemovals(first)) == wordsOf(withoutRemovals(second));
    vorn::require(compared(first, second) == same, "texts are compared by their words");
    vorn::require(compared(second, first) == same, "and both ways round");
    vorn::require(compared(first, first) == !first.empty(), "a text is the same as itself");

    const vorn::ExpectedFrequency expected = vorn::expectedFrequency(first);
    vorn::require(expected.text.size() <= first.size() && !std::isnan(expected.gigahertz),
                  "the frequency is a number out of the brand");
    return 0;
}
