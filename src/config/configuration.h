// The configuration file: loading it, looking keys up, filling the settings from it.
#pragma once

#include <fstream>
#include <memory>
#include <rapidxml/rapidxml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "config/settings.h"

namespace vorn {

/// Name of the configuration file, in the current directory.
inline constexpr const char* configurationFileName = "VORNconfig.xml";

/// Words that do not count when a processor's brand string is compared with an entry's name.
const std::vector<std::string>& brandRemovals();

/// A parsed configuration file, kept for later look-ups.
class ConfigurationDocument {
public:
    /// Reads and parses the file, replacing what was loaded before. A file that cannot be opened
    /// or read writes "File <path> not found!" to the report stream and ends the process with
    /// status 1. Raises rapidxml::parse_error for text that is not well-formed XML, and
    /// std::runtime_error for elements that nest deeper than a hundred levels.
    void load(const std::string& path);

    /// The value of `key`, empty when there is none. An empty `selector` looks the key up from the
    /// root element; "@CPUName=" and a brand string from the first child element of the root that
    /// has an attribute of that value (compared as words, see brandRemovals()). Raises
    /// std::runtime_error when the document has no root element of the name "VORN".
    std::string getSetting(std::string_view key, std::string_view selector) const;

private:
    using Node = rapidxml::xml_node<char>;

    const Node& root() const;
    const Node* selectEntry(std::string_view selector) const;
    const Node* findEntry(std::string_view wanted) const;
    static std::string attributeFrom(const Node* element, std::string_view key);

    std::string path_;
    std::ifstream file_;
    std::size_t size_ = 0;
    std::vector<char> text_;  // parsed in place: the document's names and values point into it
    rapidxml::xml_document<char> document_;
    std::string rootName_ = "VORN";
    // The entry that the last selector chose: the keys of one entry are asked for one after
    // another.
    mutable std::string lastSelector_;
    mutable const Node* lastEntry_ = nullptr;
};

/// Fills the settings from the document: the general keys, then, unless "@SkipConfig" is "YES",
/// the processor's brand string and the keys of its entry. Replaces every setting. Whatever goes
/// wrong is raised as one std::string that says so in the report's own manner.
void readSettings(const ConfigurationDocument& document, Settings& settings);

/// A document and the settings read from it.
struct Configuration {
    ConfigurationDocument document;
    Settings settings;
};

/// Loads "VORNconfig.xml" and reads its settings. Errors as of the two steps.
std::unique_ptr<Configuration> loadConfiguration();

/// The configuration of the process, replaced whole by each reload; empty before the first.
Configuration& processConfiguration();

/// Loads the configuration of the process afresh. After an error the former one stands.
void reloadProcessConfiguration();

}  // namespace vorn
