// The processor's temperature, as the temperature test and the CPU load test read it.
#pragma once

#include <string>

namespace vorn {

/// What readTemperatureMargin() returns when there is no valid reading.
inline constexpr double noTemperatureReading = 999999.0;

/// Degrees Celsius between the processor and its maximum junction temperature; 0 or less at or
/// above it; noTemperatureReading when there is no valid reading.
///
/// Opens the driver, reads the thermal status of the processor that the thread is on
/// (IA32_THERM_STATUS, bits 22..16, valid with bit 31) and closes the driver. When the driver
/// cannot be opened, writes "DLL not initialized" to the report stream and appends it as a line to
/// `text`; otherwise leaves `text` as it is. Where the register gives nothing, the hottest of the
/// system's own processor sensors answers.
double readTemperatureMargin(std::string& text);

}  // namespace vorn
