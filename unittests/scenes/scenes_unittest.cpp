// Runs every scene file: tests of the catalogue, or a whole run, on a simulated machine, judged by
// all that they leave behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "fakes/captured_console.h"
#include "fakes/temporary_directory.h"
#include "interface/catalogue.h"
#include "report/text.h"
#include "scenes/machine_description.h"
#include "scenes/scene_file.h"

namespace vorn {
namespace {

Test testNamed(const std::string& name) {
    static const std::map<std::string, Test> names{
        {"AVX_AES_PCLMULQDQ", AVX_AES_PCLMULQDQ},
        {"BASE_CLOCK", BASE_CLOCK},
        {"BRAND_STRING", BRAND_STRING},
        {"CACHE", CACHE},
        {"CPU_FREQUENCY", CPU_FREQUENCY},
        {"CPU_MANUFACTURER", CPU_MANUFACTURER},
        {"CPU_LOAD", CPU_LOAD},
        {"FSB", FSB},
        {"GFX", GFX},
        {"IGD", IGD},
        {"IMC", IMC},
        {"FLOATING_POINT", FLOATING_POINT},
        {"PRIME_NUMBER", PRIME_NUMBER},
        {"MMX_SSE", MMX_SSE},
        {"MP_STRESS", MP_STRESS},
        {"PCH", PCH},
        {"QPI", QPI},
        {"ROTATION", ROTATION},
        {"TEMPERATURE", TEMPERATURE},
    };
    return names.at(name);
}

/// What the tests of a scene left behind, each text in the form that the scene files use.
struct Aftermath {
    std::string log;
    std::string outcome;  ///< a line a test: "result|status|code|message"
    std::string raised;   ///< a line for each test that raised a text
    std::string record;   ///< a line a test: "name|version|description"
};

/// The exception in flight as a line.
std::string raisedText() {
    try {
        throw;
    } catch (const std::string& text) {
        return text + "\n";
    } catch (const ProcessEnded& end) {
        return textOf("(the process ends with status ", end.status, ")\n");
    } catch (const std::exception& error) {
        return textOf("(", error.what(), ")\n");
    }
}

void runOne(Test test, const Settings& settings, TemperatureMonitor& monitor,
            Aftermath& aftermath) {
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    try {
        const auto run = [&](auto function) -> std::string {
            if constexpr (std::is_same_v<decltype(function), LoadTestFunction>) {
                return function(result, settings, record, aftermath.log, 0, false);
            } else if constexpr (std::is_same_v<decltype(function), TemperatureTestFunction>) {
                return function(result, settings, record, aftermath.log, monitor);
            } else {
                return function(result, settings, record, aftermath.log);
            }
        };
        const std::string code = std::visit(run, findInCatalogue(test)->function);
        EXPECT_EQ(code, test == IMC ? "" : record.code) << "mostly a copy of the record's code";
    } catch (...) {
        aftermath.raised += raisedText();
    }
    aftermath.outcome += textOf(static_cast<int>(result), "|", record.status, "|", record.code, "|",
                                record.message, "\n");
    aftermath.record += record.name + "|" + record.version + "|" + record.description + "\n";
}

/// A whole run with these arguments.
void runAll(const std::string& text, Aftermath& aftermath) {
    std::istringstream input("vorn " + text);
    std::vector<std::string> words{std::istream_iterator<std::string>(input), {}};
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 2);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    // run() itself puts a label into the place behind the last argument.
    arguments.push_back(nullptr);
    try {
        aftermath.outcome = textOf(run(static_cast<int>(words.size()), arguments.data()), "\n");
    } catch (...) {
        aftermath.raised += raisedText();
    }
}

/// Each test through an object of its own, as a host runs it; the caller's stream is put back.
void runThroughHost(const std::string& names, Aftermath& aftermath) {
    std::istringstream input(names);
    try {
        for (std::string name; input >> name;) {
            VORN vorn;
            aftermath.outcome += textOf(
                static_cast<int>(vorn.runTest(testNamed(name), reportStream().rdbuf())), "\n");
        }
    } catch (...) {
        aftermath.raised += raisedText();
    }
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

/// A report as the scene files write it: control characters in letters, the local time masked, a
/// last line without its end marked.
std::string shown(const std::string& text) {
    static const std::regex time(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)");
    std::string result;
    for (const char character : std::regex_replace(text, time, "<time>")) {
        switch (character) {
            case '\\':
                result += "\\\\";
                break;
            case '\r':
                result += "\\r";
                break;
            case '\b':
                result += "\\b";
                break;
            default:
                result += character;
        }
    }
    return result.empty() || result.back() == '\n' ? result : result + "\\\n";
}

/// Whether the real processor reports all these bits of leaf 1: ECX and EDX, hexadecimal.
bool hostReports(const std::string& features) {
    std::istringstream input(features);
    std::uint32_t ecx = 0;
    std::uint32_t edx = 0;
    input >> std::hex >> ecx >> edx;
    const CpuidRegisters leaf = nativePlatform().processor.cpuid(1);
    return (leaf.ecx & ecx) == ecx && (leaf.edx & edx) == edx;
}

class SceneTest : public testing::Test {
public:
    explicit SceneTest(Scene scene) : scene_(std::move(scene)) {}

    void TestBody() override {
        if (!hostReports(scene_.text("needs"))) {
            GTEST_SKIP() << "this processor lacks an instruction that the scene executes";
        }
        const TemporaryDirectory directory;
        for (const auto& [section, text] : scene_.sections) {
            if (section.rfind("given ", 0) == 0) {
                TemporaryDirectory::write(section.substr(6), text);
                known_.push_back(section);
            }
        }
        std::istringstream input(scene_.text("input"));
        std::streambuf* const formerInput = std::cin.rdbuf(input.rdbuf());
        FakePlatform machine;
        machine.clock.nanosecondsPerLook = 1000;
        for (const std::string& line : scene_.lines("machine")) {
            describeMachine(machine, line);
        }
        Settings settings;
        for (const std::string& line : scene_.lines("settings")) {
            describeSetting(settings, line);
        }
        Aftermath aftermath;
        std::string console;
        {
            const CapturedConsole captured;
            TemporaryDirectory::write("VORNconfig.xml", scene_.text("config"));
            if (scene_.sections.count("run") == 1) {
                runAll(scene_.text("run"), aftermath);
            }
            runThroughHost(scene_.text("host"), aftermath);
            TemperatureMonitor monitor;
            std::istringstream tests(scene_.text("test"));
            for (std::string name; tests >> name;) {
                runOne(testNamed(name), settings, monitor, aftermath);
            }
            console = captured.text();
        }
        std::cin.rdbuf(formerInput);
        judge("console", shown(console));
        judge("log", shown(aftermath.log));
        judge("outcome", aftermath.outcome);
        judge("raised", aftermath.raised);
        judge("record", aftermath.record);
        judge("time", textOf(machine.clock.nowNanoseconds / 1000000, "\n"));
        judge("calls", joined(machine.ring0.calls));
        judge("command lines", joined(machine.interpreter.commandLines));
        judge("blocks", joined(machine.memory.calls));
        std::set<std::string> files;
        static const std::regex fileSection("file (.*?)( has| lacks)?");
        for (const auto& [section, text] : scene_.sections) {
            if (std::smatch match; std::regex_match(section, match, fileSection)) {
                files.insert(match[1]);
            }
        }
        for (const std::string& name : files) {
            judge("file " + name, shown(TemporaryDirectory::read(name)));
        }
        judge("input left", std::string(std::istreambuf_iterator<char>(input), {}));
        for (const auto& [section, text] : scene_.sections) {
            EXPECT_NE(std::find(known_.begin(), known_.end(), section), known_.end())
                << "there is no section '" << section << "'";
        }
        EXPECT_TRUE(judged_) << "nothing is expected";
        EXPECT_TRUE(scene_.sections.count("raised") == 1 || aftermath.raised.empty())
            << aftermath.raised;
    }

private:
    /// Compares where the scene expects something of this section.
    void judge(const std::string& section, const std::string& actual) {
        known_.push_back(section);
        known_.push_back(section + " has");
        known_.push_back(section + " lacks");
        if (const auto expected = scene_.sections.find(section);
            expected != scene_.sections.end()) {
            judged_ = true;
            const std::string text =
                expected->second == "as console\n" ? scene_.text("console") : expected->second;
            EXPECT_EQ(actual, text) << section;
        }
        for (const std::string& line : scene_.lines(section + " has")) {
            judged_ = true;
            EXPECT_NE(actual.find(line), std::string::npos) << section << " lacks " << line << "\n"
                                                            << actual;
        }
        for (const std::string& line : scene_.lines(section + " lacks")) {
            EXPECT_EQ(actual.find(line), std::string::npos) << section << " has " << line;
        }
    }

    Scene scene_;
    bool judged_ = false;
    std::vector<std::string> known_{"test",    "run",      "host",  "config",
                                    "machine", "settings", "input", "needs"};
};

}  // namespace
}  // namespace vorn

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(VORN_SCENES)) {
        if (entry.path().extension() != ".scene") {
            continue;
        }
        const std::string folder = entry.path().parent_path().filename().string();
        for (const vorn::Scene& scene : vorn::readScenes(entry.path())) {
            testing::RegisterTest(("Scene_" + folder).c_str(), scene.name.c_str(), nullptr, nullptr,
                                  entry.path().string().c_str(), 1, [scene]() -> testing::Test* {
                                      return new vorn::SceneTest(scene);
                                  });
        }
    }
    return RUN_ALL_TESTS();
}
