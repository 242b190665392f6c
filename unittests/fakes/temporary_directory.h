// A fresh directory as the current one, for one scope.
#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vorn {

/// Makes an empty directory and enters it; at the end of its scope goes back and removes it.
class TemporaryDirectory {
public:
    TemporaryDirectory() : former_(std::filesystem::current_path()) {
        const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
        path_ = std::filesystem::temp_directory_path() / ("vorn-" + std::to_string(stamp));
        std::filesystem::create_directories(path_);
        std::filesystem::current_path(path_);
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::current_path(former_, ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// Writes a file, in folders that need not be there.
    static void write(const std::string& name, const std::string& text) {
        std::filesystem::create_directories(std::filesystem::absolute(name).parent_path());
        std::ofstream(name, std::ios::binary) << text;
    }
    /// The content with line ends as "\n"; "(absent)" when there is no such file.
    static std::string read(const std::string& name) {
        std::ifstream file(name);
        if (!file) {
            return "(absent)";
        }
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    std::filesystem::path former_;
    std::filesystem::path path_;
};

}  // namespace vorn
