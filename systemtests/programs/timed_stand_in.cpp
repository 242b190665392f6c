// A program that stands in for a load or graphics program of the configuration: says what it was
// started with, and stays for its first argument, in per cent, of its second, in seconds.
//
// Usage: timed_stand_in PERCENT SECONDS
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

int main(int argc, char** argv) {
    std::cout << "started with";
    for (int index = 1; index < argc; ++index) {
        std::cout << " [" << argv[index] << "]";
    }
    std::cout << std::endl;
    if (argc == 3) {
        std::this_thread::sleep_for(
            std::chrono::milliseconds(std::atoi(argv[1]) * std::atoi(argv[2]) * 10));
    }
    return 3;  // nobody looks at it
}
