// What the fuzzers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace vorn {

/// Ends the process, as a finding, where a property does not hold.
inline void require(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "this does not hold: %s\n", property);
        std::abort();
    }
}

inline std::string_view inputText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

}  // namespace vorn
