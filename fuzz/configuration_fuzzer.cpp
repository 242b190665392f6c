// Any file as the configuration: it is read, or refused with an error; every look-up ends.
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <fstream>
#include <string>

#include "config/configuration.h"
#include "config/nesting.h"
#include "fuzzer.h"

namespace {

std::size_t depthOf(const rapidxml::xml_node<char>& node) {
    std::size_t deepest = 0;
    for (const auto* child = node.first_node(); child != nullptr; child = child->next_sibling()) {
        deepest = std::max(deepest, 1 + depthOf(*child));
    }
    return node.type() == rapidxml::node_element || node.type() == rapidxml::node_document ? deepest
                                                                                           : 0;
}

/// A text in which nothing nests too deep is one for the parser too. Texts count as a level.
void requireBoundedNesting(std::string text) {
    constexpr std::size_t levels = 3;
    if (text.size() > 2000 || vorn::lineNestedBeyond(text.c_str(), levels).has_value()) {
        return;
    }
    rapidxml::xml_document<char> document;
    try {
        document.parse<0>(text.data());
    } catch (const rapidxml::parse_error&) {
        return;
    }
    vorn::require(depthOf(document) <= levels + 2, "nothing nests deeper than was looked for");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = "/tmp/vorn-fuzz-" + std::to_string(::getpid()) + ".xml";
    std::ofstream(path, std::ios::binary) << vorn::inputText(data, size);
    requireBoundedNesting(std::string(vorn::inputText(data, size)));
    vorn::ConfigurationDocument document;
    vorn::Settings settings;
    try {
        document.load(path);
        vorn::readSettings(document, settings);
        // What an entry is chosen by is any text too.
        const std::string name = document.getSetting("@CPUName", "");
        const std::string chosen = document.getSetting("@CPUName", "@CPUName=" + name);
        vorn::require(name.empty() || chosen.empty() || !settings.brandString.empty() ||
                          !settings.skipConfig.empty(),
                      "an entry is chosen by a name only");
    } catch (const std::exception&) {
        vorn::require(settings.skipConfig.empty(), "a refused text leaves no setting");
    } catch (const std::string& error) {
        vorn::require(error.find("Cannot locate config file") != std::string::npos,
                      "settings that cannot be read say so");
    }
    std::remove(path.c_str());
    return 0;
}
