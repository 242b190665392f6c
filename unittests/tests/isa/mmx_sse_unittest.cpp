#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <iomanip>
#include <limits>
#include <string>
#include <vector>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "tests/isa/mmx_sse_execution.h"
#include "tests/isa/mmx_sse_test.h"
#include "tests/isa/repetition.h"

namespace vorn {
namespace {

// The whole console of a run in which the last lane of every part is one too high.
const char* const failingConsole =
#include "mmx_sse_failing.txt"
    ;

constexpr std::uint32_t allEdx = 0x800000 | 0x2000000 | 0x4000000;
constexpr std::uint32_t allEcx = 0x1 | 0x200 | 0x80000 | 0x100000;

bool hostReports(const Extension& extension) {
    return ((nativePlatform().processor.cpuid(1).*extension.flags >> extension.bit) & 1U) != 0;
}

/// Lanes as a sound processor gives them.
Actual soundLanes(const CheckGroup& group) {
    Actual actual;
    for (const CheckLines& part : group.parts) {
        for (const CheckLine& line : part) {
            actual.lanes.insert(actual.lanes.end(), line.expected.begin(), line.expected.end());
        }
    }
    return actual;
}

/// One run of the test with these extensions on a simulated processor.
struct FamilyRun {
    FakePlatform platform;
    CapturedConsole console;
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    std::string log;
    std::string code;

    explicit FamilyRun(const std::vector<Extension>& extensions, std::uint32_t ecx = allEcx,
                       std::uint32_t edx = allEdx) {
        platform.processor.setFeatures(ecx, edx);
        code = testExtensions(extensions, result, record, log);
    }

