// The system's command interpreter and the two commands of it that a run uses.
#pragma once

#include <string>

namespace vorn {

class CommandInterpreter {
public:
    virtual ~CommandInterpreter() = default;

    /// Hands a command line to the interpreter and waits for its end. The interpreter's own
    /// result, whose meaning is the system's.
    virtual int execute(const std::string& commandLine) = 0;

    /// Whether something exists at this path.
    virtual bool fileExists(const std::string& path) = 0;

    /// The word of a command line that starts the program at this path: the path itself, quoted
    /// only where it holds blanks or characters that the interpreter would read. A path without a
    /// folder names a file of the current directory.
    virtual std::string programWord(const std::string& path) const = 0;

    /// Name of the command that renames a file.
    virtual std::string moveCommand() const = 0;

    /// Name of the command that shows a text file.
    virtual std::string showCommand() const = 0;
};

}  // namespace vorn
