// Starting a program that the configuration names, and judging how long it stayed.
#pragma once

#include <string>
#include <vector>

namespace vorn {

/// How a program that runExternalProgram() was to start ended.
inline constexpr int externalProgramRan = 0;          ///< ran for its time
inline constexpr int externalProgramNotFound = -1;    ///< nothing exists at the path; not started
inline constexpr int externalProgramEndedEarly = -2;  ///< ran for less than its time

/// What is said about a program. The texts of the first three stand on a console line with the
/// path; the last are console lines of their own.
struct ExternalProgramLines {
    std::string notFound;                 ///< after the path and a blank
    std::string found;                    ///< after the path and a blank
    std::string executing;                ///< before a blank and the path
    std::vector<std::string> endedEarly;  ///< each on its line
};

/// Starts the program at `path` through the command interpreter, with the arguments as they are
/// given after it, separated by blanks, and waits for its end. Returns one of the values above: the
/// program ended early when it ran for less than nine tenths of the seconds that
/// `expectedSecondsText` begins with (0 when it begins with no number). The program's own exit
/// status is not looked at; one that cannot be started ends at once.
int runExternalProgram(const std::string& path, const std::vector<std::string>& arguments,
                       const std::string& expectedSecondsText, const ExternalProgramLines& lines);

}  // namespace vorn
