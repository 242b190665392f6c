// What the system withheld from this process, kept for whoever operates it.
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace vorn {

/// Short lines, each naming something that was withheld and its remedy. Reports never depend on
/// them. Safe to use from several threads.
class Advice {
public:
    /// Keeps `line`, once however often it is given.
    void add(const std::string& line);

    /// The lines, in the order in which they were first given.
    std::vector<std::string> lines() const;

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace vorn
