// A stand-in for WinRing0x64.dll: answers from a text file, logs every call.
//
// VORN_STANDIN_REGISTERS names the file with the answers; without one the driver cannot be started.
// VORN_STANDIN_LOG names the file to which the calls are appended. Lines of the answers:
//
//   initialize 1 0           results of initialise, one a call, the last repeats (default 1)
//   status 0 2               likewise for the status (default 0)
//   msr 0xCD 0x4 refused     values of an MSR, one a read; "refused" fails the read and leaves the
//                            caller's halves as they are; an MSR without a line refuses
//   wrmsr refused            register writes fail
//   pci 0:2.0 0x00 0x01527A6E  a dword of configuration space (bus:device.function, hexadecimal)
//   pci refused              checked configuration reads fail
//   # ...                    a comment
#define VORN_RING0_IMPORT
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>

#include "platform/windows/ring0_imports.h"

namespace {

constexpr const char* refused = "refused";

std::uint32_t number(const std::string& text) {
    return static_cast<std::uint32_t>(std::strtoull(text.c_str(), nullptr, 0));
}

/// The machine that the file of answers describes.
struct Machine {
    std::deque<std::string> initializeResults{"0"};
    std::deque<std::string> statusResults{"1"};
    std::map<std::uint32_t, std::deque<std::string>> msrs;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint8_t> pciBytes;
    bool refuseWrites = false;
    bool refusePci = false;

    Machine() {
        const char* path = std::getenv("VORN_STANDIN_REGISTERS");
        if (path == nullptr) {
            return;
        }
        initializeResults = {"1"};
        statusResults = {"0"};
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            readLine(line);
        }
    }

    void readLine(const std::string& line) {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "initialize") {
            initializeResults = rest(words);
        } else if (kind == "status") {
            statusResults = rest(words);
        } else if (kind == "msr") {
            std::string index;
            words >> index;
            msrs[number(index)] = rest(words);
        } else if (kind == "wrmsr") {
            refuseWrites = true;
        } else if (kind == "pci") {
            readPciLine(words);
        }
    }

    void readPciLine(std::istringstream& words) {
        std::string function;
        std::string offset;
        std::string value;
        words >> function >> offset >> value;
        if (function == refused) {
            refusePci = true;
            return;
        }
        unsigned bus = 0;
        unsigned device = 0;
        unsigned index = 0;
        std::sscanf(function.c_str(), "%x:%x.%x", &bus, &device, &index);
        const std::uint32_t address = (bus << 8U) | (device << 3U) | index;
        for (std::uint32_t byte = 0; byte < 4; ++byte) {
            pciBytes[{address, number(offset) + byte}] =
                static_cast<std::uint8_t>(number(value) >> (8U * byte));
        }
    }

    static std::deque<std::string> rest(std::istringstream& words) {
        std::deque<std::string> all;
        for (std::string word; words >> word;) {
            all.push_back(word);
        }
        return all;
    }
};

Machine& machine() {
    static Machine described;
    return described;
}

std::string next(std::deque<std::string>& answers) {
    if (answers.empty()) {
        return refused;
    }
    const std::string answer = answers.front();
    if (answers.size() > 1) {
        answers.pop_front();
    }
    return answer;
}

void logCall(const char* format, unsigned long long first = 0, unsigned long long second = 0) {
    const char* path = std::getenv("VORN_STANDIN_LOG");
    std::FILE* file = path == nullptr ? nullptr : std::fopen(path, "a");
    if (file != nullptr) {
        std::fprintf(file, format, first, second);
        std::fputc('\n', file);
        std::fclose(file);
    }
}

std::uint32_t pciValue(std::uint32_t address, std::uint32_t offset, unsigned width) {
    logCall("pci 0x%llx+0x%llx", address, offset);
    std::uint32_t value = 0;
    for (unsigned byte = 0; byte < width; ++byte) {
        const auto found = machine().pciBytes.find({address, offset + byte});
        const std::uint32_t bits = found == machine().pciBytes.end() ? 0xFFU : found->second;
        value |= bits << (8U * byte);
    }
    return value;
}

}  // namespace

extern "C" {

std::uint32_t ring0Status() {
    logCall("status");
    return number(next(machine().statusResults));
}

std::uint32_t ring0Initialize() {
    logCall("initialize");
    return number(next(machine().initializeResults));
}

void ring0Deinitialize() {
    logCall("deinitialize");
}

std::uint32_t ring0ReadMsr(std::uint32_t index, std::uint32_t* low, std::uint32_t* high) {
    logCall("msr 0x%llx", index);
    const auto found = machine().msrs.find(index);
    const std::string answer = found == machine().msrs.end() ? refused : next(found->second);
    if (answer == refused) {
        return 0;
    }
    const unsigned long long value = std::strtoull(answer.c_str(), nullptr, 0);
    *low = static_cast<std::uint32_t>(value);
    *high = static_cast<std::uint32_t>(value >> 32U);
    return 1;
}

std::uint32_t ring0WriteMsr(std::uint32_t index, std::uint32_t low, std::uint32_t high) {
    logCall("wrmsr 0x%llx 0x%llx", index, (static_cast<unsigned long long>(high) << 32U) | low);
    return machine().refuseWrites ? 0 : 1;
}

std::uint8_t ring0ReadPciConfigByte(std::uint32_t address, std::uint32_t offset) {
    return static_cast<std::uint8_t>(pciValue(address, offset, 1));
}

std::uint16_t ring0ReadPciConfigWord(std::uint32_t address, std::uint32_t offset) {
    return static_cast<std::uint16_t>(pciValue(address, offset, 2));
}

std::uint32_t ring0ReadPciConfigDword(std::uint32_t address, std::uint32_t offset) {
    return pciValue(address, offset, 4);
}

std::uint32_t ring0ReadPciConfigWordChecked(std::uint32_t address, std::uint32_t offset,
                                            std::uint16_t* value) {
    const std::uint32_t read = pciValue(address, offset, 2);
    if (machine().refusePci) {
        return 0;
    }
    *value = static_cast<std::uint16_t>(read);
    return 1;
}

std::uint32_t ring0ReadPciConfigDwordChecked(std::uint32_t address, std::uint32_t offset,
                                             std::uint32_t* value) {
    const std::uint32_t read = pciValue(address, offset, 4);
    if (machine().refusePci) {
        return 0;
    }
    *value = read;
    return 1;
}
}
