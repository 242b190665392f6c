// Ring-0 access on Windows: the ten functions of WinRing0x64.dll, bound by the loader.
#pragma once

#include "platform/advice.h"
#include "platform/ring0_library.h"

namespace vorn {

class WindowsRing0Library : public Ring0Library {
public:
    /// `advice` is told why the driver does not start; it must outlive this object.
    explicit WindowsRing0Library(Advice& advice) : advice_(advice) {}

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
    Advice& advice_;
};

}  // namespace vorn
