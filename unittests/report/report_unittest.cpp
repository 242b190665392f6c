#include "report/report.h"

#include <gtest/gtest.h>

#include "fakes/captured_console.h"

namespace vorn {
namespace {

TEST(Report, WritesBothForms) {
    const CapturedConsole console;
    std::string log = "before";
    Report report(log);
    report.header("Reading");
    report.compare("one", "two");
    report.both("same");
    report.line("on the console", "\nin the log ");
    EXPECT_EQ(console.text(),
              "\n --- Reading --- \n\nExpected --> one\nDetected --> two\nsame\non the console\n");
    EXPECT_EQ(log,
              "before\n --- Reading --- \n\nExpected --> one\nDetected --> two\nsame\n"
              "\nin the log ");
}

TEST(Report, FormatsConsoleValuesAsTheStreamStandsAndLogValuesAfresh) {
    const CapturedConsole console;
    std::string log;
    Report report(log);
    reportStream().precision(16);
    report.console("value ", 1.0 / 3.0);
    report.log("value ", 1.0 / 3.0, "\n");
    EXPECT_EQ(console.text(), "value 0.3333333333333333\n");
    EXPECT_EQ(log, "value 0.333333\n");
}

TEST(BindReportStream, ClearsTheStateAndIsBadWithoutABuffer) {
    const CapturedConsole console;
    reportStream().setstate(std::ios::failbit);
    bindReportStream(reportStream().rdbuf());
    EXPECT_TRUE(reportStream().good());
    bindReportStream(nullptr);
    EXPECT_TRUE(reportStream().bad());
}

}  // namespace
}  // namespace vorn
