// The platform controller hub test: names the chipset and takes the census of the devices behind
// each of its ports.
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// The test function of the catalogue. The hub is the ISA bridge at bus 0, device 31, function 0;
/// without one there is no verdict. With "@PCHEnum" "ENABLE" the functions of bus 0, the disks
/// behind its SATA functions, the devices behind its PCI bridges and the USB devices follow. Fails
/// when the system cannot enumerate its devices. Opens the driver once and closes it after the last
/// section; raises driverFailureError when it cannot be opened.
std::string testPlatformControllerHub(VORNTestResult& result, const Settings& settings,
                                      TestRecord& record, std::string& log);

}  // namespace vorn
