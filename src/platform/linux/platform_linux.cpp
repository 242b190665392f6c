#include <sched.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "platform/linux/device_setup_linux.h"
#include "platform/linux/display_linux.h"
#include "platform/linux/physical_memory_linux.h"
#include "platform/linux/temperature_sensors_linux.h"
#include "platform/platform.h"
#include "platform/x86_instructions.h"

#if defined(VORN_RING0_ABSENT)
#include "platform/ring0_absent.h"
#else
#include "platform/linux/ring0_linux.h"
#endif

namespace vorn {

namespace {

class LinuxProcessor : public X86Processor {
public:
    unsigned packageCount() override {
        namespace fs = std::filesystem;
        std::set<std::string> packages;
        std::error_code error;
        for (const fs::directory_entry& entry :
             fs::directory_iterator("/sys/devices/system/cpu", error)) {
            std::ifstream file(entry.path() / "topology/physical_package_id");
            std::string package;
            if (file >> package) {
                packages.insert(package);
            }
        }
        return packages.empty() ? 1U : static_cast<unsigned>(packages.size());
    }

    unsigned currentLogicalProcessor() override {
        const int processor = ::sched_getcpu();
        return processor < 0 ? 0U : static_cast<unsigned>(processor);
    }
};

class LinuxClock : public Clock {
public:
    LinuxClock() : start_(monotonicNanoseconds()) {}

    std::int64_t processMilliseconds() override {
        return (monotonicNanoseconds() - start_) / 1000000;
    }
    std::int64_t wallSeconds() override { return static_cast<std::int64_t>(std::time(nullptr)); }
    std::int64_t performanceCounter() override { return monotonicNanoseconds(); }
    std::int64_t performanceFrequency() override { return 1000000000; }
    void sleepMilliseconds(std::uint32_t milliseconds) override {
        timespec remaining{static_cast<time_t>(milliseconds / 1000U),
                           static_cast<long>(milliseconds % 1000U) * 1000000L};
        while (::nanosleep(&remaining, &remaining) != 0) {
        }
    }

private:
    static std::int64_t monotonicNanoseconds() {
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        return static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
    }

    std::int64_t start_;
};

/// Whether the shell takes this character of a word as it is, wherever it stands.
bool isPlain(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') ||
           (byte != 0 && std::strchr("_@%+:,./-", character) != nullptr);
}

std::string singleQuoted(const std::string& text) {
    std::string quoted = "'";
    for (const char character : text) {
        quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return quoted + "'";
}

class LinuxCommandInterpreter : public CommandInterpreter {
public:
    int execute(const std::string& commandLine) override {
        // The interpreter is the interface here: the command line is the operator's own.
        return std::system(commandLine.c_str());  // NOLINT(cert-env33-c)
    }
    bool fileExists(const std::string& path) override {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0;
    }
    std::string programWord(const std::string& path) const override {
        // A name alone would be looked up in the search path, and a line that begins with a hyphen
        // would be the shell's options.
        const bool needsDirectory = path.find('/') == std::string::npos || path.front() == '-';
        const std::string program = needsDirectory ? "./" + path : path;
        return std::all_of(program.begin(), program.end(), isPlain) ? program
                                                                    : singleQuoted(program);
    }
    std::string moveCommand() const override { return "mv"; }
    std::string showCommand() const override { return "cat"; }
};

class LinuxProcessControl : public ProcessControl {
public:
    [[noreturn]] void exit(int status) override { std::exit(status); }
};

}  // namespace

Platform& nativePlatform() {
    static Advice advice;
    static LinuxProcessor processor;
#if defined(VORN_RING0_ABSENT)
    static AbsentRing0Library ring0;
#else
    static LinuxRing0Library ring0(advice);
#endif
    static LinuxClock clock;
    static LinuxPhysicalMemory memory(advice);
    static LinuxCommandInterpreter interpreter;
    static LinuxProcessControl process;
    static LinuxTemperatureSensors temperatureSensors;
    static LinuxDeviceSetup devices;
    static LinuxDisplay display;
    static Platform platform{.processor = processor,
                             .ring0 = ring0,
                             .clock = clock,
                             .memory = memory,
                             .interpreter = interpreter,
                             .process = process,
                             .temperatureSensors = temperatureSensors,
                             .devices = devices,
                             .display = display,
                             .advice = advice};
    return platform;
}

}  // namespace vorn
