// The settings of a run, as raw texts.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace vorn {

/// One text for each key of the configuration: the raw attribute value, empty when the key is
/// absent. Nothing is converted or judged here; each consumer reads its own.
struct Settings {
    std::string skipConfig;
    std::string outFileFormat;
    std::string outputResultsText;
    std::string outputPassFailText;
    std::string outputPassText;
    std::string outputFailText;
    std::string generatePauseApp;
    std::string outputPassFailXml;
    std::string l2CacheTest;
    std::string stressTestTime;
    std::string stressTest;
    std::string stressLoadLevel;
    std::string cacheTest;
    std::string mmxSse;
    std::string avx;
    std::string memorySize;
    std::string memoryStressTestSize;
    std::string memoryStressTestTime;
    std::string primeNumGen;
    std::string primeNumGenTimer;
    std::string floatingPoint;
    std::string floatingPointTimer;
    std::string baseClock;
    std::string baseClockTolerance;
    std::string temperatureTest;
    std::string temperatureWarningTolerance;
    std::string site;
    std::string igdTest;
    std::string gfxTest;
    std::string gfxTestExe;
    std::string gfxTime;
    std::string gfxSpin;
    std::string gfx2dTestExe;
    std::string rotation;
    std::string pchTest;
    std::string pchEnum;
    std::string qpiTest;
    std::string qpiTolerance;
    std::string mpLoadExe;
    std::string multiProcStressLoad;
    std::string multiProcStressTime;
    std::string cpuCount;
    std::string trackCpu;
    std::string mpSummary;
    std::string mpFailText;
    std::string stopOnFail;
    std::string imcTest;

    // From the entry of the processor under test; empty when the look-up is skipped or finds none.
    std::string cpuName;
    std::string l2Cache;
    std::string l3Cache;
    std::string busSpeed;

    /// The processor's own brand string without its leading blanks; empty when the look-up of the
    /// processor's entry is skipped.
    std::string brandString;
};

/// One key of the configuration and the setting that it fills.
struct SettingKey {
    std::string_view key;  ///< with its leading "@"
    std::string Settings::*setting;
};

/// The general keys, in the order in which they are read.
inline constexpr std::array<SettingKey, 47> generalKeys{{
    {"@SkipConfig", &Settings::skipConfig},
    {"@OutFileFormat", &Settings::outFileFormat},
    {"@OutputResultsText", &Settings::outputResultsText},
    {"@OutputPassFailText", &Settings::outputPassFailText},
    {"@OutputPassText", &Settings::outputPassText},
    {"@OutputFailText", &Settings::outputFailText},
    {"@GeneratePauseApp", &Settings::generatePauseApp},
    {"@OutputPassFailXML", &Settings::outputPassFailXml},
    {"@L2CacheTest", &Settings::l2CacheTest},
    {"@StressTestTime", &Settings::stressTestTime},
    {"@StressTest", &Settings::stressTest},
    {"@StressLoadLevel", &Settings::stressLoadLevel},
    {"@CacheTest", &Settings::cacheTest},
    {"@MMXSSE", &Settings::mmxSse},
    {"@AVX", &Settings::avx},
    {"@MemorySize", &Settings::memorySize},
    {"@MemoryStressTestSize", &Settings::memoryStressTestSize},
    {"@MemoryStressTestTime", &Settings::memoryStressTestTime},
    {"@PrimeNumGen", &Settings::primeNumGen},
    {"@PrimeNumGenTimer", &Settings::primeNumGenTimer},
    {"@FloatingPoint", &Settings::floatingPoint},
    {"@FloatingPointTimer", &Settings::floatingPointTimer},
    {"@BaseClock", &Settings::baseClock},
    {"@BaseClockTolerance", &Settings::baseClockTolerance},
    {"@TemperatureTest", &Settings::temperatureTest},
    {"@TemperatureWarningTolerance", &Settings::temperatureWarningTolerance},
    {"@Site", &Settings::site},
    {"@IGDTest", &Settings::igdTest},
    {"@GFXTest", &Settings::gfxTest},
    {"@GFXTestExe", &Settings::gfxTestExe},
    {"@GFXTime", &Settings::gfxTime},
    {"@GFXSpin", &Settings::gfxSpin},
    {"@GFX2DTestExe", &Settings::gfx2dTestExe},
    {"@Rotation", &Settings::rotation},
    {"@PCHTest", &Settings::pchTest},
    {"@PCHEnum", &Settings::pchEnum},
    {"@QPITest", &Settings::qpiTest},
    {"@QPITolerance", &Settings::qpiTolerance},
    {"@MPLoadExe", &Settings::mpLoadExe},
    {"@MultiProcStressLoad", &Settings::multiProcStressLoad},
    {"@MultiProcStressTime", &Settings::multiProcStressTime},
    {"@CPUCount", &Settings::cpuCount},
    {"@TrackCPU", &Settings::trackCpu},
    {"@MPSummary", &Settings::mpSummary},
    {"@MPFailText", &Settings::mpFailText},
    {"@StopOnFail", &Settings::stopOnFail},
    {"@IMCTest", &Settings::imcTest},
}};

/// The keys of a processor's entry, in the order in which they are read.
inline constexpr std::array<SettingKey, 4> processorKeys{{
    {"@CPUName", &Settings::cpuName},
    {"@L2Cache", &Settings::l2Cache},
    {"@L3Cache", &Settings::l3Cache},
    {"@BUSSpeed", &Settings::busSpeed},
}};

/// Whether a keyword setting holds this word, in any letter case. `word` is in upper case.
bool holdsWord(std::string_view setting, std::string_view word);

/// Whether an output option is on: "ENABLE", "YES" or "TRUE" in any letter case.
bool isSwitchedOn(std::string_view setting);

/// The number that the value of a general key begins with, read as std::stoi reads it. Raises what
/// std::stoi raises, with the key and the value in its text: std::invalid_argument for a value that
/// begins with no number, std::out_of_range for a number beyond an int.
int integerOf(const Settings& settings, std::string Settings::*setting);

}  // namespace vorn
