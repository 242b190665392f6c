// How deep the elements of an XML text nest.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace vorn {

/// The line, counted from 1, of the first element that stands below more than `levels` others;
/// nothing when there is none. The text need not be well-formed: up to the place where a parser
/// would give it up, the depth is at least the parser's.
std::optional<std::size_t> lineNestedBeyond(std::string_view text, std::size_t levels);

}  // namespace vorn
