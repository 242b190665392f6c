// Any file as the configuration: it is read, or refused with an error; every look-up ends.
#include <unistd.h>

#include <exception>
#include <fstream>
#include <string>

#include "config/configuration.h"
#include "fuzzer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = "/tmp/vorn-fuzz-" + std::to_string(::getpid()) + ".xml";
    std::ofstream(path, std::ios::binary) << vorn::inputText(data, size);
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
