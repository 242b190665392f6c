#include "platform/advice.h"

#include <algorithm>

namespace vorn {

void Advice::add(const std::string& line) {
    const std::scoped_lock lock(mutex_);
    if (std::find(lines_.begin(), lines_.end(), line) == lines_.end()) {
        lines_.push_back(line);
    }
}

std::vector<std::string> Advice::lines() const {
    const std::scoped_lock lock(mutex_);
    return lines_;
}

}  // namespace vorn
