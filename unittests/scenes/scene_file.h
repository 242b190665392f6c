// Scene files: one test on a simulated machine, told in sections of text. README.md beside this
// file has their form.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace vorn {

struct Scene {
    std::string name;
    std::map<std::string, std::string> sections;  ///< by name, every blank of them as it stands

    /// A section, empty where the scene has none.
    std::string text(const std::string& section) const;
    /// Its lines, without empty ones.
    std::vector<std::string> lines(const std::string& section) const;
};

/// The scenes of a file: one, or one for each row of its table. Raises std::runtime_error with the
/// file's name and what is wrong.
std::vector<Scene> readScenes(const std::filesystem::path& file);

}  // namespace vorn
