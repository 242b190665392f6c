// VORN64: processor and platform diagnostic for x86-64 machines.
//
// The whole public interface. A host either calls run(), which is the complete command-line
// program, or constructs a vorn::VORN and asks it for single tests. Calls must not overlap: the
// library takes no locks and keeps process-wide state (its standard output, its configuration).
#pragma once

#include <fstream>
#include <functional>
#include <map>
#include <streambuf>
#include <string>
#include <vector>

#if defined(VORN64_STATIC)
#define VORN64_API
#elif defined(_WIN32)
#if defined(VORN64_BUILDING)
#define VORN64_API __declspec(dllexport)
#else
#define VORN64_API __declspec(dllimport)
#endif
#else
#define VORN64_API __attribute__((visibility("default")))
#endif

/// Outcome of one test. The values are part of the binary interface.
enum VORNTestResult : int {
    VORN_PASS = 0,     ///< the test ran and passed
    VORN_FAIL = 1,     ///< the test ran and failed, or ended with an error
    VORN_NOT_RUN = 2,  ///< no verdict: not run, not supported here, or a prerequisite did not pass
};

namespace vorn {

/// The tests. The values are part of the binary interface.
enum Test : int {
    AVX_AES_PCLMULQDQ = 0,  ///< AVX, AES and PCLMULQDQ instructions
    BASE_CLOCK = 1,         ///< base clock
    BRAND_STRING = 2,       ///< processor brand string
    CACHE = 3,              ///< cache sizes
    CPU_FREQUENCY = 4,      ///< processor frequency
    CPU_MANUFACTURER = 5,   ///< genuine processor (vendor string)
    CPU_LOAD = 6,           ///< load on every logical processor
    FSB = 7,                ///< front-side bus frequency
    GFX = 8,                ///< 2D/3D graphics visual test: reserved, reached from run() only
    IGD = 9,                ///< integrated graphics device
    IMC = 10,               ///< integrated memory controller: memory size and memory stress
    FLOATING_POINT = 11,    ///< floating point
    PRIME_NUMBER = 12,      ///< prime number generation
    MMX_SSE = 13,           ///< MMX and SSE family instructions
    MP_STRESS = 14,         ///< multi-processor stress by an external program
    PCH = 15,               ///< platform controller hub
    QPI = 16,               ///< QPI link rate
    ROTATION = 17,          ///< display rotation
    TEMPERATURE = 18,       ///< processor temperature
};

/// A text and a stream that can be opened on a file. run() opens its report and results files on
/// such objects; runTest() hands two empty ones to the test's entry, which leaves both untouched.
struct TextData {
    std::string text;     ///< empty when created
    std::fstream stream;  ///< not opened when created
};

/// The diagnostic as an object: a registry of the tests and the means to run one of them.
///
/// Copying and assigning copy the registry alone. The configuration belongs to the process, not to
/// the object: the most recently constructed object, of any thread, decides it for all.
class VORN64_API VORN {
public:
    /// Entry of one registered test: runs it and returns its result. A failing test does not
    /// return: it raises its message as a std::string.
    using Entry = std::function<VORNTestResult(TextData&, TextData&)>;

    /// Loads "VORNconfig.xml" from the current directory and fills the registry.
    ///
    /// A missing file writes "File VORNconfig.xml not found!" to standard output and ends the
    /// process with status 1. Raises the XML parser's error (a std::exception) for malformed text,
    /// and a std::string when the settings cannot be read from it (no root element "VORN").
    VORN();
    VORN(const VORN& other);
    VORN& operator=(const VORN& other);
    ~VORN();

    /// Runs one test, its prerequisite first where it has one, and returns its result.
    ///
    /// `out` becomes the buffer of the library's standard output and stays so after the call: it
    /// must outlive all later output, or the caller puts the former buffer back. With a null `out`
    /// the test runs and its lines are lost. Returns VORN_NOT_RUN when the prerequisite did not
    /// pass, VORN_FAIL after "Failure reported from vorn library:" and the message of a failing
    /// test, and VORN_FAIL after "Unknown error from vorn library in catch (...) block" for any
    /// other error and for a test that is not registered. Raises nothing, except what std::cout
    /// itself raises when its exception mask holds badbit and `out` is null.
    VORNTestResult runTest(Test test, std::streambuf* out);

private:
    friend struct RegistryPeer;
    std::map<Test, Entry> registry_;
};

/// The revision that the banner of a run shows.
inline constexpr const char* revision = "2.20.0.0.W.MP";

/// What the operating system withheld from the tests of this process so far (a module that is not
/// loaded, a permission, a limit), one line each with its remedy. Empty when nothing was withheld.
VORN64_API std::vector<std::string> platformAdvice();

}  // namespace vorn

/// The whole diagnostic as a command-line program: loads "VORNconfig.xml" from the current
/// directory, runs every enabled test in a fixed order and writes console report and result files.
///
/// `argv[1]` is the processor's label in the report ("1" when argc is below 2); "MP" or "mp"
/// selects the multi-processor stress test alone. Returns 0, or the code of a failed genuine, brand
/// string or frequency test. Ends the process with status 1 when the configuration is missing.
/// Raises what the constructor of vorn::VORN raises, and an error of a test that is not a failure
/// of hardware (a std::exception, for example a timer text that is no number).
VORN64_API int run(int argc, char** argv);
