// Any text as a hardware identifier: what is found in it stands in it.
#include <algorithm>
#include <cctype>

#include "fuzzer.h"
#include "hw/device_enumeration.h"
#include "report/text.h"

namespace {

/// Whether the first of the markers that is there is followed by this number, where it is written
/// out in four digits.
bool stands(std::string_view text, const char* marker, const char* otherMarker, unsigned number) {
    const std::size_t place = text.find(marker);
    const std::size_t at = place != std::string_view::npos ? place : text.find(otherMarker);
    if (at == std::string_view::npos) {
        return false;
    }
    const std::string_view digits = text.substr(at + 4, 4);
    const bool allDigits =
        digits.size() == 4 && std::all_of(digits.begin(), digits.end(), [](unsigned char digit) {
            return std::isxdigit(digit) != 0;
        });
    char expected[16];
    std::snprintf(expected, sizeof expected, "%04X", number);
    return !allDigits || vorn::upperCase(digits) == expected;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = vorn::inputText(data, size);
    const auto identity = vorn::parseHardwareId(text);
    if (identity.has_value()) {
        vorn::require(stands(text, "VEN_", "VID_", identity->vendor), "the vendor stands there");
        vorn::require(stands(text, "DEV_", "PID_", identity->device), "the device stands there");
    }
    return 0;
}
