// The console program: hands everything to run() and gives an error that leaves it one line.
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "vorn/vorn.h"

namespace {

constexpr int exitError = 2;

constexpr const char* usage =
    "Usage: vorn [LABEL | MP]\n"
    "Runs the diagnostic of this machine as VORNconfig.xml in the current directory says.\n"
    "\n"
    "  LABEL      name of the processor in the report (default 1)\n"
    "  MP, mp     run the multi-processor stress test alone\n"
    "  --help     show this text\n"
    "  --version  show the version\n"
    "\n"
    "Files are written to the current directory: CPUOut.txt, CPUSummary.txt and, where the\n"
    "configuration asks for them, CPUResults.txt or CPUResults.xml and passfail.txt.\n";

int runToStatus(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::string& text) {
        std::cerr << text << std::endl;
    } catch (const std::bad_alloc&) {
        std::cerr << "vorn: not enough memory to go on" << std::endl;
    } catch (const std::exception& error) {
        std::cerr << "vorn: VORNconfig.xml: " << error.what() << std::endl;
    } catch (...) {
        std::cerr << "vorn: unknown error" << std::endl;
    }
    return exitError;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string first = argc == 2 ? argv[1] : "";
    if (first == "--help") {
        std::cout << usage;
        return 0;
    }
    if (first == "--version") {
        std::cout << "VORN64 " << vorn::revision << std::endl;
        return 0;
    }
    const int status = runToStatus(argc, argv);
    for (const std::string& line : vorn::platformAdvice()) {
        std::cerr << "advice: " << line << std::endl;
    }
    return status;
}
