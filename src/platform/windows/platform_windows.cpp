#include <sys/stat.h>
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "platform/windows/device_setup_windows.h"
#include "platform/windows/display_windows.h"
#include "platform/windows/physical_memory_windows.h"
#include "platform/windows/temperature_sensors_windows.h"
#include "platform/x86_instructions.h"

#if defined(VORN_RING0_ABSENT)
#include "platform/ring0_absent.h"
#else
#include "platform/windows/ring0_windows.h"
#endif

namespace vorn {

namespace {

class WindowsProcessor : public X86Processor {
public:
    unsigned packageCount() override {
        // The older call tells of the thread's own group of at most 64 logical processors alone.
        DWORD size = 0;
        GetLogicalProcessorInformationEx(RelationProcessorPackage, nullptr, &size);
        std::vector<std::byte> records(size);
        if (GetLogicalProcessorInformationEx(
                RelationProcessorPackage,
                reinterpret_cast<SYSTEM_LOGICAL_PROCESSOR_INFORMATION_EX*>(records.data()),
                &size) == 0) {
            return 1;
        }
        unsigned packages = 0;
        for (DWORD offset = 0; offset < size; ++packages) {
            DWORD length = 0;
            std::memcpy(
                &length,
                records.data() + offset + offsetof(SYSTEM_LOGICAL_PROCESSOR_INFORMATION_EX, Size),
                sizeof length);
            offset += length;
        }
        return packages == 0 ? 1U : packages;
    }

    unsigned currentLogicalProcessor() override {
        constexpr unsigned processorsInGroup = 64;
        PROCESSOR_NUMBER number{};
        GetCurrentProcessorNumberEx(&number);
        return number.Group * processorsInGroup + number.Number;
    }
};

class WindowsClock : public Clock {
public:
    // The runtime's clock() counts elapsed time here, in milliseconds (CLOCKS_PER_SEC is 1000).
    std::int64_t processMilliseconds() override { return static_cast<std::int64_t>(std::clock()); }
    std::int64_t wallSeconds() override { return static_cast<std::int64_t>(std::time(nullptr)); }
    std::int64_t performanceCounter() override {
        LARGE_INTEGER value{};
        QueryPerformanceCounter(&value);
        return value.QuadPart;
    }
    std::int64_t performanceFrequency() override {
        LARGE_INTEGER value{};
        QueryPerformanceFrequency(&value);
        return value.QuadPart;
    }
    void sleepMilliseconds(std::uint32_t milliseconds) override { Sleep(milliseconds); }
};

/// Whether the interpreter takes this character of a program's path as it is, wherever it stands. A
/// slash is not one of them: it begins an option.
bool isPlain(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') ||
           (byte != 0 && std::strchr("\\:._-#$", character) != nullptr);
}

class WindowsCommandInterpreter : public CommandInterpreter {
public:
    int execute(const std::string& commandLine) override {
        // Of a line that begins with a quote the interpreter drops the first quote and the last:
        // a further pair is there to be dropped.
        const bool quoted = !commandLine.empty() && commandLine.front() == '"';
        return std::system(quoted ? ('"' + commandLine + '"').c_str() : commandLine.c_str());
    }
    bool fileExists(const std::string& path) override {
        struct _stat64 status {};
        return _stat64(path.c_str(), &status) == 0;
    }
    std::string programWord(const std::string& path) const override {
        // No path holds a quote. A percent sign keeps its meaning inside quotes too.
        return std::all_of(path.begin(), path.end(), isPlain) ? path : '"' + path + '"';
    }
    std::string moveCommand() const override { return "move"; }
    std::string showCommand() const override { return "type"; }
};

class WindowsProcessControl : public ProcessControl {
public:
    [[noreturn]] void exit(int status) override { std::exit(status); }
};

}  // namespace

Platform& nativePlatform() {
    static Advice advice;
    static WindowsProcessor processor;
#if defined(VORN_RING0_ABSENT)
    static AbsentRing0Library ring0;
#else
    static WindowsRing0Library ring0(advice);
#endif
    static WindowsClock clock;
    static WindowsPhysicalMemory memory(advice);
    static WindowsCommandInterpreter interpreter;
    static WindowsProcessControl process;
    static WindowsTemperatureSensors temperatureSensors;
    static WindowsDeviceSetup devices;
    static WindowsDisplay display;
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
