// A host of the library: runs the tests named by its arguments (values of vorn::Test) into a buffer
// of its own and prints what each wrote, then "=> " and its result. "null" before a test runs it
// without a buffer.
#include <cstdlib>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>

#include "vorn/vorn.h"

int main(int argc, char** argv) {
    std::streambuf* const console = std::cout.rdbuf();
    try {
        vorn::VORN diagnostic;  // reads VORNconfig.xml in the current directory
        for (int index = 1; index < argc; ++index) {
            const bool lost = argv[index] == std::string("null") && index + 1 < argc;
            const auto test = static_cast<vorn::Test>(std::atoi(argv[lost ? ++index : index]));
            std::stringstream report;
            const VORNTestResult result = diagnostic.runTest(test, lost ? nullptr : report.rdbuf());
            std::cout.rdbuf(console);  // runTest() leaves it bound to the buffer
            std::cout << report.str() << "=> " << result << std::endl;
        }
    } catch (const std::string& raised) {
        std::cout << "raised text: " << raised << std::endl;
        return 1;
    } catch (const std::exception& error) {
        std::cout << "raised error: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
