// The ring-0 library of a build without one.
#pragma once

#include "platform/ring0_library.h"

namespace vorn {

/// Refuses everything: initialize() returns 0, status() is nonzero, every checked read fails and
/// every unchecked one is all ones.
class AbsentRing0Library : public Ring0Library {
public:
    std::uint32_t initialize() override { return 0; }
    std::uint32_t status() override { return 1; }
    void deinitialize() override {}
    std::uint32_t readMsr(std::uint32_t, std::uint32_t&, std::uint32_t&) override { return 0; }
    std::uint32_t writeMsr(std::uint32_t, std::uint32_t, std::uint32_t) override { return 0; }
    std::uint8_t readPciConfigByte(std::uint32_t, std::uint32_t) override { return 0xFF; }
    std::uint16_t readPciConfigWord(std::uint32_t, std::uint32_t) override { return 0xFFFF; }
    std::uint32_t readPciConfigDword(std::uint32_t, std::uint32_t) override { return 0xFFFFFFFF; }
    std::uint32_t readPciConfigWordChecked(std::uint32_t, std::uint32_t, std::uint16_t&) override {
        return 0;
    }
    std::uint32_t readPciConfigDwordChecked(std::uint32_t, std::uint32_t, std::uint32_t&) override {
        return 0;
    }
};

}  // namespace vorn
