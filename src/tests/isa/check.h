// Known-answer checks as data: what executes, the lanes that are inspected with their expected
// values and printed texts, and the groups under one verdict line. Execution only fills in the
// actual lanes; comparing and printing is here alone.
#pragma once

#include <cstdint>
#include <functional>
#include <variant>
#include <vector>

namespace vorn {

/// One lane of a result in the type in which it is compared and printed. Lanes of 8 and 16 bits
/// are widened to 32 bits, so that they print as numbers.
using LaneValue =
    std::variant<std::int32_t, std::uint32_t, std::int64_t, std::uint64_t, float, double>;

/// The value of a lane of any width.
template <typename Lane>
LaneValue laneValue(Lane lane) {
    if constexpr (sizeof(Lane) < sizeof(std::int32_t)) {
        return std::int32_t{lane};
    } else {
        return lane;
    }
}

/// What the instructions of one group computed.
struct Actual {
    std::vector<LaneValue> lanes;  ///< the inspected lanes, in the order of the group's lines
    bool everyRepetition = true;   ///< no repetition of a repeated computation went wrong
};

/// A line of a group: its text, and the lanes that it shows with the values they must have.
struct CheckLine {
    /// A lane: `label` and the actual value after it.
    CheckLine(const char* label, LaneValue lane) : text(label), expected{lane} {}
    /// A complex number of two lanes: `format` is a printf format of two doubles that ends its line
    /// itself.
    CheckLine(const char* format, double real, double imaginary)
        : text(format), expected{real, imaginary} {}

    const char* text;
    std::vector<LaneValue> expected;
};

using CheckLines = std::vector<CheckLine>;

/// When the lines of a group are printed.
enum class Shown {
    always,
    onMismatch,  ///< when a lane of the same part mismatches: then all lines of that part
};

/// Checks under one verdict line.
struct CheckGroup {
    std::function<Actual()> execute;
    Shown shown;
    std::vector<CheckLines> parts;  ///< lines that are printed together
    const char* passed;
    const char* failed;
};

/// One check routine: the groups of an instruction set extension.
struct Routine {
    const char* opening;
    std::vector<CheckGroup> groups;
    const char* passed;  ///< closing lines; an empty line follows
    const char* failed;
};

/// Compares the actual lanes with the group's, and prints its lines and its verdict line. Whether
/// every lane, by value, and every repetition matched. Raises std::out_of_range when `actual` has
/// fewer lanes than the group.
bool reportGroup(const CheckGroup& group, const Actual& actual);

/// Executes and reports every group, also after one that failed. Whether all passed.
bool runRoutine(const Routine& routine);

}  // namespace vorn
