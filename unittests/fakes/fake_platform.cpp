#include "fakes/fake_platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace vorn {

namespace {

/// Takes the next answer of a list of which the last repeats.
template <typename Value>
Value nextAnswer(std::deque<Value>& answers, Value none) {
    if (answers.empty()) {
        return none;
    }
    const Value answer = answers.front();
    if (answers.size() > 1) {
        answers.pop_front();
    }
    return answer;
}

std::string hex(std::uint64_t value) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(value));
    return text;
}

/// Four characters as a register holds them.
std::uint32_t word(const std::string& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

}  // namespace

FakeProcessor::FakeProcessor() {
    setVendor("GenuineOvrin");
    setFeatures(0, 1U << 5U);  // MSR
}

void FakeProcessor::setVendor(const std::string& twelveCharacters) {
    std::string bytes = twelveCharacters;
    bytes.resize(12);
    CpuidRegisters& leaf = leaves[{0, 0}];
    leaf.ebx = word(bytes, 0);
    leaf.edx = word(bytes, 4);
    leaf.ecx = word(bytes, 8);
}

void FakeProcessor::setBrand(const std::string& brand) {
    leaves[{0x80000000, 0}].eax = 0x80000004;
    std::string bytes = brand;
    bytes.resize(48);
    for (std::uint32_t part = 0; part < 3; ++part) {
        const std::size_t start = std::size_t{16} * part;
        leaves[{0x80000002 + part, 0}] = {word(bytes, start), word(bytes, start + 4),
                                          word(bytes, start + 8), word(bytes, start + 12)};
    }
}

void FakeProcessor::setSignature(std::uint32_t family, std::uint32_t model,
                                 std::uint32_t stepping) {
    const std::uint32_t baseFamily = std::min(family, 15U);
    leaves[{1, 0}].eax = (stepping & 0xFU) | ((model & 0xFU) << 4U) | (baseFamily << 8U) |
                         ((model >> 4U) << 16U) | ((family - baseFamily) << 20U);
}

void FakeProcessor::setFeatures(std::uint32_t ecxBits, std::uint32_t edxBits) {
    leaves[{1, 0}].ecx = ecxBits;
    leaves[{1, 0}].edx = edxBits;
}

CpuidRegisters FakeProcessor::cpuid(std::uint32_t leaf, std::uint32_t subleaf) {
    leavesRead.push_back(leaf);
    const auto found = leaves.find({leaf, subleaf});
    return found == leaves.end() ? CpuidRegisters() : found->second;
}

std::uint64_t FakeProcessor::timestampCounter() {
    return nextAnswer<std::uint64_t>(timestamps, 0);
}

std::uint64_t FakeProcessor::extendedControlRegister0() {
    EXPECT_NE(leaves[std::make_pair(1U, 0U)].ecx & (1U << 27U), 0U)
        << "XGETBV on a processor without OSXSAVE";
    return xcr0;
}

void FakeRing0::setPciWord(std::uint32_t address, std::uint32_t offset, std::uint16_t value) {
    pciBytes[{address, offset}] = static_cast<std::uint8_t>(value);
    pciBytes[{address, offset + 1}] = static_cast<std::uint8_t>(value >> 8U);
}

void FakeRing0::setPciDword(std::uint32_t address, std::uint32_t offset, std::uint32_t value) {
    setPciWord(address, offset, static_cast<std::uint16_t>(value));
    setPciWord(address, offset + 2, static_cast<std::uint16_t>(value >> 16U));
}

std::uint32_t FakeRing0::initialize() {
    calls.emplace_back("initialize");
    initialized_ = true;
    return nextAnswer<std::uint32_t>(initializeResults, 0);
}

std::uint32_t FakeRing0::status() {
    calls.emplace_back("status");
    return nextAnswer<std::uint32_t>(statusResults, 1);
}

void FakeRing0::deinitialize() {
    calls.emplace_back("deinitialize");
    initialized_ = false;
}

