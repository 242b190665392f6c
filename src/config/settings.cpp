#include "config/settings.h"

#include <algorithm>
#include <stdexcept>

#include "report/text.h"

namespace vorn {

bool holdsWord(std::string_view setting, std::string_view word) {
    return upperCase(setting) == word;
}

bool isSwitchedOn(std::string_view setting) {
    return holdsWord(setting, "ENABLE") || holdsWord(setting, "YES") || holdsWord(setting, "TRUE");
}

int integerOf(const Settings& settings, std::string Settings::*setting) {
    const std::string& value = settings.*setting;
    const auto* const row =
        std::find_if(generalKeys.begin(), generalKeys.end(),
                     [=](const SettingKey& key) { return key.setting == setting; });
    const std::string_view key = row == generalKeys.end() ? "a setting" : row->key;
    try {
        return std::stoi(value);
    } catch (const std::invalid_argument&) {
        throw std::invalid_argument(textOf(key, " is \"", value, "\": not a number"));
    } catch (const std::out_of_range&) {
        throw std::out_of_range(textOf(key, " is \"", value, "\": beyond 32 bits"));
    }
}

}  // namespace vorn