    void expectVerdict(bool passed) const {
        EXPECT_EQ(record.name, "MMXSSE");
        EXPECT_EQ(record.version, "2.0.0.0");
        EXPECT_EQ(record.status, passed ? "Pass" : "Fail");
        EXPECT_EQ(record.code, "Code - Undefined");
        EXPECT_EQ(code, record.code);
        EXPECT_EQ(record.message, passed ? "Pass --- MMX SSE Testing complete ---"
                                         : "Fail --- MMX SSE Testing complete ---");
        EXPECT_EQ(result, passed ? VORN_PASS : VORN_FAIL);
    }
};

/// The extensions of the product with sound lanes in place of execution.
std::vector<Extension> simulatedExtensions() {
    std::vector<Extension> extensions = mmxSseExtensions();
    for (Extension& extension : extensions) {
        for (CheckGroup& group : extension.routine.groups) {
            group.execute = [sound = soundLanes(group)] { return sound; };
        }
    }
    return extensions;
}

std::string shown(const LaneValue& lane) {
    return std::visit([](auto value) { return textOf(value); }, lane);
}

TEST(MmxSseTest, ShowsEveryLineWhenEveryPartHasAWrongLane) {
    std::vector<Extension> extensions = simulatedExtensions();
    for (Extension& extension : extensions) {
        for (CheckGroup& group : extension.routine.groups) {
            Actual wrong = soundLanes(group);
            std::size_t last = 0;
            for (const CheckLines& part : group.parts) {
                for (const CheckLine& line : part) {
                    last += line.expected.size();
                }
                std::visit([](auto& value) { ++value; }, wrong.lanes[last - 1]);
            }
            group.execute = [wrong] { return wrong; };
        }
    }
    const FamilyRun run(extensions);
    EXPECT_EQ(run.console.text(), failingConsole);
    EXPECT_NE(run.log.find("MMX Test Result--- FAIL\nSSE Test Result--- FAIL\n"
                           "SSE2 Test Result--- FAIL\nSSE3 Test Result--- FAIL\n"
                           "SSSE3 Test Result--- FAIL\nSSE4.1 Test Result--- FAIL\n"
                           "SSE4.2 Test Result--- FAIL\nMMX SSE Testing Failed !! \n"),
              std::string::npos);
    run.expectVerdict(false);
}

/// `lane` with one bit flipped.
LaneValue flipped(const LaneValue& lane, unsigned bit) {
    return std::visit(
        [bit](auto value) -> LaneValue {
            unsigned char bytes[sizeof value];
            std::memcpy(bytes, &value, sizeof value);
            bytes[bit / 8] = static_cast<unsigned char>(bytes[bit / 8] ^ (1U << (bit % 8)));
            std::memcpy(&value, bytes, sizeof value);
            return value;
        },
        lane);
}

unsigned bitsOf(const LaneValue& lane) {
    return std::visit([](auto value) { return static_cast<unsigned>(8 * sizeof value); }, lane);
}

/// The text of the line that holds this lane, and what it must show for this value of it.
std::string lineWith(const CheckGroup& group, std::size_t lane, const Actual& actual) {
    std::size_t first = 0;
    for (const CheckLines& part : group.parts) {
        for (const CheckLine& line : part) {
            const std::size_t end = first + line.expected.size();
            if (lane < end && line.expected.size() == 1) {
                return line.text + shown(actual.lanes[lane]) + "\n";
            }
            if (lane < end) {
                char text[1024];
                std::snprintf(text, sizeof text, line.text, std::get<double>(actual.lanes[first]),
                              std::get<double>(actual.lanes[first + 1]));
                return text;
            }
            first = end;
        }
    }
    return "(no line)";
}

TEST(MmxSseTest, ReportsEverySingleLaneFault) {
    // Every bit of every lane of every check in turn, through the whole test.
    const std::vector<Extension> sound = simulatedExtensions();
    std::vector<Extension> faulty = sound;
    int lanes = 0;
    int injected = 0;
    int reported = 0;
    for (std::size_t e = 0; e < sound.size(); ++e) {
        const Routine& routine = sound[e].routine;
        for (std::size_t g = 0; g < routine.groups.size(); ++g) {
            const CheckGroup& group = routine.groups[g];
            const Actual right = soundLanes(group);
            for (std::size_t lane = 0; lane < right.lanes.size(); ++lane) {
                ++lanes;
                for (unsigned bit = 0; bit < bitsOf(right.lanes[lane]); ++bit) {
                    Actual wrong = right;
                    wrong.lanes[lane] = flipped(right.lanes[lane], bit);
                    if (wrong.lanes[lane] == right.lanes[lane]) {
                        continue;  // negative zero is zero by value
                    }
                    ++injected;
                    faulty[e].routine.groups[g].execute = [&wrong] { return wrong; };
                    const FamilyRun run(faulty);
                    const std::string console = run.console.text();
                    const auto shows = [&console](const std::string& text) {
                        return console.find(text) != std::string::npos;
                    };
                    const bool seen =
                        shows(lineWith(group, lane, wrong)) &&
                        shows(std::string(group.failed) + "\n") && !shows(group.passed) &&
                        shows(std::string(routine.failed) + "\n\n") && !shows(routine.passed) &&
                        shows("MMX SSE Testing Failed !!\n") &&
                        run.log.find(std::string(sound[e].resultLabel) + "--- FAIL\n") !=
                            std::string::npos &&
                        run.record.status == "Fail" && run.result == VORN_FAIL;
                    EXPECT_TRUE(seen) << routine.opening << " lane " << lane << " bit " << bit;
                    reported += seen ? 1 : 0;
                }
            }
            faulty[e].routine.groups[g].execute = group.execute;
        }
    }
    EXPECT_EQ(injected, reported);
    EXPECT_EQ(lanes, 2 + 2 + 4 + 4 + 39 + 72 + 29);
    std::cout << lanes << " lanes, " << injected << " single-lane faults injected, " << reported
              << " reported\n";
}

TEST(MmxSseTest, ShowsOnlyThePartOfAGroupThatMismatches) {
    const Routine& ssse3 = mmxSseExtensions()[4].routine;
    CheckGroup group = ssse3.groups[1];
    Actual wrong = soundLanes(group);
    wrong.lanes[3] = std::int32_t{5};  // _mm_hadd_epi16, lane 3
    const CapturedConsole console;
    EXPECT_FALSE(reportGroup(group, wrong));
    const std::string text = console.text();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 17);
    EXPECT_EQ(text.substr(0, 29), "_mm_hadd_epi16 expected 0 = 0");
    EXPECT_NE(text.find("_mm_hadd_epi16 expected 4 = 5\n"), std::string::npos);
    EXPECT_NE(text.find("_mm_hsub_epi16 expected 102 = 102\nSSSE3 Arithmetic Tests Failed\n"),
              std::string::npos);
    Actual tooFew;
    EXPECT_THROW(reportGroup(group, tooFew), std::out_of_range);
}

TEST(MmxSseTest, PrintsNumbersAsTheStreamStandsAndComparesThemByValue) {
    const CheckGroup& blend = mmxSseExtensions()[5].routine.groups[0];
    const CheckGroup& complex = mmxSseExtensions()[2].routine.groups[0];
    const CapturedConsole console;
    reportStream() << std::setprecision(16);
    Actual actual = soundLanes(blend);
    EXPECT_TRUE(reportGroup(blend, actual));
    actual.lanes[3] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(reportGroup(blend, actual));
    // Nearer to the expected value than six digits show.
    actual.lanes[3] = -10.5F;
    actual.lanes[2] = std::nextafter(-3.14159F, 0.0F);
    EXPECT_FALSE(reportGroup(blend, actual));
    EXPECT_NE(console.text().find("_mm_blend_pd_0 expected -3.141590118408203 = "
                                  "-3.141590118408203\n_mm_blend_pd_1 expected -10.5 = nan\n"),
              std::string::npos);
    EXPECT_NE(console.text().find(" = -3.14158987998"), std::string::npos);
    EXPECT_TRUE(reportGroup(complex, soundLanes(complex)));
    EXPECT_NE(console.text().find("using SSE2 code: 23.00+ -2.00i\n"), std::string::npos);
}

TEST(MmxSseTest, FailsOnAWrongRepetitionEvenIfTheLastOneIsRight) {
    for (std::size_t extension = 0; extension < 4; ++extension) {
        const Routine& routine = mmxSseExtensions()[extension].routine;
        Actual actual = soundLanes(routine.groups[0]);
        actual.everyRepetition = false;
        const CapturedConsole console;
        EXPECT_FALSE(reportGroup(routine.groups[0], actual));
        EXPECT_NE(console.text().find(routine.groups[0].failed), std::string::npos);
    }
}

TEST(Repetition, StopsAtTheFirstResultThatIsNotTheReference) {
    int calls = 0;
    const auto wrongAt = [&calls](int wrong) {
        calls = 0;
        return [&calls, wrong] { return ++calls == wrong ? 7.0F : 506.0F; };
    };
    for (const int wrong : {1, 2, 999, 1000}) {
        const Repeated<float> repeated = repeatWhileEqual(506.0F, wrongAt(wrong), 1000);
        EXPECT_FALSE(repeated.everyRepetition);
        EXPECT_EQ(repeated.result, 7.0F);
        EXPECT_EQ(calls, wrong);
    }
    EXPECT_TRUE(repeatWhileEqual(506.0F, wrongAt(1000001)).everyRepetition);
    EXPECT_EQ(calls, 1000000);
}

TEST(MmxSseKernels, ComputeProductsOfOtherOperands) {
    const WordVector words{{{1, -2, 3, -4}, {50, 60, 70, 80}, {9, 100, -11, 12}}};
    const WordVector otherWords{{{13, 14, -15, 16}, {17, 18, 19, 20}, {-21, 22, 23, 240}}};
    const FloatVector floats{1, -2, 3, -4, 50, 60, 70, 80, 9, 100, -11, 12};
    const FloatVector otherFloats{13, 14, -15, 16, 17, 18, 19, 20, -21, 22, 23, 240};
    const Complex first{1.5, -7};
    const Complex second{-2, 0.25};
    EXPECT_EQ(mmxDotProduct(words, otherWords), 9374);
    EXPECT_EQ(sseDotProduct(floats, otherFloats), 9374.0F);
    EXPECT_EQ(scalarDotProduct(floats, otherFloats), 9374.0F);
    EXPECT_EQ(sse2ComplexProduct(first, second), (Complex{-1.25, 14.375}));
    EXPECT_EQ(scalarComplexProduct(first, second), (Complex{-1.25, 14.375}));
    if (hostReports(mmxSseExtensions()[3])) {
        EXPECT_EQ(sse3ComplexProduct(first, second), (Complex{-1.25, 14.375}));
    }
    // Only the low sixteen bits of the sum are taken.
    const WordVector large{{{32767, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}};
    EXPECT_EQ(mmxDotProduct(large, large), 1);
}

}  // namespace
}  // namespace vorn
