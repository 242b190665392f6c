#include "driver/output_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "fakes/temporary_directory.h"

namespace vorn {
namespace {

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

TEST(ResultsFile, IsWellFormedBeforeTheFirstTest) {
    const TemporaryDirectory directory;
    TextData data;
    ResultsFile results(data, ResultsFile::Format::xml);
    results.begin("1", "now");
    EXPECT_EQ(directory.read("CPUResults.xml"),
              "<?xml version=\"1.0\"?>\n"
              "<VORN revision=\"2.20.0.0.W.MP\" processor=\"1\" start=\"now\">\n"
              "  <Verdict>INCOMPLETE</Verdict>\n</VORN>\n");
}

TEST(XmlEscaped, LeavesNothingThatXmlCannotHold) {
    EXPECT_EQ(xmlEscaped(std::string("a<b>&\"\n\t\x01z", 10)), "a&lt;b&gt;&amp;&quot;&#10;&#9;?z");
}

}  // namespace
}  // namespace vorn
