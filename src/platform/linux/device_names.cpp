#include "platform/linux/device_names.h"

#include <array>
#include <cstdio>
#include <fstream>

namespace vorn {

namespace {

std::string fourDigits(const char* format, unsigned number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), format, number);
    return text.data();
}

bool beginsWith(const std::string& line, const std::string& start) {
    return line.compare(0, start.size(), start) == 0;
}

}  // namespace

// A maker's line begins with its number and two blanks; the lines of its devices follow, each
// after a tab, those of their variants after two.
std::optional<std::string> lookUpDeviceName(const std::string& listPath, std::uint16_t vendor,
                                            std::uint16_t device) {
    std::ifstream list(listPath);
    const std::string makerStart = fourDigits("%04x  ", vendor);
    const std::string deviceStart = fourDigits("\t%04x  ", device);
    std::string line;
    while (std::getline(list, line) && !beginsWith(line, makerStart)) {
    }
    if (!list) {
        return std::nullopt;
    }
    const std::string maker = line.substr(makerStart.size());
    while (std::getline(list, line) && (beginsWith(line, "\t") || beginsWith(line, "#"))) {
        if (beginsWith(line, deviceStart)) {
            return maker + " " + line.substr(deviceStart.size());
        }
    }
    return maker + fourDigits(" device %04X", device);
}

}  // namespace vorn
