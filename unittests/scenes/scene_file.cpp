#include "scenes/scene_file.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "report/text.h"

namespace vorn {

namespace {

using Sections = std::map<std::string, std::string>;

Sections readSections(const std::filesystem::path& file) {
    std::ifstream input(file, std::ios::binary);
    if (!input) {
        throw std::runtime_error(file.string() + ": cannot be read");
    }
    Sections sections;
    std::string name;
    for (std::string line; std::getline(input, line);) {
        if (line.rfind("=== ", 0) == 0) {
            name = line.substr(4);
            if (!sections.emplace(name, "").second) {
                throw std::runtime_error(file.string() + ": two sections '" + name + "'");
            }
        } else if (!name.empty()) {
            sections[name] += line + "\n";
        }
    }
    return sections;
}

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

std::vector<std::string> cells(const std::string& row) {
    std::vector<std::string> result;
    std::istringstream input(row);
    for (std::string cell; std::getline(input, cell, '|');) {
        result.push_back(trimmed(cell));
    }
    return result;
}

std::string filled(std::string text, const Sections& values) {
    for (const auto& [column, cell] : values) {
        const std::string mark = "${" + column + "}";
        for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos;
             at += cell.size()) {
            text.replace(at, mark.size(), cell);
        }
    }
    return text;
}

/// The sections with the row's cells in place, those of the included files added.
Sections completed(const Sections& sections, const std::filesystem::path& file,
                   const Sections& values) {
    Sections result;
    for (const auto& [name, text] : sections) {
        result[name] = filled(text, values);
    }
    std::istringstream included(result["include"]);
    result.erase("include");
    for (std::string name; included >> name;) {
        for (const auto& [section, text] :
             completed(readSections(file.parent_path() / name), file, values)) {
            result[section] += text;
        }
    }
    return result;
}

}  // namespace

std::string Scene::text(const std::string& section) const {
    const auto found = sections.find(section);
    return found == sections.end() ? "" : found->second;
}

std::vector<std::string> Scene::lines(const std::string& section) const {
    std::vector<std::string> result;
    std::istringstream input(text(section));
    for (std::string line; std::getline(input, line);) {
        if (!line.empty()) {
            result.push_back(line);
        }
    }
    return result;
}

std::vector<Scene> readScenes(const std::filesystem::path& file) {
    Scene whole{file.stem().string(), readSections(file)};
    const std::vector<std::string> table = whole.lines("rows");
    if (table.empty()) {
        return {{whole.name, completed(whole.sections, file, {})}};
    }
    whole.sections.erase("rows");
    const std::vector<std::string> header = cells(table.front());
    std::vector<Scene> scenes;
    for (auto row = std::next(table.begin()); row != table.end(); ++row) {
        std::vector<std::string> values = cells(*row);
        // The blank after the last bar may be missing.
        values.resize(values.size() + (row->back() == '|' ? 1 : 0));
        if (values.size() != header.size()) {
            throw std::runtime_error(file.string() + ": cells do not fit the header: " + *row);
        }
        Sections named;
        for (std::size_t column = 0; column < header.size(); ++column) {
            named[header[column]] = values[column];
        }
        scenes.push_back(
            {whole.name + ": " + values.front(), completed(whole.sections, file, named)});
    }
    return scenes;
}

}  // namespace vorn
