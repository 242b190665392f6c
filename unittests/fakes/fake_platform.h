// A simulated platform: a machine that a test describes call by call, and that fails the test when
// the code under test misuses it.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fakes/comma_locale.h"
#include "fakes/fake_device_setup.h"
#include "fakes/fake_display.h"
#include "fakes/fake_physical_memory.h"
#include "fakes/fake_temperature_sensors.h"
#include "platform/platform.h"

namespace vorn {

/// Processor with recorded CPUID leaves; a leaf that was not recorded reads as zeros.
class FakeProcessor : public Processor {
public:
    FakeProcessor();

    std::map<std::pair<std::uint32_t, std::uint32_t>, CpuidRegisters> leaves;
    unsigned packages = 1;
    unsigned logicalProcessor = 0;  ///< moves on with each look
    std::uint64_t xcr0 = 0;
    std::vector<std::uint32_t> leavesRead;  ///< every leaf asked for, in order

    void setVendor(const std::string& twelveCharacters);
    /// Sets leaves 0x80000000 and 0x80000002 to 0x80000004; at most 48 characters.
    void setBrand(const std::string& brand);
    /// Sets the signature of leaf 1 so that family and model decode to these sums.
    void setSignature(std::uint32_t family, std::uint32_t model, std::uint32_t stepping = 0);
    /// Sets or clears bits of leaf 1.
    void setFeatures(std::uint32_t ecxBits, std::uint32_t edxBits);

    CpuidRegisters cpuid(std::uint32_t leaf, std::uint32_t subleaf) override;
    std::uint64_t timestampCounter() override;
    std::uint64_t extendedControlRegister0() override;
    unsigned packageCount() override { return packages; }
    unsigned currentLogicalProcessor() override { return logicalProcessor++; }

    /// Time-stamp ticks of each call; the last one repeats, none reads as 0.
    std::deque<std::uint64_t> timestamps;
};

/// Ring-0 library with recorded registers. Any access while nothing is initialised fails the test;
/// a surplus deinitialise is legal. Answers given as a list are used up one a call, the last
/// repeats.
class FakeRing0 : public Ring0Library {
public:
    std::deque<std::uint32_t> initializeResults{1};
    std::deque<std::uint32_t> statusResults{0};
    /// Values of an MSR; a register without an entry refuses the read.
    std::map<std::uint32_t, std::deque<std::uint64_t>> msrs;
    bool refuseMsrWrites = false;
    /// Configuration bytes by (address, offset), little-endian; absent ones read as all ones.
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint8_t> pciBytes;
    bool refuseCheckedPciReads = false;

    /// The calls in order: "initialize", "status", "deinitialize", "msr 0xcd", "wrmsr 0xe7 0x0",
    /// "pci 0x10+0x2" (width not shown).
    std::vector<std::string> calls;

    void setPciWord(std::uint32_t address, std::uint32_t offset, std::uint16_t value);
    void setPciDword(std::uint32_t address, std::uint32_t offset, std::uint32_t value);

    std::uint32_t initialize() override;
    std::uint32_t status() override;
    void deinitialize() override;
    std::uint32_t readMsr(std::uint32_t index, std::uint32_t& low, std::uint32_t& high) override;
    std::uint32_t writeMsr(std::uint32_t index, std::uint32_t low, std::uint32_t high) override;
    std::uint8_t readPciConfigByte(std::uint32_t address, std::uint32_t offset) override;
    std::uint16_t readPciConfigWord(std::uint32_t address, std::uint32_t offset) override;
    std::uint32_t readPciConfigDword(std::uint32_t address, std::uint32_t offset) override;
    std::uint32_t readPciConfigWordChecked(std::uint32_t address, std::uint32_t offset,
                                           std::uint16_t& value) override;
    std::uint32_t readPciConfigDwordChecked(std::uint32_t address, std::uint32_t offset,
                                            std::uint32_t& value) override;

private:
    void requireInitialized(const std::string& access);
    std::uint64_t pciValue(std::uint32_t address, std::uint32_t offset, unsigned width);

    bool initialized_ = false;
};

/// Simulated time, in nanoseconds, moved by the test, by sleeping and a little by each look at it,
/// on whatever thread.
class FakeClock : public Clock {
public:
    std::atomic<std::int64_t> nowNanoseconds = 0;
    std::int64_t nanosecondsPerLook = 0;  ///< how far each reading moves the time
    std::int64_t breaksAt = std::numeric_limits<std::int64_t>::max();  ///< later looks raise
    std::int64_t frequency = 10000000;
    std::vector<std::uint32_t> sleeps;

    std::int64_t processMilliseconds() override { return look() / 1000000; }
    std::int64_t wallSeconds() override { return 1700000000 + look() / 1000000000; }
    std::int64_t performanceCounter() override { return look() / (1000000000 / frequency); }
    std::int64_t performanceFrequency() override { return frequency; }
    void sleepMilliseconds(std::uint32_t milliseconds) override;

private:
    std::int64_t look();
};

/// Command interpreter that records its command lines.
class FakeCommandInterpreter : public CommandInterpreter {
public:
    std::vector<std::string> commandLines;
    std::vector<std::string> existingFiles;
    int result = 0;
    std::function<void()> program;  ///< what happens while a command line runs, where set

    int execute(const std::string& commandLine) override;
    bool fileExists(const std::string& path) override;
    std::string programWord(const std::string& path) const override { return "{" + path + "}"; }
    std::string moveCommand() const override { return "move"; }
    std::string showCommand() const override { return "type"; }
};

/// What FakeProcessControl raises in place of ending the process.
struct ProcessEnded {
    int status;
};

class FakeProcessControl : public ProcessControl {
public:
    [[noreturn]] void exit(int status) override { throw ProcessEnded{status}; }
};

/// The whole simulated machine, in force for its lifetime.
class FakePlatform {
public:
    /// With devices of its own, or those of `setup`.
    explicit FakePlatform(DeviceSetup* setup = nullptr);

    FakeProcessor processor;
    FakeRing0 ring0;
    FakeClock clock;
    FakePhysicalMemory memory;
    FakeCommandInterpreter interpreter;
    FakeProcessControl process;
    FakeTemperatureSensors temperatureSensors;
    FakeDeviceSetup devices;
    FakeDisplay display;
    Advice advice;
    std::optional<CommaLocale> hostLocale;

private:
    Platform platform_;
    ScopedPlatform scope_;
};

}  // namespace vorn
