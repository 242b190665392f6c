// What a test writes its report with: every line goes to the console and, in its file form, to the
// test's log.
#pragma once

#include <iostream>
#include <streambuf>
#include <string>
#include <string_view>

#include "report/test_record.h"
#include "report/text.h"
#include "vorn/vorn.h"

namespace vorn {

/// The library's standard output, the console of every report.
inline std::ostream& reportStream() {
    return std::cout;
}

/// Makes `buffer` the buffer of the report stream, with a cleared state (bad when `buffer` is
/// null), and never takes it back. The only place that rebinds the stream. Raises
/// std::ios_base::failure when `buffer` is null and the stream's exception mask holds badbit.
void bindReportStream(std::streambuf* buffer);

/// What a test's verdict puts into its record and result.
struct Verdict {
    std::string status;
    std::string code;
    std::string message;
    VORNTestResult result;
};

/// Writer of one test's report. Console lines end with a flushing end of line; the log grows by
/// exactly the text given for it. Keeps a reference to the log, which must outlive it.
class Report {
public:
    explicit Report(std::string& log) : log_(log) {}

    /// The title that opens a report or a titled step of one: blank line, " --- title --- ", blank
    /// line, on both.
    void header(std::string_view title);

    /// A reference value and the measured one: "Expected --> " and "Detected --> ", on both.
    void compare(std::string_view expected, std::string_view detected);

    /// A line whose two forms differ: `consoleForm` gets an end of line, `logForm` is taken as it
    /// is.
    void line(std::string_view consoleForm, std::string_view logForm);

    /// The same words on both, with the usual ending each.
    void both(std::string_view text);

    /// A console line of these values one after the other, each formatted as the report stream
    /// stands at this moment.
    template <typename... Values>
    static void console(const Values&... values) {
        (reportStream() << ... << values) << std::endl;  // NOLINT(performance-avoid-endl)
    }

    /// Appends to the log, as it is, each value formatted as a fresh text stream formats it.
    template <typename... Values>
    void log(const Values&... values) {
        log_ += textOf(values...);
    }

    /// Gives the verdict: status, code and message into the record, then the result.
    static void conclude(VORNTestResult& result, TestRecord& record, const Verdict& verdict);

private:
    std::string& log_;
};

}  // namespace vorn
