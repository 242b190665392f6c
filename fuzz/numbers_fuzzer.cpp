// Any text as a size or a timer of the configuration: a number or an error, never a surprise.
#include <cmath>
#include <stdexcept>

#include "config/settings.h"
#include "fuzzer.h"
#include "report/text.h"
#include "tests/memory/size_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(vorn::inputText(data, size));
    const std::string upper = vorn::upperCase(text);
    const std::int64_t whole = vorn::bytesOfWholeSize(upper);
    const std::int64_t fractional = vorn::bytesOfFractionalSize(upper);
    const bool hasUnit = upper.find("GB") != std::string::npos ||
                         upper.find("MB") != std::string::npos ||
                         upper.find("KB") != std::string::npos;
    vorn::require(hasUnit || whole == fractional, "a size without a unit is a number of bytes");
    vorn::require(std::isfinite(vorn::leadingFloat(text)) || !text.empty(), "nothing is no number");
    vorn::require(!std::isnan(vorn::leadingDouble(text)), "a number is a number");

    vorn::Settings settings;
    settings.floatingPointTimer = text;
    try {
        const int timer = vorn::integerOf(settings, &vorn::Settings::floatingPointTimer);
        vorn::require(timer == vorn::leadingInteger(text), "a timer is its leading number");
    } catch (const std::logic_error& error) {
        vorn::require(std::string(error.what()).find("@FloatingPointTimer") != std::string::npos,
                      "an error names the key");
    }
    return 0;
}
