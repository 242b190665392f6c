#include "tests/isa/check.h"

#include <array>
#include <cstddef>
#include <cstdio>

#include "report/report.h"

namespace vorn {

namespace {

using Lanes = std::vector<LaneValue>;

/// The actual lanes of one line.
Lanes sliceOf(const CheckLine& line, const Lanes& all, std::size_t first) {
    Lanes lanes;
    for (std::size_t lane = 0; lane < line.expected.size(); ++lane) {
        lanes.push_back(all.at(first + lane));
    }
    return lanes;
}

void showLine(const CheckLine& line, const Lanes& lanes) {
    if (lanes.size() == 1) {
        std::visit([&line](auto value) { Report::console(line.text, value); }, lanes.front());
        return;
    }
    std::array<char, 1024> text{};  // two doubles of at most 309 digits and the words
    std::snprintf(text.data(), text.size(), line.text, std::get<double>(lanes[0]),
                  std::get<double>(lanes[1]));
    reportStream() << text.data();
}

}  // namespace

bool reportGroup(const CheckGroup& group, const Actual& actual) {
    bool passed = actual.everyRepetition;
    std::size_t first = 0;
    for (const CheckLines& part : group.parts) {
        bool matches = true;
        std::vector<Lanes> lanes;
        for (const CheckLine& line : part) {
            lanes.push_back(sliceOf(line, actual.lanes, first));
            first += line.expected.size();
            matches = matches && lanes.back() == line.expected;
        }
        passed = passed && matches;
        if (matches && group.shown == Shown::onMismatch) {
            continue;
        }
        for (std::size_t line = 0; line < part.size(); ++line) {
            showLine(part[line], lanes[line]);
        }
    }
    Report::console(passed ? group.passed : group.failed);
    return passed;
}

bool runRoutine(const Routine& routine) {
    Report::console(routine.opening);
    bool passed = true;
    for (const CheckGroup& group : routine.groups) {
        const bool groupPassed = reportGroup(group, group.execute());
        passed = passed && groupPassed;
    }
    Report::console(passed ? routine.passed : routine.failed);
    Report::console();
    return passed;
}

}  // namespace vorn
