// A host program that knows the installed header alone: constructs the diagnostic, copies it, and
// runs single tests into a buffer of its own.
//
// Usage: host VALUE...   the values of vorn::Test to run, in order; "null" before a value runs it
//                        without a buffer. Prints what each test wrote, then "=> " and its result.
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "vorn/vorn.h"

int main(int argc, char** argv) {
    std::streambuf* console = std::cout.rdbuf();
    try {
        auto original = std::make_unique<vorn::VORN>();
        vorn::VORN diagnostic(*original);
        original.reset();  // the copy stands alone
        bool withoutBuffer = false;
        for (int index = 1; index < argc; ++index) {
            if (std::string(argv[index]) == "null") {
                withoutBuffer = true;
                continue;
            }
            std::stringstream text;
            const VORNTestResult result =
                diagnostic.runTest(static_cast<vorn::Test>(std::atoi(argv[index])),
                                   withoutBuffer ? nullptr : text.rdbuf());
            std::cout.rdbuf(console);
            std::cout << text.str() << "=> " << result << std::endl;
            withoutBuffer = false;
        }
    } catch (const std::string& raised) {
        std::cout.rdbuf(console);
        std::cout << "raised text: " << raised << std::endl;
    } catch (const std::exception& error) {
        std::cout.rdbuf(console);
        std::cout << "raised error: " << error.what() << std::endl;
    }
    return 0;
}
