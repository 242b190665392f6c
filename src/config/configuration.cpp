#include "config/configuration.h"

#include <ios>
#include <limits>
#include <stdexcept>

#include "config/nesting.h"
#include "hw/cpuid.h"
#include "platform/platform.h"
#include "report/report.h"
#include "report/text.h"

namespace vorn {

namespace {

constexpr std::size_t deepestElement = 100;

std::unique_ptr<Configuration>& processSlot() {
    static std::unique_ptr<Configuration> slot = std::make_unique<Configuration>();
    return slot;
}

/// The whole content of the file with a terminating NUL; empty when it cannot be read.
std::vector<char> readWhole(std::ifstream& file) {
    file.seekg(0, std::ios::end);
    const std::streamoff length = file.tellg();
    // A directory can be opened on some systems; it has no content that could be read.
    if (!file || length < 0 || length >= std::numeric_limits<std::streamsize>::max()) {
        return {};
    }
    file.seekg(0, std::ios::beg);
    file.peek();
    if (length > 0 && !file) {
        return {};
    }
    file.clear();
    std::vector<char> text(static_cast<std::size_t>(length) + 1, '\0');
    file.read(text.data(), length);
    if (file.gcount() != length) {
        return {};
    }
    return text;
}

}  // namespace

const std::vector<std::string>& brandRemovals() {
    static const std::vector<std::string> removals{"\n", "(R)", "(TM)", "@", "CPU", "processor"};
    return removals;
}

void ConfigurationDocument::load(const std::string& path) {
    path_ = path;
    document_.clear();
    lastSelector_.clear();
    lastEntry_ = nullptr;
    text_.clear();
    file_.open(path_, std::ios::binary);
    if (file_) {
        text_ = readWhole(file_);
        file_.close();
    }
    if (text_.empty()) {
        reportStream() << "File " << path_ << " not found!" << std::endl;
        platform().process.exit(1);
    }
    size_ = text_.size() - 1;
    // The parser goes down by recursion: a text that nests without end would exhaust the stack.
    const std::optional<std::size_t> line = lineNestedBeyond(text_.data(), deepestElement);
    if (line.has_value()) {
        throw std::runtime_error(
            textOf("line ", *line, ": elements nest deeper than ", deepestElement, " levels"));
    }
    document_.parse<0>(text_.data());
}

std::string ConfigurationDocument::getSetting(std::string_view key,
                                              std::string_view selector) const {
    if (selector.empty()) {
        return key.empty() ? std::string() : attributeFrom(&root(), key);
    }
    return attributeFrom(selectEntry(selector), key);
}

const ConfigurationDocument::Node& ConfigurationDocument::root() const {
    const Node* root = document_.first_node(rootName_.c_str(), rootName_.size());
    if (root == nullptr) {
        throw std::runtime_error("no root element " + rootName_);
    }
    return *root;
}

const ConfigurationDocument::Node* ConfigurationDocument::selectEntry(
    std::string_view selector) const {
    const std::size_t equals = selector.find('=');
    if (selector.front() != '@' || equals == std::string_view::npos) {
        return nullptr;
    }
    if (selector != lastSelector_) {
        lastEntry_ = findEntry(selector.substr(equals + 1));
        lastSelector_ = selector;
    }
    return lastEntry_;
}

const ConfigurationDocument::Node* ConfigurationDocument::findEntry(std::string_view wanted) const {
    const WordComparison comparison(wanted, brandRemovals());
    for (const Node* child = root().first_node(); child != nullptr; child = child->next_sibling()) {
        for (const rapidxml::xml_attribute<char>* attribute = child->first_attribute();
             attribute != nullptr; attribute = attribute->next_attribute()) {
            const std::string_view value(attribute->value(), attribute->value_size());
            if (comparison.isSameAs(value)) {
                return child;
            }
        }
    }
    return nullptr;
}

std::string ConfigurationDocument::attributeFrom(const Node* element, std::string_view key) {
    const std::string_view name = key.substr(0, 1) == "@" ? key.substr(1) : key;
    while (element != nullptr && !name.empty()) {
        const rapidxml::xml_attribute<char>* attribute =
            element->first_attribute(name.data(), name.size());
        if (attribute != nullptr) {
            return {attribute->value(), attribute->value_size()};
        }
        // Down to the first child where there is one, else along the siblings; never back up.
        const Node* child = element->first_node();
        element = child != nullptr ? child : element->next_sibling();
    }
    return {};
}

void readSettings(const ConfigurationDocument& document, Settings& settings) {
    try {
        settings = Settings();
        for (const SettingKey& entry : generalKeys) {
            settings.*entry.setting = document.getSetting(entry.key, "");
        }
        if (!holdsWord(settings.skipConfig, "YES")) {
            const std::string brand = cpuBrandString();
            settings.brandString =
                brand.substr(std::min(brand.find_first_not_of(' '), brand.size()));
            const std::string selector = "@CPUName=" + settings.brandString;
            for (const SettingKey& entry : processorKeys) {
                settings.*entry.setting = document.getSetting(entry.key, selector);
            }
        }
    } catch (...) {
        const std::string dashes = "\n-------------------------------\n";
        throw dashes + "Cannot locate config file: 'VORNconfig.xml'! \n" +
            "Application terminated! \n" + dashes;
    }
}

std::unique_ptr<Configuration> loadConfiguration() {
    auto configuration = std::make_unique<Configuration>();
    configuration->document.load(configurationFileName);
    readSettings(configuration->document, configuration->settings);
    return configuration;
}

Configuration& processConfiguration() {
    return *processSlot();
}

void reloadProcessConfiguration() {
    processSlot() = loadConfiguration();
}

}  // namespace vorn
