// The report stream, caught in a string for one scope, and put back whole.
#pragma once

#include <ios>
#include <sstream>
#include <string>

#include "report/report.h"

namespace vorn {

/// Catches what is written to the report stream; at the end of its scope the stream gets its
/// buffer, state, formatting and exception mask back.
class CapturedConsole {
public:
    CapturedConsole() : former_(reportStream().rdbuf()), formatting_(nullptr) {
        formatting_.copyfmt(reportStream());
        bindReportStream(buffer_.rdbuf());
    }
    ~CapturedConsole() {
        reportStream().exceptions(std::ios::goodbit);
        bindReportStream(former_);
        reportStream().copyfmt(formatting_);
    }
    CapturedConsole(const CapturedConsole&) = delete;
    CapturedConsole& operator=(const CapturedConsole&) = delete;

    std::string text() const { return buffer_.str(); }
    void clear() { buffer_.str(""); }

private:
    std::streambuf* former_;
    std::ios formatting_;
    std::stringstream buffer_;
};

}  // namespace vorn
