// The integrated graphics device test: is the processor's own graphics device there and enabled?
#pragma once

#include <cstdint>
#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// How queryIgd() ends.
enum IgdOutcome : int {
    igdDisabled = 701,               ///< the device is there; its VGA cycles are disabled
    igdOtherVendorDisabled = 702,    ///< another vendor's device, and VGA is disabled
    igdOtherVendor = 703,            ///< another vendor's device
    igdOtherVendorNoGraphics = 704,  ///< another vendor's device, on a processor without graphics
    igdNoGraphics = 705,             ///< the device is there, on a processor without graphics
    igdReserved = 706,               ///< reported like the three before it; never returned
    igdPresent = 777,                ///< the device is there and enabled
    igdDriverFailure = 9099,         ///< the ring-0 driver could not be opened
};

/// The processor's generation of integrated graphics.
enum GraphicsGeneration : int {
    graphicsNone = 0,
    graphicsCerunGen1 = 1,
    graphicsCerunGen2 = 2,
    graphicsCerunGen3 = 3,
    graphicsCerunGen4 = 4,
    graphicsQuintorKv = 80,
    graphicsArvo = 90,
};

/// The generation of the processor with this brand string, family and model.
GraphicsGeneration graphicsGeneration(const std::string& brand, std::uint32_t family,
                                      std::uint32_t model);

/// The frame buffer that the memory controller sets aside for a graphics mode select (GMS) value,
/// in MB; 0 for a value that the generation's table does not list.
std::uint32_t frameBufferMegabytes(GraphicsGeneration generation, std::uint32_t modeSelect);

/// Reads the registers of bus 0, device 2, function 0 and the graphics control register of the host
/// bridge, between opening and closing the driver, and shows a device that is present on the
/// console. An open that fails is told there and closes nothing.
IgdOutcome queryIgd();

/// What the test hands on besides its record.
struct IgdTestResult {
    VORNTestResult result = VORN_NOT_RUN;
    std::uint8_t notSupported = 0;  ///< 1 when the processor does not support the device
};

/// Reports an outcome: its block, the record and the result.
void reportIgdOutcome(IgdOutcome outcome, IgdTestResult& result, TestRecord& record,
                      std::string& log);

/// The test function of the catalogue. Raises driverFailureError when the driver cannot be opened.
std::string testGraphicsDevice(VORNTestResult& result, const Settings& settings, TestRecord& record,
                               std::string& log);

}  // namespace vorn
