#include "driver/output_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "fakes/temporary_directory.h"

namespace vorn {
namespace {

const TestRecord record{"FSB", "", "V1", "Code 123", "Fail", "CPU FSB <Test> \"Failed\"!!!"};

TEST(ResultsFile, IsWellFormedXmlAtEveryMoment) {
    const TemporaryDirectory directory;
    TextData data;
    ResultsFile results(data, ResultsFile::formatOf("xml"));
    results.begin("a&b", "2026-01-02 03:04:05");
    const std::string head =
        "<?xml version=\"1.0\"?>\n"
        "<VORN revision=\"2.20.0.0.W.MP\" processor=\"a&amp;b\" start=\"2026-01-02 03:04:05\">\n";
    const std::string pending = "  <Verdict>INCOMPLETE</Verdict>\n</VORN>\n";
    EXPECT_EQ(directory.read("CPUResults.xml"), head + pending);

    results.add({FSB, record, "log", VORN_FAIL, true}, "0 to 1");
    const std::string row =
        "  <Test name=\"FSB\" version=\"V1\" result=\"FAIL\" status=\"Fail\" code=\"Code 123\""
        " message=\"CPU FSB &lt;Test&gt; &quot;Failed&quot;!!!\" logicalProcessors=\"0 to 1\"/>\n";
    EXPECT_EQ(directory.read("CPUResults.xml"), head + row + pending);

    results.add({"2026-01-02 03:04:14", "A & B", 45.25});
    const std::string sample =
        "  <Temperature time=\"2026-01-02 03:04:14\" test=\"A &amp; B\" margin=\"45.25\"/>\n";
    EXPECT_EQ(directory.read("CPUResults.xml"), head + row + sample + pending);

    results.finish("2026-01-02 03:04:15", 10, "FAILED");
    EXPECT_EQ(directory.read("CPUResults.xml"),
              head + row + sample +
                  "  <End time=\"2026-01-02 03:04:15\" seconds=\"10\"/>\n"
                  "  <Verdict>FAILED</Verdict>\n</VORN>\n");
}

TEST(ResultsFile, TakesTheResultFromTheRaiseOrTheValueAndNeverFromTheStatus) {
    const TemporaryDirectory directory;
    TextData data;
    ResultsFile results(data, ResultsFile::formatOf("Text"));
    results.begin("1", "start");
    const TestRecord driver{"FSB", "", "V1", "Fail", "VORN load driver error", ""};
    results.add({FSB, driver, "", VORN_NOT_RUN, true}, "");
    results.add({FSB, driver, "", VORN_FAIL, false}, "");
    results.add({FSB, driver, "", VORN_NOT_RUN, false}, "");
    results.add({FSB, record, "", VORN_PASS, false}, "3 to 3");
    results.finish("end", 2, "FAILED");
    const std::string text = directory.read("CPUResults.txt");
    const std::string driverTail =
        "\nStatus: VORN load driver error\nCode: Fail\nMessage: \n\nTest: FSB\nVersion: V1\n";
    EXPECT_EQ(text,
              "VORN64 2.20.0.0.W.MP\nProcessor: 1\nStart: start\n\nTest: FSB\nVersion: V1\n"
              "Result: FAIL" +
                  driverTail + "Result: FAIL" + driverTail + "Result: NO VERDICT" + driverTail +
                  "Result: PASS\nStatus: Fail\nCode: Code 123\n"
                  "Message: CPU FSB <Test> \"Failed\"!!!\nLogical processors: 3 to 3\n\n"
                  "End: end\nSeconds: 2\nVerdict: FAILED\n");
}

TEST(ResultsFile, IsNotWrittenForAnyOtherFormat) {
    const TemporaryDirectory directory;
    TextData data;
    ResultsFile results(data, ResultsFile::formatOf("TEXT "));
    results.begin("1", "start");
    results.add({FSB, record, "", VORN_PASS, false}, "");
    results.finish("end", 2, "PASSED");
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(OutputFile, TellsAFailureOnceAndDropsTheRest) {
    const TemporaryDirectory directory;
    std::filesystem::create_directory("CPUOut.txt");
    TextData data;
    OutputFile file(data);
    testing::internal::CaptureStderr();
    file.open("CPUOut.txt", Opening::replace);
    file.write("lost");
    file.write("lost");
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told.substr(0, 45), "Cannot open CPUOut.txt in the current directo");
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1);
    EXPECT_FALSE(file.isSound());
}

TEST(PassFailFile, HoldsTheFailTextUntilARunPassed) {
    const TemporaryDirectory directory;
    directory.write("passfail.txt", "PASS\n");
    Settings settings;
    settings.outputPassFailText = "yes";
    PassFailFile passFail(settings);
    passFail.begin();
    EXPECT_EQ(directory.read("passfail.txt"), "(absent)");
    EXPECT_EQ(directory.read("t_passfail.txt"), "FAIL\n");
    EXPECT_TRUE(passFail.isWritten());
    passFail.pass();
    EXPECT_EQ(directory.read("t_passfail.txt"), "PASS\n");

    settings.outputPassFailXml = "TRUE";
    settings.outputPassText = "good & well";
    settings.outputFailText = "bad";
    PassFailFile xml(settings);
    xml.begin();
    EXPECT_EQ(directory.read("t_passfail.txt"), "<PassFail>bad</PassFail>\n");
    xml.pass();
    EXPECT_EQ(directory.read("t_passfail.txt"), "<PassFail>good &amp; well</PassFail>\n");
}

TEST(XmlEscaped, LeavesNothingThatXmlCannotHold) {
    EXPECT_EQ(xmlEscaped(std::string("a<b>&\"\n\t\x01z", 10)), "a&lt;b&gt;&amp;&quot;&#10;&#9;?z");
}

}  // namespace
}  // namespace vorn