void FakeRing0::requireInitialized(const std::string& access) {
    EXPECT_TRUE(initialized_) << access << " while the ring-0 library is not initialised";
    calls.push_back(access);
}

std::uint32_t FakeRing0::readMsr(std::uint32_t index, std::uint32_t& low, std::uint32_t& high) {
    requireInitialized("msr " + hex(index));
    const auto found = msrs.find(index);
    if (found == msrs.end() || found->second.empty()) {
        return 0;
    }
    const auto value = nextAnswer<std::uint64_t>(found->second, 0);
    low = static_cast<std::uint32_t>(value);
    high = static_cast<std::uint32_t>(value >> 32U);
    return 1;
}

std::uint32_t FakeRing0::writeMsr(std::uint32_t index, std::uint32_t low, std::uint32_t high) {
    requireInitialized("wrmsr " + hex(index) + " " +
                       hex((static_cast<std::uint64_t>(high) << 32U) | low));
    return refuseMsrWrites ? 0 : 1;
}

std::uint64_t FakeRing0::pciValue(std::uint32_t address, std::uint32_t offset, unsigned width) {
    requireInitialized("pci " + hex(address) + "+" + hex(offset));
    std::uint64_t value = 0;
    for (unsigned byte = 0; byte < width; ++byte) {
        const auto found = pciBytes.find({address, offset + byte});
        const std::uint64_t bits = found == pciBytes.end() ? 0xFFU : found->second;
        value |= bits << (8U * byte);
    }
    return value;
}

std::uint8_t FakeRing0::readPciConfigByte(std::uint32_t address, std::uint32_t offset) {
    return static_cast<std::uint8_t>(pciValue(address, offset, 1));
}

std::uint16_t FakeRing0::readPciConfigWord(std::uint32_t address, std::uint32_t offset) {
    return static_cast<std::uint16_t>(pciValue(address, offset, 2));
}

std::uint32_t FakeRing0::readPciConfigDword(std::uint32_t address, std::uint32_t offset) {
    return static_cast<std::uint32_t>(pciValue(address, offset, 4));
}

std::uint32_t FakeRing0::readPciConfigWordChecked(std::uint32_t address, std::uint32_t offset,
                                                  std::uint16_t& value) {
    const std::uint16_t read = readPciConfigWord(address, offset);
    value = refuseCheckedPciReads ? value : read;
    return refuseCheckedPciReads ? 0 : 1;
}

std::uint32_t FakeRing0::readPciConfigDwordChecked(std::uint32_t address, std::uint32_t offset,
                                                   std::uint32_t& value) {
    const std::uint32_t read = readPciConfigDword(address, offset);
    value = refuseCheckedPciReads ? value : read;
    return refuseCheckedPciReads ? 0 : 1;
}

void FakeClock::sleepMilliseconds(std::uint32_t milliseconds) {
    sleeps.push_back(milliseconds);
    nowNanoseconds += static_cast<std::int64_t>(milliseconds) * 1000000;
}

std::int64_t FakeClock::look() {
    const std::int64_t now = nowNanoseconds += nanosecondsPerLook;
    if (now > breaksAt) {
        throw std::runtime_error("the clock is broken");
    }
    return now;
}

int FakeCommandInterpreter::execute(const std::string& commandLine) {
    commandLines.push_back(commandLine);
    if (program) {
        program();
    }
    return result;
}

bool FakeCommandInterpreter::fileExists(const std::string& path) {
    return std::find(existingFiles.begin(), existingFiles.end(), path) != existingFiles.end();
}

FakePlatform::FakePlatform(DeviceSetup* setup)
    : platform_{.processor = processor,
                .ring0 = ring0,
                .clock = clock,
                .memory = memory,
                .interpreter = interpreter,
                .process = process,
                .temperatureSensors = temperatureSensors,
                .devices = setup != nullptr ? *setup : devices,
                .display = display,
                .advice = advice},
      scope_(platform_) {}

}  // namespace vorn
