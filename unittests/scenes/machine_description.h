// A simulated machine and settings, described in lines of text.
#pragma once

#include <string>

#include "config/settings.h"
#include "fakes/fake_platform.h"

namespace vorn {

/// Carries out one line, a word and its values; numbers are hexadecimal where registers are meant,
/// else decimal. README.md lists the words. Raises std::runtime_error for a line that is not
/// understood.
void describeMachine(FakePlatform& machine, const std::string& line);

/// Carries out one line KEY=VALUE, the key as the configuration has it.
void describeSetting(Settings& settings, const std::string& line);

}  // namespace vorn
